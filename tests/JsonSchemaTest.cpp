// The validator: numbers, limits and hostile schemas. What the drafts ask is in JsonSchemaSuite.cpp.
#include <jsonschema.h>

#include <string>

#include "Support.h"
#include "jsondata/JsonRef.h"

using namespace vobiutils;

namespace {

// Deeper than json-c reads by default; with double quotes or single ones.
json_object* parsed(std::string const& text) {
    json_tokener* const tokener = json_tokener_new_ex(5000);
    json_object* const value =
        json_tokener_parse_ex(tokener, text.c_str(), static_cast<int>(text.size()) + 1);
    json_tokener_free(tokener);
    return value;
}

// On a small stack. What is without bounds runs into the test's time limit.
bool isValid(std::string const& schema, std::string const& instance) {
    JsonRef const schemaValue(parsed(schema));
    JsonRef const value(parsed(instance));
    EXPECT_TRUE(schemaValue) << schema.substr(0, 100);
    std::string const before = text(schemaValue.get()) + text(value.get());
    bool valid = false;
    onSmallStack([&] { valid = json_validate_instance(value.get(), schemaValue.get()) != 0; });
    EXPECT_EQ(text(schemaValue.get()) + text(value.get()), before);
    return valid;
}

// Most cases stand in golden/schemas.json; these are no JSON.
TEST(JsonSchema, RefusesWhatIsNoNumber) {
    EXPECT_FALSE(isValid("{'maximum':5}", "NaN"));
    EXPECT_FALSE(isValid("{'maximum':5.5}", "NaN"));
    EXPECT_FALSE(isValid("{'const':5}", "NaN"));
    EXPECT_FALSE(isValid("{'const':NaN}", "5.5"));
    EXPECT_FALSE(isValid("{'multipleOf':1}", "Infinity"));
    EXPECT_FALSE(isValid("{'type':'integer'}", "Infinity"));
    EXPECT_FALSE(isValid("{'minimum':NaN}", "{}"));
    EXPECT_FALSE(isValid("{'not':{'minimum':NaN}}", "{}"));
    EXPECT_EQ(json_validate_instance(nullptr, nullptr), 0);
}

std::string list(int count, std::string (*element)(int)) {
    std::string elements;
    for (int i = 0; i < count; ++i) {
        elements += (i > 0 ? "," : "") + element(i);
    }
    return elements;
}

std::string doubling(int i) {
    std::string const next = "{'$ref':'#/definitions/d" + std::to_string(i + 1) + "'}";
    return "'d" + std::to_string(i) + "':{'allOf':[" + next + "," + next + "]}";
}

TEST(JsonSchema, BearsHostileInput) {
    std::string const letters(100000, 'a');
    std::string const arrays = std::string(3000, '[') + std::string(3000, ']');
    std::string nots;
    for (int i = 0; i < 3000; ++i) {
        nots += "{'not':";
    }
    auto const number = [](int i) { return std::to_string(i); };
    std::string const numbers = "[" + list(50000, number) + "]";
    std::string const texts = "[" + list(100000, [](int) { return std::string("'a:'"); }) + "]";
    auto const stamp = [](int i) { return std::to_string(1732317444000000000 + i); };
    auto const unknown = [](int i) { return "'u" + std::to_string(i) + "':1"; };
    std::string optional;
    std::string greek;
    for (int i = 0; i < 1000; ++i) {
        optional += "(b)?";
        greek += "\xCE" + std::string(1, static_cast<char>(0x90 + i % 48));
    }
    struct {
        char const* name;
        std::string schema;
        std::string instance;
        bool valid;
    } const rows[] = {
        {"circle", "{'$ref':'#'}", "1", false},
        {"two circles", "{'allOf':[{'$ref':'#'},{'$ref':'#'}]}", "1", false},
        {"doubling",
         "{'definitions':{" + list(50, doubling) + ",'d50':true},'$ref':'#/definitions/d0'}", "1",
         false},
        {"deep schema", nots + "true" + std::string(3000, '}'), "1", false},
        {"deep instance", "{'items':{'$ref':'#'}}", arrays, false},
        {"deep instance, not looked into", "{'type':'array'}", arrays, true},
        {"instance of 70 levels", "{'items':{'$ref':'#'}}",
         std::string(70, '[') + std::string(70, ']'), true},
        {"deep constant", "{'const':" + arrays + "}", arrays, false},
        {"deep elements", "{'uniqueItems':true}", "[" + arrays + ",1]", false},
        {"backtracking", "{'pattern':'(a+)+$'}", "'" + letters + "!'", false},
        {"backtracking, negated", "{'not':{'pattern':'^(a|aa)+$'}}", "'" + letters + "!'", false},
        {"backtracking in names", "{'patternProperties':{'^(a+)+$':true}}",
         "{'" + letters + "!':1}", false},
        {"recursion in a pattern", "{'pattern':'^(.|(?R))*$'}", "'" + letters + "'", false},
        {"groups in groups",
         "{'pattern':'" + std::string(1000, '(') + std::string(1000, ')') + "'}", "'a'", false},
        {"many optional parts", "{'pattern':'a+" + optional + "$'}", "'aab'", true},
        {"far look behind", "{'pattern':'(?<=ba{60000})'}", "'" + letters + "'", false},
        {"long class", "{'pattern':'^[^" + greek + "]*$'}", "'" + letters + letters + "'", false},
        {"unknown keywords", "{'items':{" + list(5000, unknown) + "}}", numbers, false},
        {"no limit turned around", "{'not':{'format':'regex'}}",
         "'" + std::string(33, '(') + std::string(33, ')') + "'", false},
        {"large repetition", "{'pattern':'((a{100}){100}){100}'}", "'a'", false},
        {"long pattern", "{'pattern':'" + letters + "'}", "'a'", false},
        {"long text", "{'pattern':'^[a-z]*$'}", "'" + std::string(1000000, 'a') + "'", true},
        {"pattern given by the instance", "{'format':'regex'}", "'" + letters + "'", false},
        {"bytes that are not UTF-8", "{'not':{'pattern':'b'}}", "'a\xFF'", false},
        {"long reference", "{'$ref':'#/" + letters + "'}", "1", false},
        {"long identifier", "{'$id':'" + letters + "','items':{'$ref':'#'}}", "1", false},
        {"many texts matched", "{'items':{'pattern':'a'}}", texts, false},
        {"many texts of a format", "{'items':{'format':'uri'}}", texts, false},
        {"too many elements", "{'uniqueItems':true}", "[" + list(260000, number) + "]", false},
        {"many elements", "{'uniqueItems':true}", numbers, true},
        {"large numbers close together", "{'uniqueItems':true}", "[" + list(8000, stamp) + "]",
         true},
        {"many elements, two equal", "{'uniqueItems':true}", "[" + numbers + "," + numbers + "]",
         false},
        {"long constant", "{'enum':[1," + numbers + "]}", numbers, true},
    };
    for (auto const& row : rows) {
        EXPECT_EQ(isValid(row.schema, row.instance), row.valid) << row.name;
    }
}

TEST(JsonSchema, ReadsFiles) {
    TempDir const dir;
    dir.write("schema", "{\"type\": \"object\"}");
    dir.write("object", "{}");
    dir.write("array", "[]");
    dir.write("bad", "{");
    EXPECT_NE(json_validate_instance_from_file("object", "schema"), 0);
    EXPECT_EQ(json_validate_instance_from_file("array", "schema"), 0);
    for (char const* file : {"bad", "none", static_cast<char const*>(nullptr)}) {
        EXPECT_EQ(json_validate_instance_from_file(file, "schema"), 0);
        EXPECT_EQ(json_validate_instance_from_file("object", file), 0);
    }
}

}  // namespace
