// Calls from many threads everything that the headers permit at the same time. Data
// races are found by ThreadSanitizer, lost and torn writes by the checks here.
#include <jsonschema.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "BEConfig.h"
#include "BELoginRecord.h"
#include "CommLabel.h"
#include "CompiledSchema.h"
#include "JsonData.h"
#include "LocalDbCtrl.h"
#include "LocalDbSnapshot.h"
#include "LocalDbTransaction.h"
#include "Logger.h"
#include "Support.h"
#include "TreeMapObject.h"

namespace {

using Snapshot = LocalDbSnapshot;

API_TYPE_T const SAVED_BY_SESSIONS = API_MEDIASHARE;
API_TYPE_T const WITHOUT_A_FILE = API_FAC;

std::atomic<int> updates[API_TYPE_COUNT];
std::atomic<int> attempts;
std::atomic<int> transfersDone;
std::atomic<int> sumsTaken;

// Changes the first and the last member alike; false while another writer holds the database.
bool update(API_TYPE_T type, char const* key, bool save) {
    TreeMapObject* const document = LocalDbCtrl::lockDbObject(type, "", key);
    if (document == nullptr) {
        std::this_thread::yield();
        return false;
    }
    int const count = document->get<int>("first") + 1;
    EXPECT_EQ(document->get<int>("list.[1].last"), count - 1);
    document->set("first", count);
    document->set("list.[1].last", count);
    EXPECT_EQ(save ? LocalDbCtrl::saveDbObject(type, key) : LocalDbCtrl::unlockDbObject(type, key),
              0);
    return true;
}

// All types of the default controller; what one writer leaves unsaved the next one sees.
void writesAllTypes(int round) {
    static API_TYPE_T const types[] = {API_GATEWAY,  API_WIFI,    API_NETWORK,
                                       API_SECURITY, API_SERVICE, API_MISC};
    API_TYPE_T const type = types[round % 6];
    updates[type] += update(type, "default", round % 3 == 0);
}

// One third each is saved, kept and discarded.
void transacts(int round) {
    LocalDbTransaction change(API_QOS, "", "default", 1000);
    if (!change) {
        EXPECT_EQ(change.status(), LocalDbTransaction::BUSY);
        return;
    }
    int const count = change->get<int>("first") + 1;
    change->set("first", count);
    change->set("list.[1].last", count);
    if (round % 3 != 0) {
        ++updates[API_QOS];
        EXPECT_EQ(round % 3 == 1 ? change.save() : change.keep(), 0);
    }
}

// Every eighth finds no node, and leaves a document in memory that may be dropped.
void readsInATransaction(int round) {
    Snapshot const saved(API_QOS);
    bool const inVain = round % 8 == 0;
    LocalDbTransaction const read(API_QOS, inVain ? "none" : "", "default", 1000,
                                  inVain ? LocalDbTransaction::WRITE : LocalDbTransaction::READ);
    if (!read) {
        return;
    }
    EXPECT_EQ(read->get<int>("first"), read->get<int>("list.[1].last"));
    EXPECT_GE(read->get<int>("first"), saved.get<int>("first"));
    EXPECT_TRUE(read.version() != saved.version() ||
                read->get<int>("first") == saved.get<int>("first"));
}

// Two of three types, in every order, and readers of all: what one document loses the other gets.
unsigned int const SHARED_OUT[] = {API_WIFI, API_NETWORK, API_SECURITY};

void transfers(int round) {
    unsigned int const from = SHARED_OUT[round % 3];
    unsigned int const to = SHARED_OUT[(round + 1 + round / 3 % 2) % 3];
    LocalDbTransaction change(from, "", "default", 100);
    TreeMapObject* const other = change.also(to, "");
    if (other == nullptr) {
        EXPECT_EQ(change.status(), LocalDbTransaction::BUSY);
        return;
    }
    change->set("share", change->get<int>("share") - round);
    other->set("share", other->get<int>("share") + round);
    EXPECT_TRUE(round % 4 == 0 || change.save() == 0);
    transfersDone += round % 4 != 0;
}
void addsUp(int) {
    Snapshot parts[3];
    if (Snapshot::take(SHARED_OUT, 3, parts)) {
        EXPECT_EQ(
            parts[0].get<int>("share") + parts[1].get<int>("share") + parts[2].get<int>("share"),
            0);
        ++sumsTaken;
    }
}

void writesOneType(int round) { updates[API_QOS] += update(API_QOS, "default", round % 16 == 0); }

// Two controllers save the same type, and others read its file.
void savesInSessions(int round) {
    updates[SAVED_BY_SESSIONS] += update(SAVED_BY_SESSIONS, round % 2 == 0 ? "one" : "two", true);
}
void readsTheFile(int) {
    TreeMapObject* const read =
        JsonData::createObjectFromFile(LocalDbCtrl::getFileName(SAVED_BY_SESSIONS));
    EXPECT_TRUE(read->jobj != nullptr);
    EXPECT_EQ(read->get<int>("first"), read->get<int>("list.[1].last"));
    delete read;
}

// What was saved as a whole. Two sessions that save one type may overwrite a newer document; the
// default controller never saves an older one than before.
void readsSnapshots(int round) {
    API_TYPE_T const type = round % 2 == 0 ? API_QOS : SAVED_BY_SESSIONS;
    Snapshot const first(type);
    Snapshot copy(type);
    copy = first;
    Snapshot const second(type);
    EXPECT_EQ(first.status(), Snapshot::READ);
    EXPECT_EQ(first.get<int>("first"), copy.get<int>("list.[1].last"));
    EXPECT_TRUE(type != API_QOS || first.get<int>("first") <= second.get<int>("list.[1].last"));
    EXPECT_EQ(first.version() == second.version(),
              first.get<int>("first") == second.get<int>("first"));
    if (round % 100 == 0) {
        Snapshot::forget();
        delete second.copy("list");
    }
}

void makesASessionOfItsOwn(int round) {
    static std::atomic<int> number;
    thread_local std::string const key = "session " + std::to_string(++number);
    EXPECT_EQ(LocalDbCtrl::cloneNewDB(key.c_str()), 1);
    EXPECT_NE(LocalDbCtrl::getDBByKey(key.c_str()), LocalDbCtrl::getDBByKey("default"));
    EXPECT_TRUE(update(API_WIFI, key.c_str(), false));
    TreeMapObject* const node = LocalDbCtrl::lockDbObject(API_WIFI, "list.[1]", key.c_str());
    node->set("last", round);
    delete node;
    EXPECT_EQ(LocalDbCtrl::unlockDbObject(API_WIFI, key.c_str()), 0);
    LocalDbCtrl::removeDB(key.c_str());
}

// A writer finds the session, or the default controller once it is gone, and keeps what it has
// found.
void removesASession(int) {
    LocalDbCtrl::cloneNewDB("transient");
    LocalDbCtrl::removeDB("transient");
}
void savesInAPassingSession(int round) {
    LocalDbTransaction change(SAVED_BY_SESSIONS, "", "transient", 10);
    EXPECT_TRUE(!change || round % 2 == 0 || change.save() == 0 ||
                change.status() == LocalDbTransaction::CHANGED);
}

// This database has no file: every lock returns null, and holds the mutex.
void takesTurnsAfterNullResults(int) {
    static int turn;  // guarded by the database's lock alone
    EXPECT_EQ(LocalDbCtrl::lockDbObject(WITHOUT_A_FILE, "", "default"), nullptr);
    ++turn;
    EXPECT_EQ(LocalDbCtrl::unlockDbObject(WITHOUT_A_FILE, "default"), 2);
}

// Releasing a database that no thread holds leaves its mutex unlocked, and is safe from many
// threads.
void releasesAFreeDatabase(int) {
    EXPECT_EQ(LocalDbCtrl::unlockDbObject(WITHOUT_A_FILE, "two"), 2);
    EXPECT_EQ(LocalDbCtrl::saveDbObject(WITHOUT_A_FILE, "two"), 2);
}

void logs(int round) {
    for (unsigned int level = 0; level <= LOG_TYPE_DEFAULT + 1; ++level) {
        Logger::print(static_cast<LOG_TYPE_T>(level), static_cast<LOG_GROUP_T>(round % 20),
                      "round %d\n", round);
    }
    if (round % 500 == 0) {
        remove("BE.log");
    }
}

void logsIn(int round) {
    attempts += BELoginRecord::setAttempt("shared");
    std::string const address = "address " + std::to_string(round % 7);
    BELoginRecord::setAttempt(address.c_str());
    EXPECT_GE(BELoginRecord::getAttempt(address.c_str()).attempts, 0);
    EXPECT_TRUE(BELoginRecord::eraseAttempt(address.c_str()));
}

void asksForNames(int round) {
    unsigned int const commType = static_cast<unsigned int>(round) % 84;
    std::string const label = COMM_LABEL(API_WIFI, commType);
    EXPECT_EQ(LocalDbCtrl::getFileName(API_WIFI, commType), "./data/wifi/" + label + ".ldb");
    TreeMapObject message("{\"name\": \"x\"}");
    EXPECT_EQ(LocalDbCtrl::validateObject(&message, API_WIFI, commType), commType == 0 ? 2 : 0);
    CompiledSchema const rule(LocalDbCtrl::getSchemaFile(API_WIFI, 0));
    static CompiledSchema const shared(rule);
    EXPECT_TRUE(!rule.accepts(message.jobj) && !shared.accepts(message.jobj));
    if (commType == 1) {
        std::string const schema = "schema " + std::to_string(gettid());
        TempDir::write(schema, "{\"required\": [\"ssid\"]}");
        rename(schema.c_str(), LocalDbCtrl::getSchemaFile(API_WIFI, 0));
    }
    EXPECT_GE(BEConfig::get_Session_Uptime(), 0);
}

// All threads share a compiled schema, and what it is applied to.
void checks(int) {
    static TreeMapObject const document(
        R"({"enum": ["a", {"b": 1.5}], "pattern": "^[a-z]+$", "propertyNames": {"pattern": "a"}})");
    static TreeMapObject const good("{\"b\": 1.5}");
    static TreeMapObject const bad("[\"a\"]");
    static json_schema* const schema = json_schema_compile(document.jobj, nullptr);
    json_schema_fault fault;
    EXPECT_EQ(json_schema_check(schema, good.jobj, &fault), 0);
    EXPECT_STREQ(fault.message, "its name must match the pattern a");
    EXPECT_EQ(json_schema_check(schema, bad.jobj, &fault), 0);
    EXPECT_STREQ(fault.message, "must be one of \"a\", a certain object");
}

// Standard output belongs to the log.
struct FailuresOnStandardError : testing::EmptyTestEventListener {
    void OnTestPartResult(testing::TestPartResult const& result) override {
        fprintf(stderr, "%s:%d: %s\n", result.file_name(), result.line_number(), result.summary());
    }
};

TEST(Stress, LosesAndTearsNothing) {
    testing::UnitTest::GetInstance()->listeners().Append(new FailuresOnStandardError);
    TempDir dir;
    for (unsigned int type = 0; type < WITHOUT_A_FILE; ++type) {
        dir.write(LocalDbCtrl::getFileName(type),
                  "{\"share\":0,\"first\":0,\"list\":[0,{\"last\":0}]}");
    }
    dir.write(LocalDbCtrl::getSchemaFile(API_WIFI, 0), "{\"required\": [\"ssid\"]}");
    ASSERT_NE(freopen("/dev/null", "w", stdout), nullptr);
    Logger::init();
    Logger::mask = ~0U;
    BELoginRecord::init();
    LocalDbCtrl::init();
    LocalDbCtrl::cloneNewDB("one");
    LocalDbCtrl::cloneNewDB("two");

    char const* const seconds = getenv("STRESS_SECONDS");
    auto const end = std::chrono::steady_clock::now() +
                     std::chrono::seconds(seconds != nullptr ? atoi(seconds) : 3);
    auto const isOver = [end] {  // not before everything has been done, however slow the disk is
        return std::chrono::steady_clock::now() >= end && attempts > 0 && transfersDone > 0 &&
               sumsTaken > 0 &&
               std::find(updates, updates + WITHOUT_A_FILE, 0) == updates + WITHOUT_A_FILE;
    };
    std::vector<std::jthread> threads;
    for (auto* work :
         {writesAllTypes, writesOneType, transacts, readsInATransaction, transfers, addsUp,
          savesInSessions, savesInSessions, readsTheFile, readsSnapshots, makesASessionOfItsOwn,
          removesASession, savesInAPassingSession, takesTurnsAfterNullResults,
          releasesAFreeDatabase, logs, logsIn, asksForNames, checks}) {
        for (int copy = 0; copy < 2; ++copy) {
            threads.emplace_back([work, isOver] {
                for (int round = 1; !isOver(); ++round) {
                    work(round);
                }
            });
        }
    }
    threads.clear();
    for (unsigned int type = 0; type < WITHOUT_A_FILE; ++type) {
        TreeMapObject* const document = LocalDbCtrl::lockDbObject(type, "", "default");
        int const count = document->get<int>("first");
        int const expected =  // a session may have saved an older document last
            type == SAVED_BY_SESSIONS ? document->get<int>("list.[1].last") : updates[type].load();
        EXPECT_EQ(count, expected);
        LocalDbCtrl::unlockDbObject(type, "default");
    }
    pthread_mutex_t& released = LocalDbCtrl::getDBByKey("two")->lock[WITHOUT_A_FILE];
    EXPECT_EQ(pthread_mutex_destroy(&released), 0);  // fails when it was unlocked once too often
    pthread_mutex_init(&released, nullptr);
    EXPECT_EQ(BELoginRecord::getAttempt("shared").attempts, attempts);
    for (char const* key : {"one", "two", "transient", "default"}) {
        LocalDbCtrl::removeDB(key);
    }
    EXPECT_TRUE(LocalDbCtrl::controllers.empty());
}

}  // namespace
