// What differs between a database and a file, by path.
#include <JsonData.h>

#include <algorithm>
#include <iterator>
#include <new>

#include "SecretNames.h"
#include "Tool.h"

namespace vobidb {

namespace {

bool isSecret(std::string const& name) {
    return std::find(std::begin(SECRET_NAMES), std::end(SECRET_NAMES), name) !=
           std::end(SECRET_NAMES);
}

void mask(json_object* value);

void maskMembers(json_object* object) {
    json_object_object_foreach(object, name, value) {
        if (isSecret(name)) {
            json_object_object_add(object, name, json_object_new_string("***"));
        } else {
            mask(value);
        }
    }
}

void mask(json_object* value) {
    if (json_object_is_type(value, json_type_object)) {
        maskMembers(value);
    }
    if (json_object_is_type(value, json_type_array)) {
        for (size_t i = 0; i < json_object_array_length(value); ++i) {
            mask(json_object_array_get_idx(value, i));
        }
    }
}

bool leadsThroughSecret(std::string path) {
    while (!path.empty() && !isSecret(JsonData::lastStep(path))) {
        path = JsonData::parentPath(path);
    }
    return !path.empty();
}

void printSide(Options const& options, char sign, char const* side, json_object* entry) {
    json_object* value = nullptr;
    if (json_object_object_get_ex(entry, side, &value)) {
        std::string const path = json_object_get_string(json_object_object_get(entry, "path"));
        bool const isMasked = !options.showsSecrets && leadsThroughSecret(path);
        if (!options.showsSecrets) {
            mask(value);
        }
        print(sign + printable(path + " " + (isMasked ? "\"***\"" : lineOf(value))));
    }
}

}  // namespace

Result diff(Options const& options, char** words, int) {
    Node const before = copyOf(saved(typeOf(words[0])));
    Node const after = parsed(contentOf(words[1]), words[1], NOT_VALID);
    Node const changes(JsonData::difference(before.get(), after.get()));
    if (!changes) {
        throw std::bad_alloc();
    }
    for (size_t i = 0; i < json_object_array_length(changes->jobj); ++i) {
        json_object* const entry = json_object_array_get_idx(changes->jobj, i);
        printSide(options, '-', "before", entry);
        printSide(options, '+', "after", entry);
    }
    return DONE;
}

}  // namespace vobidb
