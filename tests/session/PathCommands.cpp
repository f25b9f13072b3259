// Commands of golden sessions: the path language on bare json-c values, and their comparison.
#include <stdlib.h>

#include "JsonData.h"
#include "Session.h"
#include "jsondata/JsonRef.h"

using namespace vobiutils;

namespace {

// The path of a node, which tells containers apart.
std::string place(json_object* root, json_object* node, std::string const& at = "root") {
    std::string found = root == node ? at : "";
    if (json_object_is_type(root, json_type_object)) {
        json_object_object_foreach(root, key, value) {
            found = found.empty() ? place(value, node, at + "." + key) : found;
        }
    } else if (json_object_is_type(root, json_type_array)) {
        for (size_t i = 0; i < json_object_array_length(root) && found.empty(); ++i) {
            found = place(json_object_array_get_idx(root, i), node,
                          at + ".[" + std::to_string(i) + "]");
        }
    }
    return found;
}

void showPlace(Call& c, json_object* parent, char const* key) {
    c.result += parent != nullptr ? " in " + place(c.node(1), parent) : "";
    c.result += key != nullptr ? " key " + shown(key) : "";
}

void lookUp(Call& c) {
    json_object* parent = nullptr;
    char const* key = nullptr;
    json_object* const value = JsonData::getJObj(c.node(1), c.word(2), parent, key);
    c.result = text(value);
    printed([&] { EXPECT_EQ(JsonData::getJObj(c.node(1), c.word(2)), value); });
    showPlace(c, parent, key);
    delete[] key;
}

int store(Call& c, json_object* value) {
    json_object* parent = nullptr;
    char const* key = nullptr;
    int const code = JsonData::setJObj(c.node(1), c.word(2), value, parent, key);
    c.answer(code);
    showPlace(c, parent, key);
    EXPECT_EQ(code == 0, key != nullptr);
    free(const_cast<char*>(key));
    return code;
}

// After a failure the caller still owns the only reference.
void assign(Call& c) {
    json_object* const value = c.json(3);
    int const code = store(c, value);
    EXPECT_EQ(json_object_put(value), code == 0 || value == nullptr ? 0 : 1);
}

void assignNode(Call& c) {
    json_object* value = nullptr;
    printed([&] { value = JsonData::getJObj(c.node(1), c.word(3)); });
    store(c, value);
}

// With the types of the two values, or with a third argument as the type of both.
void compare(Call& c) {
    JsonRef const values[] = {JsonRef(c.json(1)), JsonRef(c.json(2))};
    json_type types[] = {json_object_get_type(values[0].get()),
                         json_object_get_type(values[1].get())};
    if (c.words.size() > 3) {
        types[0] = types[1] = static_cast<json_type>(c.number(3));
    }
    c.answer(JsonData::compareObjVal(values[0].get(), types[0], values[1].get(), types[1]));
}

}  // namespace

Commands const PATH_COMMANDS = {
    {"lookup", lookUp},
    {"assign", assign},
    {"assign-node", assignNode},
    {"compare", compare},
    {"is-path", [](Call& c) { c.answer(JsonData::isPath(c.word(1))); }},
    {"split-path",
     [](Call& c) {
         c.answer(
             (JsonData::parentPath(c.word(1)) + " / " + JsonData::lastStep(c.word(1))).c_str());
     }},
};
