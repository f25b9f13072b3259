#include "jsonschema/Schema.h"

#include <string.h>

#include "jsonschema/Number.h"
#include "jsonschema/Uri.h"

namespace jsonschema {

namespace {

// 7 where nothing else is declared.
int draftOf(json_object* document) {
    std::string_view const uri = textOf(memberOf(document, "$schema"));
    if (uri.empty()) {
        return 7;
    }
    for (int draft : {4, 6}) {
        std::string const known =
            "http://json-schema.org/draft-0" + std::to_string(draft) + "/schema";
        if (uri == known || uri == known + "#") {
            return draft;
        }
    }
    return 7;
}

bool isFiniteNumber(json_object* value) {
    json_type const type = json_object_get_type(value);
    return type == json_type_int || (type == json_type_double && Number(value).isFinite());
}

bool isCount(json_object* value) { return isFiniteNumber(value) && Number(value).isCount(); }

bool isBoolean(json_object* value) { return json_object_is_type(value, json_type_boolean); }
bool isText(json_object* value) { return json_object_is_type(value, json_type_string); }
bool isArray(json_object* value) { return json_object_is_type(value, json_type_array); }
bool isObject(json_object* value) { return json_object_is_type(value, json_type_object); }

bool isArrayOf(json_object* value, bool (*test)(json_object*), Budget& budget) {
    if (!isArray(value)) {
        return false;
    }
    size_t const length = json_object_array_length(value);
    for (size_t i = 0; i < length; ++i) {
        if (!budget.spend(1) || !test(json_object_array_get_idx(value, i))) {
            return false;
        }
    }
    return true;
}

bool isTypeName(json_object* value) {
    for (char const* name : {"string", "object", "integer", "boolean", "array", "number", "null"}) {
        if (textOf(value) == name) {
            return true;
        }
    }
    return false;
}

}  // namespace

lh_entry* findMember(json_object* object, char const* name) {
    int const fewMembers = 8;  // comparing them costs less than hashing the name
    lh_table* const members = isObject(object) ? json_object_get_object(object) : nullptr;
    if (members == nullptr) {
        return nullptr;
    }
    if (lh_table_length(members) > fewMembers) {
        return lh_table_lookup_entry(members, name);
    }
    lh_entry* entry = lh_table_head(members);
    while (entry != nullptr && strcmp(static_cast<char const*>(lh_entry_k(entry)), name) != 0) {
        entry = lh_entry_next(entry);
    }
    return entry;
}

json_object* memberOf(json_object* object, char const* name) {
    lh_entry* const entry = findMember(object, name);
    return entry != nullptr ? static_cast<json_object*>(lh_entry_v(entry)) : nullptr;
}

std::string_view textOf(json_object* text) {
    if (!isText(text)) {
        return {};
    }
    return {json_object_get_string(text), static_cast<size_t>(json_object_get_string_len(text))};
}

Schema::Schema(json_object* document, Budget& budget) : budget_(budget), draft_(draftOf(document)) {
    wellFormed_ = readSchema(document, "") && (!hasReferences_ || readReferences(document)) &&
                  !budget_.isUndecided();
}

bool Schema::readSchema(json_object* schema, std::string const& base) {
    Budget::Level const level(budget_);
    if (!budget_.spend(1)) {
        return false;
    }
    if (isBoolean(schema)) {
        return draft_ >= 6;
    }
    if (!isObject(schema)) {
        return false;
    }
    if (identifying_) {
        read_.push_back(schema);
    }
    std::string own;
    std::string const& inside = enterId(schema, base, own);
    lh_entry* entry = nullptr;
    lh_foreach(json_object_get_object(schema), entry) {
        Keyword const* const keyword =
            findKeyword(static_cast<char const*>(lh_entry_k(entry)), draft_);
        if (!budget_.spend(1) ||
            (keyword != nullptr &&
             !readKeyword(*keyword, static_cast<json_object*>(lh_entry_v(entry)), inside))) {
            return false;
        }
    }
    return true;
}

bool Schema::readKeyword(Keyword const& keyword, json_object* operand, std::string const& base) {
    switch (keyword.form) {
        case Form::ANY: return true;
        case Form::TEXT: return isText(operand);
        case Form::PATTERN: return isText(operand) && readPattern(operand, textOf(operand));
        case Form::BOOLEAN: return isBoolean(operand);
        case Form::NUMBER: return isFiniteNumber(operand);
        case Form::NUMBER_OR_BOOLEAN: return isFiniteNumber(operand) || isBoolean(operand);
        case Form::POSITIVE_NUMBER: return isFiniteNumber(operand) && Number(operand).isPositive();
        case Form::COUNT: return isCount(operand);
        case Form::TYPES: return isTypeName(operand) || isArrayOf(operand, isTypeName, budget_);
        case Form::TEXTS: return isArrayOf(operand, isText, budget_);
        case Form::VALUES: return isArray(operand);
        case Form::REFERENCE: return isText(operand) && readReference(operand, base);
        case Form::SCHEMA: return readSchema(operand, base);
        case Form::SCHEMA_OR_BOOLEAN: return isBoolean(operand) || readSchema(operand, base);
        case Form::SCHEMAS: return readSchemas(operand, base);
        case Form::ITEMS: return readItems(operand, base);
        case Form::SCHEMA_MAP:
        case Form::PATTERN_MAP:
        case Form::DEPENDENCIES: return readMap(operand, keyword.form, base);
    }
    return false;
}

bool Schema::readSchemas(json_object* array, std::string const& base) {
    return isArray(array) && json_object_array_length(array) > 0 && readItems(array, base);
}

bool Schema::readItems(json_object* items, std::string const& base) {
    if (!isArray(items)) {
        return readSchema(items, base);
    }
    size_t const length = json_object_array_length(items);
    for (size_t i = 0; i < length; ++i) {
        if (!readSchema(json_object_array_get_idx(items, i), base)) {
            return false;
        }
    }
    return true;
}

bool Schema::readMap(json_object* map, Form form, std::string const& base) {
    if (!isObject(map)) {
        return false;
    }
    lh_entry* entry = nullptr;
    lh_foreach(json_object_get_object(map), entry) {
        char const* const name = static_cast<char const*>(lh_entry_k(entry));
        json_object* const value = static_cast<json_object*>(lh_entry_v(entry));
        bool const isList = form == Form::DEPENDENCIES && isArray(value);
        if ((form == Form::PATTERN_MAP && !readPattern(name, name)) ||
            !(isList ? isArrayOf(value, isText, budget_) : readSchema(value, base))) {
            return false;
        }
    }
    return true;
}

bool Schema::readPattern(void const* place, std::string_view text) {
    return patterns_.try_emplace(place, text, budget_).first->second.isValid();
}

bool Schema::readReference(json_object* reference, std::string const& base) {
    hasReferences_ = true;
    if (!identifying_) {
        return true;
    }
    std::string_view const text = textOf(reference);
    if (text.size() > limits::REFERENCE_LENGTH || !budget_.spend(10 + base.size() + text.size())) {
        return false;
    }
    references_.push_back({reference, resolveUri(base, text)});
    return true;
}

// The base in force inside the schema. Beside a "$ref" an identifier counts as little as anything else.
std::string const& Schema::enterId(json_object* schema, std::string const& base, std::string& own) {
    std::string_view const id =
        identifying_ ? textOf(memberOf(schema, draft_ >= 6 ? "$id" : "id")) : std::string_view();
    if (id.empty() || memberOf(schema, "$ref") != nullptr) {
        return base;
    }
    if (id.size() > limits::REFERENCE_LENGTH || !budget_.spend(10 + base.size() + id.size())) {
        budget_.giveUp();
        return base;
    }
    own = resolveUri(base, id);
    UriParts const parts(own);
    bool const isName = !parts.fragment.empty();  // "#name": the base stays as it is
    identified_.push_back({isName ? own : std::string(parts.document), schema});
    own.resize(parts.document.size());
    return isName ? base : own;
}

bool Schema::readReferences(json_object* document) {
    identifying_ = true;
    identified_.push_back({"", document});
    return readSchema(document, "") && resolveReferences();
}

// Resolving may lead to schemas at places where none is expected; they are read then, and may hold
// further references.
bool Schema::resolveReferences() {
    for (size_t i = 0; i < references_.size(); ++i) {
        json_object* const text = references_[i].text;
        std::string const uri = references_[i].uri;
        json_object* const target = find(uri);
        if (target == nullptr ||
            !budget_.spend(identified_.size() + read_.size() / 8 + uri.size())) {
            return false;
        }
        auto const known = targets_.try_emplace(text, target);
        if (!known.second && known.first->second != target) {
            return false;  // one text object at two places that read it differently
        }
        if (!known.second) {
            continue;
        }
        if (!wasRead(target) && !readSchema(target, std::string(UriParts(uri).document))) {
            return false;
        }
    }
    return true;
}

json_object* Schema::find(std::string const& uri) const {
    UriParts const parts(uri);
    bool const isName = !parts.fragment.empty() && parts.fragment[0] != '/';
    std::string_view const wanted = isName ? std::string_view(uri) : parts.document;
    for (Identified const& identified : identified_) {
        if (identified.uri == wanted) {
            return isName ? identified.schema : followPointer(identified.schema, parts.fragment);
        }
    }
    return nullptr;
}

bool Schema::wasRead(json_object* schema) const {
    for (json_object* known : read_) {
        if (known == schema) {
            return true;
        }
    }
    return false;
}

}  // namespace jsonschema
