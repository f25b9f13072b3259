#include "BEConfig.h"
#include "JsonData.h"
#include "LocalDbCtrl.h"
#include "Support.h"
#include "TreeMapObject.h"

namespace {

class JsonValidateTest : public LibraryTest {
  protected:
    JsonValidateTest() {
        dir.write("schema", "{\"type\": \"object\", \"required\": [\"a\"]}");
        dir.write("not-json", "{");
        dir.write("good", "{\"a\": 1}");
        dir.write("bad", "{\"b\": 1}");
        failed.error = 1;
    }

    TreeMapObject good{"{'a': 1}"};
    TreeMapObject bad{"{'b': 1}"};
    TreeMapObject none;
    TreeMapObject failed{"{'a': 1}"};
};

TEST_F(JsonValidateTest, ValidatesHandlesAgainstText) {
    IntendedLeaks const schemaOfAFailure;
    char const* const schema = "{'required': ['a']}";
    struct {
        TreeMapObject* object;
        char const* schema;
        int result;
        char const* lines;
    } const rows[] = {
        {&good, schema, 0, ""},
        {&bad, schema, 2, "ERROR: validateObject: failed to validate jobj\n"},
        {&bad, "{", 0, "WARN: Invalid schema!\n"},
        {&bad, "", 0, "WARN: Invalid schema!\n"},
        {&bad, "null", 0, "WARN: Invalid schema!\n"},
        {&bad, nullptr, 0, "WARN: Invalid schema!\n"},
        {&good, "5", 2, "ERROR: validateObject: failed to validate jobj\n"},
        {nullptr, "{", 2, "ERROR: validateObject: bad pobj param obj=NIL\n"},
        {&none, "{", 2, "ERROR: validateObject: bad pobj param obj=PTR\n"},
        {&failed, schema, 2, "ERROR: validateObject: bad pobj param error=1 jobj=PTR\n"},
    };
    for (auto const& row : rows) {
        EXPECT_EQ(transcript([&] {
                      EXPECT_EQ(JsonData::validateObject(row.object, row.schema), row.result);
                  }),
                  row.lines);
    }
}

TEST_F(JsonValidateTest, ValidatesFiles) {
    struct {
        char const* data;
        char const* schema;
        int result;
        char const* lines;
    } const rows[] = {
        {"good", "schema", 0, ""},
        {"bad", "schema", 2, ""},
        {"not-json", "schema", 2, ""},
        {"good", "not-json", 2, ""},
        {"none", "schema", 2, "ERROR: validateFile: file is not exist\nnone\n"},
        {nullptr, "schema", 2, "ERROR: validateFile: file is not exist\n(null)\n"},
        {"none", "no-schema", 0,
         "WARN: validateFile: file is not exist\nno-schema. No validation is required\n"},
        {"good", nullptr, 0,
         "WARN: validateFile: file is not exist\n(null). No validation is required\n"},
    };
    for (auto const& row : rows) {
        EXPECT_EQ(transcript(
                      [&] { EXPECT_EQ(JsonData::validateFile(row.data, row.schema), row.result); }),
                  row.lines);
    }
}

TEST_F(JsonValidateTest, ValidatesHandlesAgainstFiles) {
    dir.write("null-schema", "{\"type\": \"null\"}");
    struct {
        TreeMapObject* object;
        char const* schema;
        int result;
        std::string lines;
    } const rows[] = {
        {&good, "schema", 0, ""},
        {&bad, "schema", 2, ""},
        {&failed, "schema", 0, ""},
        {&none, "schema", 2, ""},
        {&none, "null-schema", 0, ""},
        {nullptr, "schema", 2, ""},
        {&good, "not-json", 2, "ERROR: validateFile: failed to parse schema file not-json\n"},
        {nullptr, "no-schema", 0,
         "WARN: validateFile: file is not exist: no-schema. The validation is passed with "
         "notice\n"},
    };
    for (auto const& row : rows) {
        std::string const first = "DEBUG: validateFile: validate file " + std::string(row.schema);
        EXPECT_EQ(transcript([&] {
                      EXPECT_EQ(JsonData::validateFile(row.object, row.schema), row.result);
                  }),
                  first + "\n" + row.lines);
    }
}

// The messages of the sample gateway against its schema files.
TEST_F(JsonValidateTest, ValidatesMessagesOfTheSampleGateway) {
    BEConfig::DATA_LOCATION = SAMPLE_GATEWAY "/data";
    struct {
        unsigned int type;
        unsigned int message;
        char const* path;  // what is changed in the sample's own message
        char const* value;
    } const rows[] = {
        {API_GATEWAY, 0, "username", "''"},
        {API_GATEWAY, 0, "password", "5"},
        {API_GATEWAY, 0, "extra", "1"},
        {API_WIFI, 18, "id", "0"},
        {API_WIFI, 18, "security.mode", "'open-sesame'"},
        {API_SERVICE, 42, "externalPort", "65536"},
        {API_SERVICE, 42, "internalClient", "'192.168.1.300'"},
        {API_SERVICE, 42, "protocol", "'icmp'"},
        {API_SERVICE, 37, "rules.[0].name", "'two words'"},
        {API_SERVICE, 37, "rules.[5].externalPort", "0"},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(std::to_string(row.message) + " " + row.path);
        printed([&] {
            TreeMapObject message(row.type, row.message);
            EXPECT_EQ(LocalDbCtrl::validateObject(&message, row.type, row.message), 0);
            TreeMapObject value(json(row.value));
            message.set(row.path, &value);
            EXPECT_EQ(LocalDbCtrl::validateObject(&message, row.type, row.message), 2);
        });
    }
}

}  // namespace
