#include "Json.h"

#include <cmath>
#include <utility>

#include "Limits.h"

namespace {

// Some number in it is none that JSON has.
bool isInfinite(json_object* value) {
    if (json_object_is_type(value, json_type_array)) {
        for (size_t i = 0; i < json_object_array_length(value); ++i) {
            if (isInfinite(json_object_array_get_idx(value, i))) {
                return true;
            }
        }
    } else if (json_object_is_type(value, json_type_object)) {
        json_object_object_foreach(value, name, member) {
            static_cast<void>(name);
            if (isInfinite(member)) {
                return true;
            }
        }
    }
    return json_object_is_type(value, json_type_double) &&
           !std::isfinite(json_object_get_double(value));
}

}  // namespace

Json parseJson(std::string const& text) {
    std::unique_ptr<json_tokener, void (*)(json_tokener*)> const tokener(
        json_tokener_new_ex(MAX_BODY_DEPTH), json_tokener_free);
    size_t const end = text.find_last_not_of(" \t\r\n");
    std::string const value = text.substr(0, end + 1);  // nothing may follow, not even a space
    if (!tokener || value.find('\0') != std::string::npos ||
        value.find("\\u0000") != std::string::npos) {
        return Json();
    }
    json_tokener_set_flags(tokener.get(), JSON_TOKENER_STRICT | JSON_TOKENER_VALIDATE_UTF8);
    // With its terminator, which ends a number.
    Json parsed(
        json_tokener_parse_ex(tokener.get(), value.c_str(), static_cast<int>(value.size() + 1)));
    return isInfinite(parsed.get()) ? Json() : std::move(parsed);
}

Json copyOf(json_object* value) {
    json_object* copy = nullptr;
    json_object_deep_copy(value, &copy, nullptr);
    return Json(copy);
}

std::string textOf(json_object* value) {
    char const* const text = json_object_to_json_string_ext(
        value, JSON_C_TO_STRING_PRETTY | JSON_C_TO_STRING_SPACED | JSON_C_TO_STRING_NOSLASHESCAPE);
    return text != nullptr ? text : "";
}

void merge(json_object* target, json_object* change) {
    json_object_object_foreach(change, name, value) {
        json_object* const old = json_object_object_get(target, name);
        if (json_object_is_type(old, json_type_object) &&
            json_object_is_type(value, json_type_object)) {
            merge(old, value);
        } else {
            json_object_object_add(target, name, json_object_get(value));
        }
    }
}
