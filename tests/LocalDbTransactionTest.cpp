// Transactions: what they say, hold, keep and discard.
#include "LocalDbTransaction.h"

#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <stdexcept>
#include <thread>

#include "BEConfig.h"
#include "Logger.h"
#include "Support.h"

namespace {

char const FILE_OF_LAN[] = "data/network/network.ldb";

class LocalDbTransactionTest : public LibraryTest {
  protected:
    LocalDbTransactionTest() {
        Logger::mask = 0;
        dir.write(FILE_OF_LAN, "{\"lan\": {\"mtu\": 1500}}");
        LocalDbCtrl::init();
        controller = LocalDbCtrl::controllers.at("default");
    }
    ~LocalDbTransactionTest() override { LocalDbCtrl::removeDB("default"); }

    // "1 free {...}": state, mutex, document.
    std::string memory(API_TYPE_T type = API_NETWORK) {
        TreeMapObject const* const document = controller->dbObject[type];
        return std::to_string(controller->state[type]) +
               (isHeld(controller->lock[type]) ? " held" : " free") +
               (document != nullptr ? " " + text(document->jobj) : "");
    }

    LOCALDB_HANDLER* controller;
};

TEST_F(LocalDbTransactionTest, SavesKeepsOrDiscards) {
    {
        LocalDbTransaction whole(API_NETWORK, "", "default");
        ASSERT_TRUE(whole);
        EXPECT_EQ(whole.object(), controller->dbObject[API_NETWORK]);
        whole->set("lan.mtu", 1);
        EXPECT_EQ(memory(), "2 held {'lan':{'mtu':1}}");
    }
    EXPECT_EQ(memory(), "0 free");  // it was read for this lock
    {
        LocalDbTransaction node(API_NETWORK, "lan", "default");
        node->set("mtu", 2);
        EXPECT_EQ(node.keep(), 0);
        EXPECT_EQ(node.status(), LocalDbTransaction::ENDED);
        EXPECT_EQ(node.object(), nullptr);
        EXPECT_EQ(node.keep() + node.save(), 4);
    }
    EXPECT_EQ(memory(), "1 free {'lan':{'mtu':2}}");
    EXPECT_THROW(
        {
            LocalDbTransaction node(API_NETWORK, "lan", "default");
            node->set("mtu", 3);
            node->del("mtu");
            throw std::runtime_error("a handler gives up");
        },
        std::runtime_error);
    EXPECT_EQ(memory(), "1 free {'lan':{'mtu':2}}");  // as an earlier writer has kept it
    {
        LocalDbTransaction node(API_NETWORK, "lan", "default");
        node->set("mtu", 4);
        EXPECT_EQ(node.save(), 0);
    }
    EXPECT_EQ(memory(), "0 free");
    EXPECT_EQ(TempDir::read(FILE_OF_LAN), "{\n  \"lan\":{\n    \"mtu\":4\n  }\n}");
}

TEST_F(LocalDbTransactionTest, SaysWhyAndHoldsNothing) {
    dir.write("data/wifi/wifi.ldb", "{ torn");
    using Transaction = LocalDbTransaction;
    struct {
        unsigned int type;
        char const* path;
        Transaction::Status status;
        std::string after;
    } const rows[] = {
        {API_NETWORK, "wan", Transaction::NO_NODE, "1 free {'lan':{'mtu':1500}}"},
        {API_QOS, "", Transaction::NO_FILE, "0 free"},
        {API_WIFI, "", Transaction::UNREADABLE, "0 free"},
        {API_NETWORK, nullptr, Transaction::BAD_ARGUMENTS, "1 free {'lan':{'mtu':1500}}"},
        {API_TYPE_COUNT, "", Transaction::BAD_ARGUMENTS, ""},
    };
    for (auto const& row : rows) {
        Transaction const refused(row.type, row.path, "default", 20);
        EXPECT_EQ(refused.status(), row.status);
        EXPECT_FALSE(refused);
        EXPECT_EQ(refused.object(), nullptr);
        EXPECT_TRUE(row.after.empty() || memory(static_cast<API_TYPE_T>(row.type)) == row.after);
    }
    // what a plain lock has left without a value
    LocalDbCtrl::lockDbObject(API_WIFI, "", "default");
    EXPECT_EQ(Transaction(API_WIFI, "", "default", 20).status(), Transaction::BUSY);
    LocalDbCtrl::unlockDbObject(API_WIFI, "default");
    EXPECT_EQ(Transaction(API_WIFI, "", "default").status(), Transaction::UNREADABLE);
    EXPECT_EQ(memory(API_WIFI), "0 free");
    controller->state[API_QOS] = DB_STATE_ACCESSIBLE;  // and no document
    EXPECT_EQ(Transaction(API_QOS, "", "default").status(), Transaction::UNREADABLE);
    EXPECT_EQ(memory(API_QOS), "0 free");
    BEConfig::DATA_LOCATION.assign(300, 'd');  // no file name has room for it
    EXPECT_EQ(Transaction(API_QOS, "", "default").status(), Transaction::NO_FILE);
}

TEST_F(LocalDbTransactionTest, WaitsForABusyType) {
    std::atomic<bool> locked = false;
    std::atomic<pid_t> waiting = 0;
    std::thread writer([&] {
        LocalDbTransaction first(API_NETWORK, "", "default");
        locked = true;
        waitUntilAsleep(waiting);
        first->set("lan.mtu", 1);
        EXPECT_EQ(first.save(), 0);
    });
    while (!locked) {
    }
    EXPECT_EQ(LocalDbCtrl::lockDbObject(API_NETWORK, "", "default"), nullptr);
    EXPECT_EQ(LocalDbTransaction(API_NETWORK, "", "default").status(), LocalDbTransaction::BUSY);
    EXPECT_EQ(LocalDbTransaction(API_NETWORK, "", "default", 10).status(),
              LocalDbTransaction::BUSY);
    waiting = gettid();
    LocalDbTransaction second(API_NETWORK, "", "default", UINT_MAX);
    ASSERT_TRUE(second);
    EXPECT_EQ(second->get<int>("lan.mtu"), 1);
    writer.join();
}

// The mutex is free then, and the type is not.
TEST_F(LocalDbTransactionTest, WaitsNoLongerForASaveThatTakesLong) {
    std::atomic<bool> locked = false;
    std::thread writer([&] {
        LocalDbTransaction first(API_NETWORK, "", "default");
        remove(FILE_OF_LAN);
        EXPECT_EQ(mkfifo(FILE_OF_LAN, 0600), 0);  // a save waits for its reader
        std::atomic_ref<int>(controller->state[API_NETWORK]) = DB_STATE_ACCESSIBLE;  // by a program
        locked = true;
        EXPECT_EQ(first.save(), 0);
    });
    while (!locked || isHeld(controller->lock[API_NETWORK])) {
    }
    EXPECT_EQ(LocalDbTransaction(API_NETWORK, "", "default", 10).status(),
              LocalDbTransaction::BUSY);
    EXPECT_EQ(TempDir::read(FILE_OF_LAN), "{\n  \"lan\":{\n    \"mtu\":1500\n  }\n}");
    writer.join();
    EXPECT_EQ(memory(), "0 free");
}

// Here while it reads the document, from a pipe that has no writer yet.
TEST_F(LocalDbTransactionTest, RefusesOthersWhileItPrepares) {
    remove(FILE_OF_LAN);
    ASSERT_EQ(mkfifo(FILE_OF_LAN, 0600), 0);
    std::atomic<pid_t> reader = 0;
    std::thread first([&] {
        reader = gettid();
        EXPECT_EQ(LocalDbTransaction(API_NETWORK, "none", "default").status(),
                  LocalDbTransaction::NO_NODE);
    });
    waitUntilAsleep(reader);
    EXPECT_EQ(LocalDbCtrl::lockDbObject(API_NETWORK, "", "default"), nullptr);
    dir.write(FILE_OF_LAN, "{}");
    first.join();
    EXPECT_EQ(memory(), "1 free {}");
}

TEST_F(LocalDbTransactionTest, IsEndedByAPlainOperationInsideItsScope) {
    for (bool save : {true, false}) {
        std::string const lines = transcript([&] {
            LocalDbTransaction node(API_NETWORK, "lan", "default");
            node->set("mtu", save ? 1 : 2);
            LocalDbCtrl::unlockDbObject(API_WIFI, "default");  // another type
            EXPECT_TRUE(node);
            EXPECT_EQ(save ? LocalDbCtrl::saveDbObject(API_NETWORK, "default")
                           : LocalDbCtrl::unlockDbObject(API_NETWORK, "default"),
                      0);
            LocalDbCtrl::lockDbObject(API_NETWORK, "", "default");  // another writer's
            EXPECT_EQ(node.object(), nullptr);
            EXPECT_FALSE(node);
            EXPECT_EQ(node.status(), LocalDbTransaction::ENDED);
            EXPECT_EQ(node.save() + node.keep(), 4);
            Logger::mask = ~0U;
            BEConfig::LOG_DEBUG_ENABLE = 0;
        });
        Logger::mask = 0;
        EXPECT_EQ(lines,
                  "ERROR: LocalDbTransaction: a plain save or unlock has ended the lock of api "
                  "type 2\n");
        EXPECT_EQ(memory(), save ? "2 held {'lan':{'mtu':1}}" : "2 held {'lan':{'mtu':2}}");
        EXPECT_EQ(LocalDbCtrl::unlockDbObject(API_NETWORK, "default"), 0);
    }
}

}  // namespace
