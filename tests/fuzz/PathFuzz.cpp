// Fuzz target: a document on the first line, then a path a line. Every path is looked up and then
// assigned, and both are compared with a model that splits paths and reads indexes by text streams.
#include <sstream>
#include <vector>

#include "Fuzz.h"
#include "JsonData.h"
#include "jsondata/JsonRef.h"

using namespace vobiutils;

namespace {

bool isIndex(std::string const& token) { return token[0] == '[' && token.size() > 2; }

std::vector<std::string> tokensOf(std::string const& path) {
    std::vector<std::string> tokens;
    std::istringstream stream(path);
    for (std::string token; std::getline(stream, token, '.');) {
        tokens.push_back(token);
    }
    return tokens;
}

unsigned int numberOf(std::string const& token) {
    unsigned int index = 0;
    std::istringstream(token.substr(1, token.size() - 2)) >> index;
    return index;
}

// The member or element that a token names; null when there is none.
json_object* childOf(json_object* parent, std::string const& token) {
    if (token[0] != '[') {
        return json_object_object_get(parent, token.c_str());
    }
    bool const isElement = isIndex(token) && json_object_is_type(parent, json_type_array);
    return isElement ? json_object_array_get_idx(parent, numberOf(token)) : nullptr;
}

json_object* find(json_object* at, std::string const& path) {
    for (std::string const& token : tokensOf(path)) {
        at = childOf(at, token);
    }
    return at;
}

// Moves `at` to a child. Stores `value` as the child if that is the last one, or is missing. False
// where the path cannot go on.
bool step(json_object*& at, std::string const& token, json_object* value, bool isLast) {
    json_object* const parent = at;
    if (token[0] != '[') {
        bool const isNew = !json_object_object_get_ex(parent, token.c_str(), &at);
        if (!json_object_is_type(parent, json_type_object)) {
            return false;
        }
        if (isNew || isLast) {
            json_object_object_add(parent, token.c_str(), json_object_get(value));
            at = value;
        }
        return true;
    }
    if (!isIndex(token) || !json_object_is_type(parent, json_type_array)) {
        return false;
    }
    size_t const length = json_object_array_length(parent);
    size_t const index = std::min<size_t>(numberOf(token), length);
    if (index == length || isLast) {
        json_object_array_put_idx(parent, index, json_object_get(value));
    }
    at = json_object_array_get_idx(parent, index);
    return isLast || at != nullptr;
}

bool assign(json_object* at, std::string path, json_object* value) {
    if (json_object_is_type(at, json_type_array) && path[0] != '[') {
        path = ("[" + std::to_string(json_object_array_length(at)) + "]." + path).substr(0, 255);
    }
    std::vector<std::string> const tokens = tokensOf(path);
    for (size_t i = 0; i < tokens.size(); ++i) {
        bool const isLast = i + 1 == tokens.size();
        bool const isArray = !isLast && isIndex(tokens[i + 1]);
        JsonRef const container(isArray ? json_object_new_array() : json_object_new_object());
        if (!step(at, tokens[i], isLast ? value : container.get(), isLast)) {
            return false;
        }
    }
    return true;
}

void lookUpBoth(json_object* document, json_object* model, std::string const& path) {
    json_object* parent = document;
    char const* key = nullptr;
    json_object* const found = JsonData::getJObj(document, path.c_str(), parent, key);
    require(found == JsonData::getJObj(document, path.c_str()));
    require(text(found) == text(find(model, path)));
    require(path.empty() || found == nullptr ||
            (key != nullptr ? tokensOf(path).back() == key : tokensOf(path).back().empty()));
    delete[] key;
}

void assignBoth(json_object* document, json_object* model, std::string const& path, int number) {
    JsonRef const value(number % 4 == 3 ? nullptr : json_object_new_int(number));
    json_object* parent = nullptr;
    char const* key = nullptr;
    bool const stored = JsonData::setJObj(document, path.c_str(), value.get(), parent, key) == 0;
    require(stored == (!path.empty() && assign(model, path, value.get())));
    require(text(document) == text(model));
    require(stored == (parent != nullptr && key != nullptr));
    free(const_cast<char*>(key));
}

}  // namespace

int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size) {
    enterSandbox();
    std::string input = asText(data, size);
    std::erase(input, '\0');
    std::string line;
    takeLine(input, line);
    JsonRef const document(json_tokener_parse(line.c_str()));
    JsonRef const model(json_tokener_parse(line.c_str()));
    for (int number = 0; document && takeLine(input, line); ++number) {
        lookUpBoth(document.get(), model.get(), line);
        assignBoth(document.get(), model.get(), line, number);
    }
    return 0;
}
