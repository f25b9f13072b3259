// Commands of golden sessions: documents, their files, and validation.
#include <fcntl.h>
#include <jsonschema.h>
#include <unistd.h>

#include "BEConfig.h"
#include "CompiledSchema.h"
#include "JsonData.h"
#include "LocalDbCtrl.h"
#include "Session.h"
#include "jsondata/JsonRef.h"

using namespace vobiutils;

namespace {

// Parses deeper than json-c does by default.
json_object* parsed(char const* text) {
    std::unique_ptr<json_tokener, void (*)(json_tokener*)> const tokener(json_tokener_new_ex(6000),
                                                                         json_tokener_free);
    json_object* const value = json_tokener_parse_ex(tokener.get(), text, -1);
    EXPECT_EQ(json_tokener_get_error(tokener.get()), json_tokener_success);
    return value;
}

// Calls the validator directly, on a small stack. It must leave schema and instance unchanged.
void isValid(Call& c) {
    JsonRef const schema(parsed(c.word(1)));
    JsonRef const instance(parsed(c.word(2)));
    std::string const before = text(schema.get()) + text(instance.get());
    Actor validator;
    validator.begin(
        [&] { return shown(json_validate_instance(instance.get(), schema.get()) != 0); });
    c.result = validator.end();
    EXPECT_EQ(text(schema.get()) + text(instance.get()), before);
}

// What a compiled schema says of a value.
void check(Call& c, CompiledSchema const& schema, json_object* value) {
    CompiledSchema::Fault fault = schema.fault();
    bool const isValid = schema.accepts(value, &fault);
    EXPECT_TRUE(schema || !isValid);
    EXPECT_EQ(CompiledSchema(schema).accepts(value), isValid);
    c.result = isValid ? "valid"
                       : std::string("'") + fault.path + "' " + fault.message + " (" +
                             fault.keyword + " at '" + fault.schemaPath + "')";
}

void checkText(Call& c) {
    JsonRef schema(json(c.word(1)));
    CompiledSchema compiled(schema.get());
    schema.reset(nullptr);
    check(c, compiled, JsonRef(json(c.word(2))).get());
}

void validate(Call& c) {
    IntendedLeaks const schema;  // of an invalid document
    c.answer(JsonData::validateObject(c.handle(1), c.word(2)));
}

// Validates a database by the schema of its whole document, before and after a member is changed.
void validateChangedDatabase(Call& c) {
    std::unique_ptr<TreeMapObject> const document(
        JsonData::createObjectFromFile(LocalDbCtrl::getFileName(c.number(1))));
    std::string const type = LocalDbCtrl::getApiDir(c.number(1));
    std::string const schema = BEConfig::DATA_LOCATION + "/" + type + "/" + type + "_SCHEMA.ldb";
    TreeMapObject value(json(c.word(3)));
    c.answer(JsonData::validateFile(document.get(), schema.c_str()));
    document->set(c.word(2), &value);
    c.result += ", then " + shown(JsonData::validateFile(document.get(), schema.c_str()));
}

// Saves through /proc/self/fd, into a file that may have lost its name.
void saveOpen(Call& c, bool hasName) {
    int const fd = open(c.word(1), O_RDWR);
    if (!hasName) {
        unlink(c.word(1));
    }
    std::string const name = "/proc/self/fd/" + std::to_string(fd);
    c.answer(JsonData::saveObjectToFile(name.c_str(), c.handle(2)));
    c.result += " " + TempDir::read(name);
    close(fd);
}

void dump(Call& c) {
    TreeMapObject* const handle = c.handle(1);
    auto const action = [&] {
        handle != nullptr ? handle->dump(c.word(2)) : JsonData::dumpObject(handle, c.word(2));
    };
    c.result = printed(action, stderr);
}

void saveText(Call& c) {
    TreeMapObject document(parsed(c.word(2)));
    c.answer(JsonData::saveObjectToFile(c.word(1), &document));
}

// The text may hold any byte.
void parseStrictly(Call& c) {
    std::string const& bytes = c.words[2];
    JsonFault fault = {0, 0, "none"};
    c.keep(1, JsonData::parse(c.word(2), c.word(2) != nullptr ? bytes.size() : 0, &fault));
    if (fault.line != 0) {
        c.result =
            std::to_string(fault.line) + ":" + std::to_string(fault.column) + " " + fault.reason;
    }
}

}  // namespace

Commands const DOCUMENT_COMMANDS = {
    {"new", [](Call& c) { c.keep(1, new TreeMapObject(c.word(2))); }},
    {"new-empty", [](Call& c) { c.keep(1, new TreeMapObject(c.words[2] == "array")); }},
    {"new-deep", [](Call& c) { c.keep(1, new TreeMapObject(parsed(c.word(2)))); }},
    {"create", [](Call& c) { c.keep(1, JsonData::createObject(c.word(2))); }},
    {"parse", parseStrictly},
    {"difference", [](Call& c) { c.keep(1, JsonData::difference(c.handle(2), c.handle(3))); }},
    {"load", [](Call& c) { c.keep(1, JsonData::createObjectFromFile(c.word(2))); }},
    {"message", [](Call& c) { c.keep(1, new TreeMapObject(c.number(2), c.number(3))); }},
    {"copy", [](Call& c) { c.result = text(JsonRef(JsonData::cloneObject(c.node(1))).get()); }},
    {"json", [](Call& c) { c.answer(JsonData::getJson(c.handle(1))); }},
    {"save", [](Call& c) { c.answer(JsonData::saveObjectToFile(c.word(1), c.handle(2))); }},
    {"save-text", saveText},
    {"save-open", [](Call& c) { saveOpen(c, true); }},
    {"save-nameless", [](Call& c) { saveOpen(c, false); }},
    {"dump", dump},
    {"valid", isValid},
    {"valid-files",
     [](Call& c) { c.answer(json_validate_instance_from_file(c.word(1), c.word(2)) != 0); }},
    {"check", checkText},
    {"check-file",
     [](Call& c) { check(c, CompiledSchema(c.word(1)), JsonRef(json(c.word(2))).get()); }},
    {"validate", validate},
    {"validate-file", [](Call& c) { c.answer(JsonData::validateFile(c.handle(1), c.word(2))); }},
    {"validate-files", [](Call& c) { c.answer(JsonData::validateFile(c.word(1), c.word(2))); }},
    {"validate-changed-database", validateChangedDatabase},
    {"validate-message",
     [](Call& c) { c.answer(LocalDbCtrl::validateObject(c.handle(1), c.number(2), c.number(3))); }},
};
