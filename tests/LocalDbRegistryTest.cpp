// The controllers and their keys.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <thread>
#include <vector>

#include "LocalDbCtrl.h"
#include "LocalDbTransaction.h"
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
    EXPECT_NE(lines.find("\nERROR: Local DB is in Lock state, cannot be destroyedDEBUG"),
              lines.npos);
    EXPECT_EQ(text(kept->jobj), "{'type':4}");  // not released
    printed([&] { delete kept; });
}

// The writer holds the type, then is in the middle of its save: into a pipe that has no reader yet.
TEST_F(LocalDbRegistryTest, RemovalWaitsForAWriterAndItsSave) {
    Logger::mask = 0;
    char const pipe[] = "data/network/network.ldb";
    for (bool transaction : {false, true}) {
        remove(pipe);
        dir.write(pipe, "{\"type\": 2}");
        LocalDbCtrl::cloneNewDB("s1");
        std::atomic<pid_t> numbers[2] = {0, 0};
        std::atomic<bool> saves = false;
        std::thread writer([&] {
            LocalDbTransaction held(transaction ? API_NETWORK : API_TYPE_COUNT, "", "s1");
            EXPECT_EQ(LocalDbCtrl::lockDbObject(API_NETWORK, "", "s1") == nullptr, transaction);
            remove(pipe);
            EXPECT_EQ(mkfifo(pipe, 0600), 0);
            numbers[0] = gettid();
            while (!saves) {
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
            EXPECT_EQ(transaction ? held.save() : LocalDbCtrl::saveDbObject(API_NETWORK, "s1"), 0);
        });
        waitUntilAsleep(numbers[0]);
        std::thread remover([&] {
            numbers[1] = gettid();
            EXPECT_EQ(LocalDbCtrl::removeDB("s1"), 1);
        });
        waitUntilAsleep(numbers[1]);
        EXPECT_NE(LocalDbCtrl::getDBByKey("s1"), LocalDbCtrl::getDBByKey("default"));
        saves = true;
        while (isHeld(LocalDbCtrl::getDBByKey("s1")->lock[API_NETWORK])) {
        }
        waitUntilAsleep(numbers[0]);
        waitUntilAsleep(numbers[1]);
        EXPECT_NE(LocalDbCtrl::getDBByKey("s1"), LocalDbCtrl::getDBByKey("default"));
        EXPECT_EQ(TempDir::read(pipe), "{\n  \"type\":2\n}");
        writer.join();
        remover.join();
        EXPECT_EQ(LocalDbCtrl::getDBByKey("s1"), LocalDbCtrl::getDBByKey("default"));
    }
}

// Two removals wait for one writer: the second one leaves alone what is registered in between.
TEST_F(LocalDbRegistryTest, RemovesAControllerOnce) {
    std::string const lines = transcript([] {
        LocalDbCtrl::cloneNewDB("s1");
        EXPECT_NE(LocalDbCtrl::lockDbObject(API_NETWORK, "", "s1"), nullptr);
        std::atomic<pid_t> numbers[2] = {0, 0};
        std::vector<std::thread> threads;
        for (std::atomic<pid_t>& number : numbers) {
            threads.emplace_back([&number] {
                number = gettid();
                EXPECT_EQ(LocalDbCtrl::removeDB("s1"), 1);
            });
            waitUntilAsleep(number);
        }
        threads.emplace_back([] {
            while (LocalDbCtrl::cloneNewDB("s1") == 0) {
            }
        });
        EXPECT_EQ(LocalDbCtrl::unlockDbObject(API_NETWORK, "s1"), 0);
        for (std::thread& thread : threads) {
            thread.join();
        }
    });
    std::string const loser = "ERROR: removeDB: Cannot found key s1\n";
    EXPECT_NE(lines.find(loser), lines.npos);
    EXPECT_EQ(lines.find(loser), lines.rfind(loser));
    EXPECT_EQ(LocalDbCtrl::controllers.count("s1"), 1U);
}

TEST_F(LocalDbRegistryTest, RemovesNothingThatWasRegisteredWhileItWaited) {
    std::unique_ptr<LOCALDB_HANDLER> const before(LocalDbCtrl::getDBByKey("default"));
    pthread_mutex_lock(&before->lock[0]);
    std::string const lines = transcript([] {
        std::atomic<pid_t> number = 0;
        std::thread remover([&] {
            number = gettid();
            LocalDbCtrl::removeDB("default");
        });
        waitUntilAsleep(number);
        LocalDbCtrl::init();
        remover.join();
    });
    EXPECT_TRUE(lines.ends_with("ERROR: removeDB: Cannot found key default\n"));
    EXPECT_EQ(LocalDbCtrl::controllers.count("default"), 1U);
    pthread_mutex_unlock(&before->lock[0]);
    Logger::mask = 0;
}

TEST_F(LocalDbRegistryTest, IsSafeFromManyThreads) {
    Logger::mask = 0;
    std::atomic<int> made = 0;
    std::thread threads[8];
    for (int i = 0; i < 8; ++i) {
        threads[i] = std::thread([&made, own = "own" + std::to_string(i)] {
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

// While the first call reads, a second one is faster: the first one's controller is dropped.
TEST_F(LocalDbRegistryTest, RegistersASessionOnce) {
    char const pipe[] = "data/network/network.ldb";
    remove(pipe);
    ASSERT_EQ(mkfifo(pipe, 0600), 0);
    int first = -1;
    int second = -1;
    printed([&] {
        std::thread slow([&] { first = LocalDbCtrl::cloneNewDB("s1"); });
        int const fd = open(pipe, O_WRONLY);  // waits for the reader
        remove(pipe);
        second = LocalDbCtrl::cloneNewDB("s1");
        close(fd);
        slow.join();
    });
    EXPECT_EQ(first, 0);
    EXPECT_EQ(second, 1);
    EXPECT_EQ(LocalDbCtrl::getDBByKey("s1")->dbObject[API_NETWORK], nullptr);
}

}  // namespace
