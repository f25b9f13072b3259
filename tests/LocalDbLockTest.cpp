#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <thread>
#include <vector>

#include "BEConfig.h"
#include "LocalDbCtrl.h"
#include "Logger.h"
#include "Support.h"
#include "TreeMapObject.h"

namespace {

unsigned int const LAN = API_NETWORK;
char const FILE_OF_LAN[] = "data/network/network.ldb";

class LocalDbLockTest : public LibraryTest {
  protected:
    LocalDbLockTest() {
        dir.write(FILE_OF_LAN, "{\"lan\": {\"mtu\": 1500}}");
        printed([] { LocalDbCtrl::init(); });
        controller = LocalDbCtrl::controllers.at("default");
    }
    ~LocalDbLockTest() override {
        printed([] { LocalDbCtrl::removeDB("default"); });
    }

    int state() { return std::atomic_ref<int>(controller->state[LAN]).load(); }

    // Asked from another thread, which cannot hold it.
    bool isHeld() {
        bool held = false;
        std::thread([&] {
            held = pthread_mutex_trylock(&controller->lock[LAN]) != 0;
            if (!held) {
                pthread_mutex_unlock(&controller->lock[LAN]);
            }
        }).join();
        return held;
    }

    LOCALDB_HANDLER* controller;
};

std::string const LOADED = "DEBUG: lockDbObject: Initialized local database for api type 1\n";
std::string const BUSY =
    "WARN: lockDbObject: failed to access local database (2) in writing state\n";

// One type through every row of the state table; each row begins where the one before ended.
TEST_F(LocalDbLockTest, FollowsItsStateTable) {
    enum Call { LOCK, LOCK_NODE, LOCK_NOWHERE, SAVE, UNLOCK, LOSE_FILE, GAIN_FILE, LOSE_OBJECT };
    std::string const saved =
        "DEBUG: saveDbObject: type=2 save object PTR to file ./data/network/network.ldb\n"
        "DEBUG: saveObjectToFile: save obj=PTR\n"
        "DEBUG: saveObjectToFile: object is saved\n"
        "DEBUG: ~TreeMapObject: this=PTR\nDEBUG:      release jobj=PTR\n";
    std::string const notSaved =
        "DEBUG: saveDbObject: type=2 save object PTR to file ./data/network/network.ldb\n"
        "DEBUG: saveObjectToFile: save obj=PTR\n"
        "DEBUG: saveObjectToFile: failed to save object to file (./data/network/network.ldb) "
        "ret=-1\n"
        "DEBUG: ~TreeMapObject: this=PTR\nDEBUG:      release jobj=PTR\n";
    struct {
        Call call;
        char const* result;  // "document", "node" or "null" of a lock, else a number
        int state;
        bool held;
        std::string lines;  // after the first one, look-ups apart
    } const rows[] = {
        {UNLOCK, "2", 0, false, "WARN: unlockDbObject: I am not in locked state\n"},
        {SAVE, "2", 0, false, "DEBUG: saveDbObject: I am not in locked state\n"},
        {LOCK, "document", 2, true, LOADED},
        {LOCK, "null", 2, true, BUSY},
        {LOCK_NODE, "null", 2, true, BUSY},
        {UNLOCK, "0", 1, false, ""},
        {UNLOCK, "2", 1, false, "WARN: unlockDbObject: I am not in locked state\n"},
        {SAVE, "2", 1, false, "DEBUG: saveDbObject: I am not in locked state\n"},
        {LOCK_NODE, "node", 2, true, ""},
        {SAVE, "0", 0, false, saved},
        {LOCK_NODE, "node", 2, true, LOADED},
        {UNLOCK, "0", 1, false, ""},
        {LOCK_NOWHERE, "null", 1, true, ""},
        {UNLOCK, "2", 1, false, "WARN: unlockDbObject: I am not in locked state\n"},
        {LOCK, "document", 2, true, ""},
        {LOSE_FILE, "", 2, true, ""},
        {SAVE, "2", 0, false, notSaved},
        {LOCK, "null", 0, true,
         "WARN: lockDbObject: Cannot load database from ./data/network/network.ldb\n"
         "ERROR: lockDbObject: There is something wrong! localdb 2 is null in accessable state "
         "0\n"},
        {SAVE, "2", 0, false, "DEBUG: saveDbObject: I am not in locked state\n"},
        {GAIN_FILE, "", 0, false, ""},
        {LOCK_NOWHERE, "null", 1, true, LOADED},
        {SAVE, "2", 1, false, "DEBUG: saveDbObject: I am not in locked state\n"},
        {LOSE_OBJECT, "", 1, false, ""},
        {LOCK, "null", 1, true,
         "ERROR: lockDbObject: There is something wrong! localdb 2 is null in accessable state "
         "1\n"},
        {UNLOCK, "2", 1, false, "WARN: unlockDbObject: I am not in locked state\n"},
    };
    std::vector<std::unique_ptr<TreeMapObject>> nodes;
    for (size_t i = 0; i < sizeof rows / sizeof rows[0]; ++i) {
        SCOPED_TRACE("row " + std::to_string(i));
        std::string result;
        int const before = state();
        auto const lock = [&](char const* path) {
            TreeMapObject* const got = LocalDbCtrl::lockDbObject(LAN, path, "default");
            if (got != nullptr && got != controller->dbObject[LAN]) {
                nodes.emplace_back(got);
            }
            result = got == nullptr ? "null" : *path != '\0' ? "node" : "document";
        };
        std::string lines = transcript([&] {
            switch (rows[i].call) {
                case LOCK: lock(""); break;
                case LOCK_NODE: lock("lan"); break;
                case LOCK_NOWHERE: lock("none"); break;
                case SAVE:
                    result = std::to_string(LocalDbCtrl::saveDbObject(API_NETWORK, "default"));
                    break;
                case UNLOCK:
                    result = std::to_string(LocalDbCtrl::unlockDbObject(LAN, "default"));
                    break;
                case LOSE_FILE:
                    BEConfig::DATA_LOCATION = "./data";
                    rename("data", "gone");
                    break;
                case GAIN_FILE: rename("gone", "data"); break;
                case LOSE_OBJECT:
                    delete controller->dbObject[LAN];
                    controller->dbObject[LAN] = nullptr;
                    break;
            }
        });
        EXPECT_EQ(result, rows[i].result);
        EXPECT_EQ(state(), rows[i].state);
        EXPECT_EQ(isHeld(), rows[i].held);
        if (rows[i].call > UNLOCK) {
            continue;
        }
        std::string const shown = std::to_string(before);
        std::string const first = rows[i].call < SAVE
                                      ? "DEBUG: lockDbObject: start state=" + shown + "\n"
                                      : std::string("DEBUG: ") +
                                            (rows[i].call == SAVE ? "save" : "unlock") +
                                            "DbObject: apiT=2 state=" + shown + "\n";
        size_t const lookUp = lines.find("DEBUG: getJObj");
        EXPECT_EQ(lines.substr(0, lookUp), first + rows[i].lines);
    }
    printed([&] { nodes.clear(); });
}

TEST_F(LocalDbLockTest, EndsALockWhoseDocumentIsGone) {
    for (bool save : {true, false}) {
        printed([] { LocalDbCtrl::lockDbObject(LAN, "", "default"); });
        printed([&] { delete controller->dbObject[LAN]; });
        controller->dbObject[LAN] = nullptr;
        EXPECT_EQ(transcript([&] {
                      EXPECT_EQ(save ? LocalDbCtrl::saveDbObject(API_NETWORK, "default")
                                     : LocalDbCtrl::unlockDbObject(LAN, "default"),
                                2);
                  }),
                  save ? "DEBUG: saveDbObject: apiT=2 state=2\n"
                         "DEBUG: saveDbObject: there is something wrong, I am is not initialized "
                         "already!\n"
                       : "DEBUG: unlockDbObject: apiT=2 state=2\n"
                         "ERROR: unlockDbObject: there is something wrong, I am is not "
                         "initialized already!\n");
        EXPECT_EQ(state(), DB_STATE_UNINITIALIZED);
        EXPECT_FALSE(isHeld());
    }
}

TEST_F(LocalDbLockTest, SavesWhatWasChangedAndReadsItAgain) {
    printed([&] {
        TreeMapObject* const document = LocalDbCtrl::lockDbObject(LAN, "", "default");
        document->set("lan.mtu", 1400);
        EXPECT_EQ(LocalDbCtrl::unlockDbObject(LAN, "default"), 0);
        EXPECT_EQ(dir.read(FILE_OF_LAN), "{\"lan\": {\"mtu\": 1500}}");  // unsaved
        EXPECT_EQ(LocalDbCtrl::lockDbObject(LAN, "", "default"), document);
        EXPECT_EQ(document->get<int>("lan.mtu"), 1400);
        EXPECT_EQ(LocalDbCtrl::saveDbObject(API_NETWORK, "default"), 0);
        EXPECT_EQ(dir.read(FILE_OF_LAN), "{\n  \"lan\":{\n    \"mtu\":1400\n  }\n}");
        EXPECT_EQ(controller->dbObject[LAN], nullptr);
        dir.write(FILE_OF_LAN, "[7]");
        EXPECT_EQ(text(LocalDbCtrl::lockDbObject(LAN, "", "default")->jobj), "[7]");
        LocalDbCtrl::unlockDbObject(LAN, "default");
    });
}

TEST_F(LocalDbLockTest, RefusesBadArguments) {
    BEConfig::DATA_LOCATION = "./none";
    API_TYPE_T const bad = static_cast<API_TYPE_T>(9);
    std::string const unknown =
        "ERROR: getDBByKey: Cannot found key x, return the default controller\n";
    struct {
        std::function<bool()> isRefused;
        std::string lines;
    } const rows[] = {
        {[] { return LocalDbCtrl::lockDbObject(9, "", "x") == nullptr; },
         "ERROR: lockDbObject: wrong params apiT=9 path=PTR\n"},
        {[] { return LocalDbCtrl::lockDbObject(2, nullptr, "x") == nullptr; },
         "ERROR: lockDbObject: wrong params apiT=2 path=NIL\n"},
        {[bad] { return LocalDbCtrl::saveDbObject(bad, "x") == 2; },
         "ERROR: saveDbObject: wrong params apiT=9\n"},
        {[] { return LocalDbCtrl::unlockDbObject(4294967295U, "x") == 2; },
         "ERROR: unlockDbObject: wrong params apiT=-1\n"},
        // from here on without a controller
        {[] { return LocalDbCtrl::lockDbObject(2, "", "x") == nullptr; },
         unknown + "ERROR: lockDbObject: wrong params apiT=2 path=PTR\n"},
        {[] { return LocalDbCtrl::saveDbObject(API_NETWORK, "x") == 2; },
         unknown + "ERROR: saveDbObject: wrong params apiT=2\n"},
        {[] { return LocalDbCtrl::unlockDbObject(2, "x") == 2; },
         unknown + "ERROR: unlockDbObject: wrong params apiT=2\n"},
    };
    for (size_t i = 0; i < sizeof rows / sizeof rows[0]; ++i) {
        if (i == 4) {
            printed([] { LocalDbCtrl::removeDB("default"); });
        }
        EXPECT_EQ(transcript([&] { EXPECT_TRUE(rows[i].isRefused()) << i; }), rows[i].lines);
    }
}

TEST_F(LocalDbLockTest, DropsTheDocumentWhenNoNameCanBeFormed) {
    printed([] { LocalDbCtrl::lockDbObject(LAN, "", "default"); });
    char const* const folder = API_DATA_DIR[LAN];
    API_DATA_DIR[LAN] = nullptr;
    printed([] { EXPECT_EQ(LocalDbCtrl::saveDbObject(API_NETWORK, "default"), 2); });
    API_DATA_DIR[LAN] = folder;
    EXPECT_EQ(state(), DB_STATE_UNINITIALIZED);
    EXPECT_EQ(controller->dbObject[LAN], nullptr);
    EXPECT_EQ(dir.read(FILE_OF_LAN), "{\"lan\": {\"mtu\": 1500}}");
}

// Returns when a thread, whose number it waits for, sleeps: in these tests, on a mutex or condition.
void waitUntilAsleep(std::atomic<pid_t> const& thread) {
    for (int asleep = 0; asleep < 5;) {
        std::string const status =
            TempDir::read("/proc/self/task/" + std::to_string(thread) + "/stat");
        size_t const name = status.rfind(')');
        asleep = name != status.npos && status.compare(name, 3, ") S") == 0 ? asleep + 1 : 0;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

// A writer waits for the mutex and gets it while the state still says that the other one is
// writing: the moment between the two halves of a release, held open here by hand.
TEST_F(LocalDbLockTest, WaitsForAReleaseThatIsHalfDone) {
    Logger::mask = 0;
    for (int after : {DB_STATE_UNINITIALIZED, DB_STATE_ACCESSIBLE}) {
        pthread_mutex_lock(&controller->lock[LAN]);
        std::atomic<bool> locked = false;
        std::atomic<pid_t> writerNumber = 0;
        std::thread writer([&] {
            writerNumber = gettid();
            locked = LocalDbCtrl::lockDbObject(LAN, "", "default") != nullptr;
            EXPECT_EQ(state(), DB_STATE_WRITING);
            EXPECT_EQ(LocalDbCtrl::unlockDbObject(LAN, "default"), 0);
        });
        waitUntilAsleep(writerNumber);  // it has passed its first test and waits for the mutex
        std::atomic_ref<int>(controller->state[LAN]).store(DB_STATE_WRITING);
        bool const hadObject = controller->dbObject[LAN] != nullptr;
        pthread_mutex_unlock(&controller->lock[LAN]);
        while (isHeld()) {
        }
        waitUntilAsleep(writerNumber);
        EXPECT_FALSE(locked);  // it has given the mutex back
        // the releasing call itself, whose mutex is free already
        if (after == DB_STATE_UNINITIALIZED || !hadObject) {
            EXPECT_EQ(LocalDbCtrl::saveDbObject(API_NETWORK, "default"), hadObject ? 0 : 2);
        } else {
            EXPECT_EQ(LocalDbCtrl::unlockDbObject(LAN, "default"), 0);
        }
        writer.join();
        EXPECT_TRUE(locked);
    }
}

TEST_F(LocalDbLockTest, HandsTheTypeOverAfterANullResult) {
    Logger::mask = 0;
    EXPECT_EQ(LocalDbCtrl::lockDbObject(LAN, "none", "default"), nullptr);
    std::atomic<pid_t> writerNumber = 0;
    std::thread writer([&] {
        writerNumber = gettid();
        EXPECT_NE(LocalDbCtrl::lockDbObject(LAN, "", "default"), nullptr);
        EXPECT_EQ(LocalDbCtrl::unlockDbObject(LAN, "default"), 0);
    });
    waitUntilAsleep(writerNumber);
    EXPECT_EQ(LocalDbCtrl::unlockDbObject(LAN, "default"), 2);
    writer.join();
    EXPECT_EQ(state(), DB_STATE_ACCESSIBLE);
}

// Whoever releases what nobody holds disturbs neither the mutex nor the others who do so.
TEST_F(LocalDbLockTest, SurvivesStrayReleasesOfAFreeType) {
    Logger::mask = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([] {
            for (int round = 0; round < 5000; ++round) {
                EXPECT_EQ(LocalDbCtrl::unlockDbObject(LAN, "default"), 2);
                EXPECT_EQ(LocalDbCtrl::saveDbObject(API_NETWORK, "default"), 2);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_FALSE(isHeld());
    EXPECT_EQ(pthread_mutex_destroy(&controller->lock[LAN]),
              0);  // fails when it was unlocked once too often
    pthread_mutex_init(&controller->lock[LAN], nullptr);
}

// Writers of one type add up; two controllers and the other types do not stand in their way.
TEST_F(LocalDbLockTest, LosesNoUpdateOfManyWriters) {
    Logger::mask = 0;
    int const threadCount = 8;
    int const rounds = 40;
    dir.write("data/wifi/wifi.ldb", "{}");
    LocalDbCtrl::cloneNewDB("session");
    std::atomic<int> saved = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < threadCount; ++i) {
        threads.emplace_back([&saved, i] {
            char const* const key = i % 4 == 3 ? "session" : "default";
            API_TYPE_T const type = i % 4 == 2 || i % 4 == 3 ? API_WIFI : API_NETWORK;
            for (int round = 0; round < rounds;) {
                TreeMapObject* const document = LocalDbCtrl::lockDbObject(type, "", key);
                if (document == nullptr) {
                    std::this_thread::yield();
                    continue;
                }
                ++round;
                document->set("count", document->get<int>("count") + 1);
                if (type == API_NETWORK && round % 3 == 0) {
                    EXPECT_EQ(LocalDbCtrl::saveDbObject(type, key), 0);
                    ++saved;
                } else {
                    EXPECT_EQ(LocalDbCtrl::unlockDbObject(type, key), 0);
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    TreeMapObject* const network = LocalDbCtrl::lockDbObject(API_NETWORK, "", "default");
    EXPECT_EQ(network->get<int>("count"), 4 * rounds);
    TreeMapObject* const session = LocalDbCtrl::getDBByKey("session")->dbObject[API_WIFI];
    EXPECT_EQ(session->get<int>("count"), 2 * rounds);
    LocalDbCtrl::unlockDbObject(LAN, "default");
    LocalDbCtrl::removeDB("session");
}

}  // namespace
