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
