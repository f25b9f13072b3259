// The names of the files of the data directory, and validation against the schema files.
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

}  // namespace
