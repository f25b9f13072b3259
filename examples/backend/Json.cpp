#include "Json.h"

#include "Limits.h"

Json parseJson(std::string const& text) {
    std::unique_ptr<json_tokener, void (*)(json_tokener*)> const tokener(
        json_tokener_new_ex(MAX_BODY_DEPTH), json_tokener_free);
    size_t const end = text.find_last_not_of(" \t\r\n");
    std::string const value = text.substr(0, end + 1);  // nothing may follow, not even a space
    if (!tokener || value.find('\0') != std::string::npos) {
        return Json();
    }
    json_tokener_set_flags(tokener.get(), JSON_TOKENER_STRICT | JSON_TOKENER_VALIDATE_UTF8);
    // With its terminator, which ends a number.
    return Json(
        json_tokener_parse_ex(tokener.get(), value.c_str(), static_cast<int>(value.size() + 1)));
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
