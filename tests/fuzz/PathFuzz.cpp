// Fuzz target: a document on the first line, then a path a line. Every path is looked up and then
// assigned, and both are compared with a model that knows only maps, lists and text streams.
#include <map>
#include <memory>
#include <sstream>
#include <vector>

#include "Fuzz.h"
#include "JsonData.h"
#include "jsondata/JsonRef.h"

using namespace vobiutils;

namespace {

struct Node {
    enum Kind { NONE, PRIMITIVE, OBJECT, ARRAY } kind = NONE;
    std::string text;  // of a primitive
    std::map<std::string, Node> members;
    std::vector<Node> elements;

    bool operator==(Node const&) const = default;
};

Node nodeOf(json_object* value) {
    Node node;
    if (json_object_is_type(value, json_type_object)) {
        node.kind = Node::OBJECT;
        json_object_object_foreach(value, key, member) { node.members[key] = nodeOf(member); }
    } else if (json_object_is_type(value, json_type_array)) {
        node.kind = Node::ARRAY;
        for (size_t i = 0; i < json_object_array_length(value); ++i) {
            node.elements.push_back(nodeOf(json_object_array_get_idx(value, i)));
        }
    } else if (value != nullptr) {
        node.kind = Node::PRIMITIVE;
        node.text = json_object_to_json_string(value);
    }
    return node;
}

std::vector<std::string> tokensOf(std::string const& path) {
    std::vector<std::string> tokens;
    std::istringstream stream(path);
    for (std::string token; std::getline(stream, token, '.');) {
        tokens.push_back(token);
    }
    return tokens;
}

unsigned int indexOf(std::string const& token) {
    unsigned int index = 0;
    std::istringstream(token.substr(1, token.size() - 2)) >> index;
    return index;
}

Node const* find(Node const& root, std::string const& path) {
    Node const* at = &root;
    for (std::string const& token : tokensOf(path)) {
        if (token[0] != '[') {
            auto const member = at->members.find(token);
            if (member == at->members.end()) {
                return nullptr;
            }
            at = &member->second;
        } else if (token.size() < 3 || indexOf(token) >= at->elements.size()) {
            return nullptr;
        } else {
            at = &at->elements[indexOf(token)];
            if (at->kind == Node::NONE) {
                return nullptr;
            }
        }
    }
    return at->kind != Node::NONE ? at : nullptr;
}

bool assign(Node& root, std::string path, Node const& value) {
    if (root.kind == Node::ARRAY && path[0] != '[') {
        path = ("[" + std::to_string(root.elements.size()) + "]." + path).substr(0, 255);
    }
    std::vector<std::string> const tokens = tokensOf(path);
    Node const object = {Node::OBJECT, {}, {}, {}};
    Node* at = &root;
    bool isNew = false;
    for (size_t i = 0; i < tokens.size(); ++i) {
        std::string const& token = tokens[i];
        Node const& next = i + 1 < tokens.size() ? object : value;
        bool const isLast = &next == &value;
        if (token[0] != '[') {
            isNew = !at->members.contains(token);
            if (at->kind != Node::OBJECT && (isNew || isLast)) {
                return false;
            }
            Node& member = at->members[token];
            member = isNew || isLast ? next : member;
            at = &member;
            continue;
        }
        if (token.size() < 3 || (at->kind != Node::ARRAY && !isNew)) {
            return false;
        }
        at->kind = Node::ARRAY;
        size_t const index = std::min<size_t>(indexOf(token), at->elements.size());
        isNew = index == at->elements.size();
        if (isNew) {
            at->elements.push_back(next);
        } else if (isLast) {
            at->elements[index] = next;
        } else if (at->elements[index].kind == Node::NONE) {
            return false;
        }
        at = &at->elements[index];
    }
    return true;
}

void lookUpBoth(json_object* document, Node const& model, std::string const& path) {
    json_object* parent = document;
    char const* key = nullptr;
    json_object* const found = JsonData::getJObj(document, path.c_str(), parent, key);
    Node const* const expected = find(model, path);
    require(found == JsonData::getJObj(document, path.c_str()));
    require((found != nullptr) == (expected != nullptr));
    require(found == nullptr || nodeOf(found) == *expected);
    require(path.empty() || found == nullptr ||
            (key != nullptr ? tokensOf(path).back() == key : tokensOf(path).back().empty()));
    delete[] key;
}

void assignBoth(json_object* document, Node& model, std::string const& path, int number) {
    JsonRef const value(number % 4 == 3 ? nullptr : json_object_new_int(number));
    json_object* parent = nullptr;
    char const* key = nullptr;
    bool const stored = JsonData::setJObj(document, path.c_str(), value.get(), parent, key) == 0;
    require(stored == (!path.empty() && assign(model, path, nodeOf(value.get()))));
    require(nodeOf(document) == model);
    require(stored == (parent != nullptr && key != nullptr));
    free(const_cast<char*>(key));
}

}  // namespace

int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size) {
    static Sandbox const sandbox;
    std::string input = asText(data, size);
    std::erase(input, '\0');
    std::string line;
    takeLine(input, line);
    JsonRef const document(json_tokener_parse(line.c_str()));
    if (!document) {
        return 0;
    }
    Node model = nodeOf(document.get());
    for (int number = 0; takeLine(input, line); ++number) {
        lookUpBoth(document.get(), model, line);
        assignBoth(document.get(), model, line, number);
    }
    return 0;
}
