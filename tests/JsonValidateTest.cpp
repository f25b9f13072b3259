// Passes and refusals around the validator.
#include "BEConfig.h"
#include "JsonData.h"
#include "LocalDbCtrl.h"
#include "Support.h"
#include "TreeMapObject.h"

namespace {

class JsonValidateTest : public LibraryTest {};

TEST_F(JsonValidateTest, RefusesHandlesWithAnError) {
    TreeMapObject failed("{'a': 1}");
    failed.error = 1;
    EXPECT_EQ(transcript([&] { EXPECT_EQ(JsonData::validateObject(&failed, "{}"), 2); }),
              "ERROR: validateObject: bad pobj param error=1 jobj=PTR\n");
    printed([&] { EXPECT_EQ(JsonData::getJson(&failed), nullptr); });
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
