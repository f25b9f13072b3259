// Lock, save and unlock between threads.
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "BEConfig.h"
#include "LocalDbCtrl.h"
#include "LocalDbTransaction.h"
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

    bool isHeld() { return ::isHeld(controller->lock[LAN]); }

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

// Of two writers that wait for the mutex, one saves into a pipe that nobody reads yet, and the other
// gets the mutex in the middle of that save.
TEST_F(LocalDbLockTest, WaitsForASaveThatLasts) {
    Logger::mask = 0;
    EXPECT_EQ(LocalDbCtrl::lockDbObject(LAN, "none", "default"), nullptr);
    std::atomic<pid_t> writerNumbers[2] = {0, 0};
    auto const write = [](std::atomic<pid_t>& number) {
        number = gettid();
        TreeMapObject* const document = LocalDbCtrl::lockDbObject(LAN, "", "default");
        ASSERT_NE(document, nullptr);
        document->set("saves", document->get<int>("saves") + 1);
        EXPECT_EQ(LocalDbCtrl::saveDbObject(API_NETWORK, "default"), 0);
    };
    std::thread writers[2] = {std::thread(write, std::ref(writerNumbers[0])),
                              std::thread(write, std::ref(writerNumbers[1]))};
    waitUntilAsleep(writerNumbers[0]);
    waitUntilAsleep(writerNumbers[1]);
    remove(FILE_OF_LAN);
    ASSERT_EQ(mkfifo(FILE_OF_LAN, 0600), 0);
    EXPECT_EQ(LocalDbCtrl::unlockDbObject(LAN, "default"), 2);
    while (state() != DB_STATE_WRITING || isHeld()) {
    }
    waitUntilAsleep(writerNumbers[0]);
    waitUntilAsleep(writerNumbers[1]);
    EXPECT_EQ(state(), DB_STATE_WRITING);
    rename(FILE_OF_LAN, "pipe");
    dir.write(FILE_OF_LAN, "{\"saves\": 5}");
    EXPECT_EQ(TempDir::read("pipe").find("{\n  \"lan\""), 0U);
    writers[0].join();
    writers[1].join();
    EXPECT_EQ(TempDir::read(FILE_OF_LAN), "{\n  \"saves\":6\n}");
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

// A writer that waits for the mutex is not overtaken, and notices what a program changes in the public
// fields also when nobody else comes.
TEST_F(LocalDbLockTest, ServesAWaiterFirstAndLooksAgain) {
    Logger::mask = 0;
    for (bool othersCome : {true, false}) {
        EXPECT_EQ(LocalDbCtrl::lockDbObject(LAN, "none", "default"), nullptr);
        std::atomic<pid_t> writerNumber = 0;
        std::atomic<bool> refused = !othersCome;
        std::thread writer([&] {
            writerNumber = gettid();
            EXPECT_NE(LocalDbCtrl::lockDbObject(LAN, "", "default"), nullptr);
            while (!refused) {
                std::this_thread::yield();
            }
            EXPECT_EQ(LocalDbCtrl::unlockDbObject(LAN, "default"), 0);
        });
        waitUntilAsleep(writerNumber);
        std::atomic_ref<int>(controller->state[LAN]) = DB_STATE_WRITING;
        pthread_mutex_unlock(&controller->lock[LAN]);
        std::atomic_ref<int>(controller->state[LAN]) = DB_STATE_ACCESSIBLE;
        if (othersCome) {
            LocalDbTransaction const other(LAN, "", "default");
            EXPECT_EQ(other.status(), LocalDbTransaction::BUSY);
            refused = true;
        }
        writer.join();
    }
}

// Whoever releases what nobody holds disturbs neither the mutex nor the others who do so.
TEST_F(LocalDbLockTest, SurvivesStrayReleasesOfAFreeType) {
    Logger::mask = 0;
    std::thread threads[4];
    for (int i = 0; i < 4; ++i) {
        threads[i] = std::thread([] {
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

}  // namespace
