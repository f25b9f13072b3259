// Fuzz target: a document file, loaded, edited, saved and loaded again, and parsed strictly. A saved document reads back
// as json-c reads the same text (which makes a 1 of 01e); a failed save leaves the file as it is. What is
// parsed strictly is what json-c reads, too, and stays the same when it is written and parsed again.
#include <memory>

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

void parseStrictly(std::string const& input) {
    JsonFault fault = {0, 0, nullptr};
    std::unique_ptr<TreeMapObject> const document(
        JsonData::parse(input.data(), input.size(), &fault));
    if (!document) {
        require(fault.line > 0 && fault.column > 0 && fault.reason != nullptr);
        return;
    }
    JsonRef const expected(json_tokener_parse(input.c_str()));
    require(json_object_equal(document->jobj, expected.get()) != 0);
    std::string const text = pretty(document->jobj);
    std::unique_ptr<TreeMapObject> const again(JsonData::parse(text.data(), text.size()));
    std::unique_ptr<TreeMapObject> const changes(JsonData::difference(document.get(), again.get()));
    require(pretty(again->jobj) == text && changes->len() == 0);
    std::unique_ptr<TreeMapObject> const found(document->findPaths("a", nullptr));
    for (int i = found->len(); i-- > 0;) {
        std::string const path = found->get<char const*>(("[" + std::to_string(i) + "]").c_str());
        require(!JsonData::isPath(path.c_str()) || document->remove(path.c_str()));
    }
    document->removeAll("a");
    require(document->merge("", again.get()) == 0);
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
    parseStrictly(asText(data, size));
    return 0;
}
