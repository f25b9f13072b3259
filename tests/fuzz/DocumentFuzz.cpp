// Fuzz target: a document file, loaded, edited, saved and loaded again. A saved document reads back
// as json-c reads the same text (which makes a 1 of 01e); a failed save leaves the file as it is.
#include "Fuzz.h"
#include "JsonData.h"
#include "TreeMapObject.h"
#include "jsondata/JsonRef.h"

using namespace vobiutils;

namespace {

char const FILE_NAME[] = "document";

std::string pretty(json_object* value) {
    return json_object_to_json_string_ext(value, JSON_C_TO_STRING_PRETTY);
}

void edit(TreeMapObject& document) {
    document.set("new.list.[0].number", 1);
    document.set("new.list.[1].number", 2.5);
    document.set("new.text", "\x01 \"text\" \xff");
    for (char const* path : {"", "list", "a", "[0]", "new.list"}) {
        TreeMapObject* const node = document.get(path);
        if (node != nullptr) {
            int const length = node->len();
            require(node->addArrayItem(true) == length);
            delete node->at(0);
            require(node->delArrayItem(0) == (length < 0 || *path == '[' ? -1 : length));
            delete node;
        }
    }
    document.del("b");
}

void saveAndLoad(TreeMapObject& document) {
    std::string const before = TempDir::read(FILE_NAME);
    if (JsonData::saveObjectToFile(FILE_NAME, &document) != 0) {
        require(TempDir::read(FILE_NAME) == before);
        return;
    }
    std::string const text = pretty(document.jobj);
    require(TempDir::read(FILE_NAME) == text);
    TreeMapObject* const read = JsonData::createObjectFromFile(FILE_NAME);
    bool const isContainer = json_object_is_type(document.jobj, json_type_object) ||
                             json_object_is_type(document.jobj, json_type_array);
    JsonRef const expected(json_tokener_parse(text.c_str()));
    require(!isContainer || (expected && pretty(read->jobj) == pretty(expected.get())));
    delete read;
    delete document.clone("");
}

}  // namespace

int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size) {
    enterSandbox();
    TempDir::write(FILE_NAME, asText(data, size));
    TreeMapObject* const document = JsonData::createObjectFromFile(FILE_NAME);
    saveAndLoad(*document);
    edit(*document);
    for (TreeMapObject* hit : document->find("name", "value")) {
        require(hit->get<char const*>("name") == std::string("value"));
        delete hit;
    }
    saveAndLoad(*document);
    delete document;
    return 0;
}
