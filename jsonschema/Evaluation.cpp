#include "jsonschema/Evaluation.h"

namespace jsonschema {

bool Evaluation::satisfies(json_object* instance, json_object* schema) {
    Budget::Level const level(budget_);
    if (!budget_.spend(1)) {
        return false;
    }
    if (json_object_is_type(schema, json_type_boolean)) {
        return json_object_get_boolean(schema) != 0;
    }
    json_object* const reference = schema_.hasReferences() ? memberOf(schema, "$ref") : nullptr;
    if (reference != nullptr) {
        return satisfies(instance, schema_.target(reference));  // its siblings do not count
    }
    return satisfiesKeywords(instance, schema);
}

bool Evaluation::satisfiesKeywords(json_object* instance, json_object* schema) {
    lh_entry* entry = nullptr;
    lh_foreach(json_object_get_object(schema), entry) {
        Keyword const* const keyword =
            findKeyword(static_cast<char const*>(lh_entry_k(entry)), draft());
        json_object* const operand = static_cast<json_object*>(lh_entry_v(entry));
        bool const isSilent = keyword == nullptr || keyword->holds == nullptr;
        if (!budget_.spend(1) ||
            (!isSilent && !keyword->holds({*this, operand, schema, instance}))) {
            return false;
        }
    }
    return true;
}

}  // namespace jsonschema
