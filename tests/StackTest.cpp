// Every operation runs on a small stack, on a document of 256 levels.
#include "BELoginRecord.h"
#include "JsonData.h"
#include "LocalDbCtrl.h"
#include "Logger.h"
#include "Support.h"
#include "TreeMapObject.h"

namespace {

int const LEVELS = 256;

char const RECURSIVE_SCHEMA[] = "{\"properties\": {\"m\": {\"$ref\": \"#\"}}}";

void workOnADeepDocument() {
    std::string path;
    for (int i = 1; i < LEVELS; ++i) {
        path += "m.";
    }
    TreeMapObject document(false);
    document.set((path + "name").c_str(), "x");
    EXPECT_STREQ(document.get<char const*>((path + "name").c_str()), "x");
    for (TreeMapObject* hit : document.find("name", "x")) {
        EXPECT_EQ(hit->addArrayItem(1), -1);
        delete hit;
    }
    EXPECT_EQ(JsonData::cloneObject(document.jobj), nullptr);  // deeper than text is read
    EXPECT_GT(strlen(JsonData::getJson(&document)), size_t{LEVELS});
    EXPECT_EQ(JsonData::saveObjectToFile("deep", &document), 2);
    EXPECT_EQ(JsonData::createObject(JsonData::getJson(&document)), nullptr);
    EXPECT_EQ(JsonData::validateObject(&document, RECURSIVE_SCHEMA), 2);  // past its limit
    document.set("list.[0]", 1);
    TreeMapObject* const list = document.get("list");
    EXPECT_EQ(list->delArrayItem(0), 0);
    delete list;
    printedOnError([&] { EXPECT_GT(document.dump(""), LEVELS); });
    document.del(path.substr(0, path.size() - 1).c_str());
}

void workOnTheDatabase() {
    LocalDbCtrl::init();
    TreeMapObject* const document = LocalDbCtrl::lockDbObject(API_WIFI, "", "default");
    document->set("list.[0].[0].name", 2.5);
    EXPECT_EQ(LocalDbCtrl::saveDbObject(API_WIFI, "default"), 0);
    EXPECT_EQ(LocalDbCtrl::cloneNewDB("session"), 1);
    LocalDbCtrl::removeDB("session");
    LocalDbCtrl::removeDB("default");
    BELoginRecord::init();
    EXPECT_TRUE(BELoginRecord::setAttempt("a"));
    BELoginRecord::isRunning = false;
}

class StackTest : public LibraryTest {};

TEST_F(StackTest, FitsASmallThread) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "sanitizers have frames of their own";
#endif
    dir.write("data/wifi/wifi.ldb", "{}");
    printed([] { onSmallStack(workOnADeepDocument); });
    printed([] { onSmallStack(workOnTheDatabase); });
}

}  // namespace
