#include "Json.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "Limits.h"

namespace {

// Some number in it is none that JSON has.
bool isInfinite(json_object* value) {
    if (json_object_is_type(value, json_type_double)) {
        return !std::isfinite(json_object_get_double(value));
    }
    auto const elements = elementsOf(value);
    auto const members = membersOf(value);
    return std::any_of(elements.begin(), elements.end(), isInfinite) ||
           std::any_of(members.begin(), members.end(),
                       [](auto const& member) { return isInfinite(member.second); });
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

std::vector<json_object*> elementsOf(json_object* value) {
    std::vector<json_object*> elements;
    if (json_object_is_type(value, json_type_array)) {
        for (size_t i = 0; i < json_object_array_length(value); ++i) {
            elements.push_back(json_object_array_get_idx(value, i));
        }
    }
    return elements;
}

Members membersOf(json_object* value) {
    Members members;
    if (json_object_is_type(value, json_type_object)) {
        json_object_object_foreach(value, name, member) { members.emplace_back(name, member); }
    }
    return members;
}

char const* stringAt(json_object* value, char const* name) {
    json_object* const member = json_object_object_get(value, name);
    return json_object_is_type(member, json_type_string) ? json_object_get_string(member) : nullptr;
}

void merge(json_object* target, json_object* change) {
    for (auto const& [name, value] : membersOf(change)) {
        json_object* const old = json_object_object_get(target, name);
        if (json_object_is_type(old, json_type_object) &&
            json_object_is_type(value, json_type_object)) {
            merge(old, value);
        } else {
            json_object_object_add(target, name, json_object_get(value));
        }
    }
}
