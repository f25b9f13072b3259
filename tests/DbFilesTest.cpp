#include <string.h>

#include <thread>

#include "BEConfig.h"
#include "CommLabel.h"
#include "LocalDbCtrl.h"
#include "Support.h"
#include "TreeMapObject.h"

namespace {

class DbFilesTest : public LibraryTest {};

std::string show(char const* text) { return text != nullptr ? text : "null"; }

TEST_F(DbFilesTest, NamesFiles) {
    struct {
        unsigned int type;
        unsigned int message;
        char const* data;
        char const* messageFile;
        char const* schema;
    } const rows[] = {
        {0, 1, "./data/gateway/gateway.ldb", "./data/gateway/GATEWAY_LOGIN_RESP.ldb",
         "./data/gateway/GATEWAY_LOGIN_RESP_SCHEMA.ldb"},
        {6, 0, "./data/qos/qos.ldb", "./data/qos/QOS_CONFIGURATION_LIST_REQ.ldb",
         "./data/qos/QOS_CONFIGURATION_LIST_REQ_SCHEMA.ldb"},
        {6, 19, "./data/qos/qos.ldb", "./data/qos/QOS_IPTV_UPDATE_RESP.ldb",
         "./data/qos/QOS_IPTV_UPDATE_RESP_SCHEMA.ldb"},
        {6, 20, "./data/qos/qos.ldb", "null", "null"},
        {7, 0, "./data/misc/misc.ldb", "null", "null"},
        {8, 0, "./data/fac/fac.ldb", "null", "null"},
        {9, 0, "null", "null", "null"},
        {4294967295U, 0, "null", "null", "null"},
    };
    for (auto const& row : rows) {
        EXPECT_EQ(show(LocalDbCtrl::getFileName(row.type)), row.data);
        EXPECT_EQ(show(LocalDbCtrl::getFileName(row.type, row.message)), row.messageFile);
        EXPECT_EQ(show(LocalDbCtrl::getSchemaFile(row.type, row.message)), row.schema);
    }
    EXPECT_STREQ(LocalDbCtrl::getApiDir(8), "fac");
    EXPECT_EQ(LocalDbCtrl::getApiDir(9), nullptr);
}

TEST_F(DbFilesTest, UsesTheDataLocationAsItIs) {
    struct {
        std::string location;
        std::string name;
    } const rows[] = {
        {"", "/gateway/gateway.ldb"},
        {"./data/", "./data//gateway/gateway.ldb"},
        {std::string(235, 'x'), std::string(235, 'x') + "/gateway/gateway.ldb"},  // 255 characters
        {std::string(236, 'x'), "null"},
        {std::string(5000, 'x'), "null"},
    };
    for (auto const& row : rows) {
        BEConfig::DATA_LOCATION = row.location;
        EXPECT_EQ(show(LocalDbCtrl::getFileName(0)), row.name);
    }
}

TEST_F(DbFilesTest, KeepsOneBufferPerFunctionAndThread) {
    char* const first = LocalDbCtrl::getFileName(0);
    char* const message = LocalDbCtrl::getFileName(0, 0);
    char* const schema = LocalDbCtrl::getSchemaFile(0, 0);
    EXPECT_EQ(LocalDbCtrl::getFileName(1), first);
    EXPECT_STREQ(first, "./data/wifi/wifi.ldb");
    EXPECT_STREQ(message, "./data/gateway/GATEWAY_LOGIN_REQ.ldb");
    EXPECT_STREQ(schema, "./data/gateway/GATEWAY_LOGIN_REQ_SCHEMA.ldb");
    std::thread([&] { EXPECT_NE(LocalDbCtrl::getFileName(2), first); }).join();
    EXPECT_STREQ(first, "./data/wifi/wifi.ldb");
}

TEST_F(DbFilesTest, ReadsTheWritableTablesAtEachUse) {
    LocalDbCtrl::getFileName(1);
    char const* const folder = API_DATA_DIR[0];
    char const* const label = WIFI_LBL[0];
    API_DATA_DIR[0] = nullptr;
    WIFI_LBL[0] = "OTHER";
    EXPECT_STREQ(LocalDbCtrl::getFileName(0), "./data/wifi/wifi.ldb");  // the name formed before
    EXPECT_EQ(LocalDbCtrl::getFileName(0, 0), nullptr);
    EXPECT_STREQ(LocalDbCtrl::getFileName(1, 0), "./data/wifi/OTHER.ldb");
    WIFI_LBL[0] = nullptr;
    EXPECT_EQ(LocalDbCtrl::getSchemaFile(1, 0), nullptr);
    EXPECT_EQ(COMM_LABEL(1, 0), nullptr);
    std::thread([] { EXPECT_EQ(LocalDbCtrl::getFileName(0), nullptr); }).join();
    API_DATA_DIR[0] = folder;
    WIFI_LBL[0] = label;
}

TEST_F(DbFilesTest, LoadsMessageFiles) {
    dir.write("data/gateway/GATEWAY_LOGIN_REQ.ldb", "{\"user\": \"admin\"}");
    dir.write("data/gateway/GATEWAY_LOGIN_RESP.ldb", "{\"cut");
    struct {
        unsigned int type;
        unsigned int message;
        char const* value;
        int error;
        char const* lines;
    } const rows[] = {
        {0, 0, "{'user':'admin'}", 0,
         "INFO: TreeMapObject::TreeMapObject filename=./data/gateway/GATEWAY_LOGIN_REQ.ldb\n"},
        {0, 1, "{}", 0,
         "INFO: TreeMapObject::TreeMapObject filename=./data/gateway/GATEWAY_LOGIN_RESP.ldb\n"},
        {0, 2, "{}", 0,
         "INFO: TreeMapObject::TreeMapObject filename=./data/gateway/GATEWAY_LOGOUT_REQ.ldb\n"},
        {7, 0, "null", 1,
         "INFO: TreeMapObject::TreeMapObject filename=(null)\n"
         "DEBUG: failed load object from (null)\n"},
        {0, 89, "null", 1,
         "INFO: TreeMapObject::TreeMapObject filename=(null)\n"
         "DEBUG: failed load object from (null)\n"},
    };
    for (auto const& row : rows) {
        std::string const lines = transcript([&] {
            TreeMapObject const message(row.type, row.message);
            EXPECT_EQ(text(message.jobj), row.value);
            EXPECT_EQ(message.error, row.error);
            EXPECT_EQ(message.jobj_parent, nullptr);
        });
        EXPECT_EQ(lines.substr(0, lines.find("DEBUG: ~")), row.lines);
    }
}

TEST_F(DbFilesTest, RefusesToValidateWhatIsNoMessageOrNoObject) {
    TreeMapObject object("{}");
    TreeMapObject none;
    struct {
        TreeMapObject* object;
        unsigned int type;
        int result;
        char const* lines;
    } const rows[] = {
        {&object, 7, 2, "ERROR: validateObject: failed to get schema file apiT=7 commT=0\n"},
        {nullptr, 7, 2, "ERROR: validateObject: failed to get schema file apiT=7 commT=0\n"},
        {nullptr, 0, 2, "ERROR: validateObject: incorrect object obj=NIL jobj=NIL\n"},
        {&none, 0, 2, "ERROR: validateObject: incorrect object obj=PTR jobj=NIL\n"},
        {&object, 0, 0,
         "DEBUG: validateFile: validate file ./data/gateway/GATEWAY_LOGIN_REQ_SCHEMA.ldb\n"
         "WARN: validateFile: file is not exist: ./data/gateway/GATEWAY_LOGIN_REQ_SCHEMA.ldb. "
         "The validation is passed with notice\n"},
    };
    for (auto const& row : rows) {
        EXPECT_EQ(transcript([&] {
                      EXPECT_EQ(LocalDbCtrl::validateObject(row.object, row.type, 0), row.result);
                  }),
                  row.lines);
    }
}

}  // namespace
