#include <atomic>
#include <thread>
#include <vector>

#include "LocalDbCtrl.h"
#include "Logger.h"
#include "Support.h"
#include "TreeMapObject.h"

namespace {

class LocalDbRegistryTest : public LibraryTest {
  protected:
    LocalDbRegistryTest() {
        for (int type : {0, 1, 2, 4, 5, 6, 7, 8}) {  // no security file
            std::string const folder = API_DATA_DIR[type];
            dir.write("data/" + folder + "/" + folder + ".ldb",
                      "{\"type\": " + std::to_string(type) + "}");
        }
        dir.write("data/qos/qos.ldb", "{\"cut");
        printed([] { LocalDbCtrl::init(); });
    }

    ~LocalDbRegistryTest() override {
        printed([] {
            while (!LocalDbCtrl::controllers.empty()) {
                std::string const key = LocalDbCtrl::controllers.begin()->first;
                LocalDbCtrl::removeDB(key.c_str());
            }
        });
    }
};

TEST_F(LocalDbRegistryTest, FallsBackToTheDefaultController) {
    LOCALDB_HANDLER* const controller = LocalDbCtrl::controllers.at("default");
    struct {
        char const* key;
        char const* lines;
    } const rows[] = {
        {"default", ""},
        {nullptr, "ERROR: getDBByKey: sessionKey is NULL, return the default controller\n"},
        {"x", "ERROR: getDBByKey: Cannot found key x, return the default controller\n"},
    };
    for (auto const& row : rows) {
        EXPECT_EQ(transcript([&] { EXPECT_EQ(LocalDbCtrl::getDBByKey(row.key), controller); }),
                  row.lines);
    }
    for (unsigned int type = 0; type < API_TYPE_COUNT; ++type) {
        EXPECT_EQ(controller->state[type], DB_STATE_UNINITIALIZED);
        EXPECT_EQ(controller->dbObject[type], nullptr);
    }
    EXPECT_EQ(transcript([] { LocalDbCtrl::removeDB("default"); }),
              "DEBUG: Local DB handler destructor\n");
    EXPECT_TRUE(LocalDbCtrl::controllers.empty());
    printed([] { EXPECT_EQ(LocalDbCtrl::getDBByKey("x"), nullptr); });
    EXPECT_EQ(LocalDbCtrl::controllers.at("default"), nullptr);
    EXPECT_EQ(transcript([] { EXPECT_EQ(LocalDbCtrl::removeDB("default"), 1); }), "");
}

TEST_F(LocalDbRegistryTest, StartsAnewWithASecondInit) {
    LOCALDB_HANDLER* const before = LocalDbCtrl::controllers.at("default");
    printed([] { LocalDbCtrl::lockDbObject(0, "", "default"); });
    EXPECT_EQ(transcript([] { LocalDbCtrl::init(); }), "DEBUG: Local DB handler constructor\n");
    EXPECT_EQ(LocalDbCtrl::controllers.size(), 1U);
    EXPECT_NE(LocalDbCtrl::controllers.at("default"), before);
    EXPECT_EQ(LocalDbCtrl::controllers.at("default")->state[0], DB_STATE_UNINITIALIZED);
    EXPECT_EQ(before->state[0], DB_STATE_WRITING);  // dropped as it is, not destroyed
    pthread_mutex_unlock(&before->lock[0]);
    before->state[0] = DB_STATE_ACCESSIBLE;
    printed([&] { delete before; });
}

TEST_F(LocalDbRegistryTest, ClonesFromTheFiles) {
    std::string expected = "DEBUG: Local DB handler constructor\n";
    for (unsigned int type = 0; type < API_TYPE_COUNT; ++type) {
        expected += type == API_SECURITY
                        ? "WARN: cloneNewDB: Cannot load database from "
                          "./data/security/security.ldb\n"
                        : "DEBUG: cloneNewDB: Initialized local database for api type " +
                              std::to_string(type) + "\n";
    }
    expected += "DEBUG: cloneNewDB: new handler created for session s1\n";
    EXPECT_EQ(transcript([] { EXPECT_EQ(LocalDbCtrl::cloneNewDB("s1"), 1); }), expected);
    LOCALDB_HANDLER* const session = LocalDbCtrl::getDBByKey("s1");
    for (unsigned int type = 0; type < API_TYPE_COUNT; ++type) {
        bool const loaded = type != API_SECURITY;
        EXPECT_EQ(session->state[type], loaded ? DB_STATE_ACCESSIBLE : DB_STATE_UNINITIALIZED);
        EXPECT_EQ(session->dbObject[type] != nullptr, loaded);
    }
    EXPECT_EQ(text(session->dbObject[8]->jobj), "{'type':8}");
    EXPECT_EQ(session->dbObject[API_QOS]->jobj, nullptr);  // a bad file counts as loaded

    struct {
        char const* key;
        char const* lines;
    } const refused[] = {
        {"s1", "DEBUG: cloneNewDB: session DB is already for key s1, something weird\n"},
        {"default", "DEBUG: cloneNewDB: session DB is already for key default, something weird\n"},
        {nullptr, "WARN: cloneNewDB: sessionKey is NULL, nothing to be created\n"},
    };
    for (auto const& row : refused) {
        EXPECT_EQ(transcript([&] { EXPECT_EQ(LocalDbCtrl::cloneNewDB(row.key), 0); }), row.lines);
    }
    EXPECT_EQ(LocalDbCtrl::getDBByKey("s1"), session);
}

TEST_F(LocalDbRegistryTest, RemovesControllersEvenWhileOneTypeIsWritten) {
    printed([] {
        LocalDbCtrl::cloneNewDB("s1");
        LocalDbCtrl::lockDbObject(4, "", "s1");
    });
    LOCALDB_HANDLER* const session = LocalDbCtrl::getDBByKey("s1");
    pthread_mutex_unlock(&session->lock[4]);  // as between the two halves of a save
    TreeMapObject* const kept = session->dbObject[4];
    std::string const lines = transcript([] { EXPECT_EQ(LocalDbCtrl::removeDB("s1"), 1); });
    EXPECT_TRUE(lines.starts_with("DEBUG: Local DB handler destructor\nDEBUG: ~TreeMapObject"));
    EXPECT_EQ(linesOf(lines, "ERROR").substr(0, 57),
              "ERROR: Local DB is in Lock state, cannot be destroyedDEBU");
    EXPECT_EQ(text(kept->jobj), "{'type':4}");  // not released
    printed([&] { delete kept; });
    EXPECT_EQ(transcript([] { EXPECT_EQ(LocalDbCtrl::removeDB("s1"), 1); }),
              "ERROR: removeDB: Cannot found key s1\n");
    EXPECT_EQ(transcript([] { EXPECT_EQ(LocalDbCtrl::removeDB(nullptr), 1); }),
              "WARN: removeDB: sessionKey is NULL, nothing to be removed\n");
}

TEST_F(LocalDbRegistryTest, IsSafeFromManyThreads) {
    Logger::mask = 0;
    std::atomic<int> made = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&made, own = "own" + std::to_string(i)] {
            for (int round = 0; round < 20; ++round) {
                EXPECT_EQ(LocalDbCtrl::cloneNewDB(own.c_str()), 1);
                EXPECT_NE(LocalDbCtrl::getDBByKey(own.c_str()), LocalDbCtrl::getDBByKey("none"));
                made += LocalDbCtrl::cloneNewDB(("shared" + std::to_string(round)).c_str());
                EXPECT_EQ(LocalDbCtrl::removeDB(own.c_str()), 1);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(made, 20);  // of each shared key exactly one
    EXPECT_EQ(LocalDbCtrl::controllers.size(), 21U);
}

}  // namespace
