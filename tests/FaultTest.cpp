// Each system call, allocation and memory-taking json-c call that an operation makes is made to
// fail, one at a time. Afterwards the files are old or new, nothing is left beside them, locks and
// states agree, and the next operation works.
#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <memory>

#include "BEConfig.h"
#include "BELoginRecord.h"
#include "CompiledSchema.h"
#include "Faults.h"
#include "JsonData.h"
#include "LocalDbCtrl.h"
#include "LocalDbSnapshot.h"
#include "LocalDbTransaction.h"
#include "Logger.h"
#include "Support.h"
#include "TreeMapObject.h"

namespace {

struct Fault {
    faults::Call call;
    int error;
    bool harmless;  // the operation succeeds all the same
};

Fault const FAULTS[] = {
    {faults::OPEN, EIO, false},        {faults::OPEN, EACCES, false},
    {faults::OPEN, EINTR, true},       {faults::READ, EIO, false},
    {faults::READ, EINTR, true},       {faults::WRITE, ENOSPC, false},
    {faults::WRITE, EINTR, true},      {faults::SHORT_WRITE, 0, true},
    {faults::SYNC, EIO, false},        {faults::SYNC, EINTR, true},
    {faults::RENAME, EIO, false},      {faults::RENAME, EBUSY, true},
    {faults::CLOSE, EIO, false},       {faults::STAT, EIO, false},
    {faults::LOCK, ENOLCK, true},      {faults::LOCK, ENOSYS, true},
    {faults::LOCK, EOPNOTSUPP, true},  {faults::LOCK, EIO, false},
    {faults::LOCK, EINTR, true},       {faults::OWNER, EPERM, true},
    {faults::MODE, EPERM, true},       {faults::DUPLICATE, EMFILE, false},
    {faults::LINK, EIO, false},        {faults::ALLOCATION, ENOMEM, false},
    {faults::JSON, ENOMEM, false},     {faults::ACCESS, EROFS, false},
    {faults::ACCESS, ENOENT, true},    {faults::XATTR, EPERM, true},
    {faults::XATTR, EOPNOTSUPP, true}, {faults::XATTR, ENOSPC, false},
    {faults::XATTR, ENOMEM, false},    {faults::TEXT, ENOMEM, true},
    {faults::TEXTS, ENOMEM, false},    {faults::UNLINK, EIO, true},
    {faults::MOUNT, ENOMEM, true},
};

struct Trial {
    Fault fault;
    int n;
    bool mayThrow;
    bool reached = false;  // in any of its runs

    // Runs what is to meet the fault; false when it threw.
    template <typename Action>
    bool run(Action const& action) {
        bool thrown = false;
        faults::arm(fault.call, n, fault.error);
        try {
            action();
        } catch (std::bad_alloc const&) {
            thrown = true;
        }
        reached |= faults::disarm();
        EXPECT_FALSE(thrown && !mayThrow);
        return !thrown;
    }
};

std::string const OLD = "{\n  \"a\":{\n    \"b\":1\n  }\n}";
std::string const NEW = "{\n  \"a\":{\n    \"b\":2\n  }\n}";
char const LAN_FILE[] = "data/network/network.ldb";

// A user who may not read the old file may not open the temporary one either.
void expectNoWiderAccess() {
    struct stat old;
    struct stat temporary;
    if (stat("saved/file", &old) == 0 && stat("saved/.file.saving", &temporary) == 0) {
        bool const isTheSame =
            temporary.st_gid == old.st_gid && temporary.st_mode == old.st_mode &&
            attributeOf("saved/.file.saving", ACL) == attributeOf("saved/file", ACL);
        EXPECT_TRUE(isTheSame || (temporary.st_mode & 077) == 0);
    }
}

// Where a document is saved, and what is there before.
struct Target {
    std::string old;  // no file if it is empty
    bool hasList = false;
    bool isLink = false;
    bool hasLeftover = false;  // of a killed save
};

// If the system has access control lists, either the old file has one or the folder gives new files
// one.
void saves(Trial& trial, Target const& target) {
    std::string const& old = target.old;
    std::filesystem::create_directory("saved");
    remove("saved/file");
    remove("link");
    setAttribute("saved", "system.posix_acl_default", target.hasList ? "" : READER_1235);
    if (!old.empty()) {
        TempDir::write("saved/file", old);
        setAttribute("saved/file", "user.note", "x");
        setAttribute("saved/file", ACL, target.hasList ? READER_1235 : "");
        chmod("saved/file", target.hasList ? 0644 : 0640);
        EXPECT_TRUE(geteuid() != 0 || chown("saved/file", 1234, 1234) == 0);
        faults::atFault = expectNoWiderAccess;
    }
    if (target.isLink) {
        std::filesystem::create_symlink("saved/file", "link");
    }
    if (target.hasLeftover) {
        TempDir::write("saved/.file.saving", "{ torn");
    }
    char const* const name = target.isLink ? "link" : "saved/file";
    std::string const acl = attributeOf("saved/file", ACL);
    TreeMapObject document(NEW.c_str());
    int result = -1;
    trial.run([&] { result = JsonData::saveObjectToFile(name, &document); });
    faults::atFault = nullptr;
    EXPECT_TRUE(result == 0 || (result == 2 && !trial.fault.harmless));
    bool const knowsNone =
        !target.hasList && trial.fault.error == EOPNOTSUPP;  // the file system has no lists
    EXPECT_TRUE(old.empty() || knowsNone || attributeOf("saved/file", ACL) == acl);
    if (old.empty() && !target.hasLeftover && trial.n == 1 && trial.reached) {
        // the first of each kind always matters; the string is made again
        EXPECT_EQ(result == 0, trial.fault.harmless || trial.fault.error == EACCES ||
                                   trial.fault.call == faults::JSON);
    }
    bool const decides =
        trial.reached && (trial.fault.call == faults::ACCESS || trial.fault.call == faults::XATTR);
    EXPECT_TRUE(!decides || (result == 0) == trial.fault.harmless);
    EXPECT_EQ(TempDir::read("saved/file"), result == 0 ? NEW : old);
    EXPECT_TRUE(target.hasLeftover || entriesOf("saved") == (result == 0 || !old.empty() ? 1 : 0));
    EXPECT_EQ(JsonData::saveObjectToFile(name, &document), 0);
    EXPECT_EQ(TempDir::read("saved/file"), NEW);
    EXPECT_EQ(entriesOf("saved"), 1);
    EXPECT_EQ(std::filesystem::is_symlink("link"), target.isLink);
}

// An open file that has lost its name, and a device.
void savesInPlace(Trial& trial) {
    int const fd = open("nameless", O_RDWR | O_CREAT, 0600);
    unlink("nameless");
    EXPECT_EQ(write(fd, "{", 1), 1);
    std::string const name = "/proc/self/fd/" + std::to_string(fd);
    TreeMapObject document(NEW.c_str());
    int result = -1;
    int onDevice = -1;
    trial.run([&] { result = JsonData::saveObjectToFile(name.c_str(), &document); });
    trial.run([&] { onDevice = JsonData::saveObjectToFile("/dev/null", &document); });
    EXPECT_TRUE(result + onDevice == 0 || !trial.fault.harmless);
    EXPECT_TRUE(result != 0 || TempDir::read(name) == NEW);
    EXPECT_EQ(JsonData::saveObjectToFile(name.c_str(), &document), 0);
    EXPECT_EQ(TempDir::read(name), NEW);
    close(fd);
}

void loads(Trial& trial) {
    TempDir::write("loaded", OLD);
    TreeMapObject* document = nullptr;
    trial.run([&] { document = JsonData::createObjectFromFile("loaded"); });
    EXPECT_TRUE(document == nullptr || document->jobj == nullptr || document->get<int>("a.b") == 1);
    EXPECT_TRUE(!trial.fault.harmless || (document != nullptr && document->jobj != nullptr));
    delete document;
    EXPECT_EQ(TempDir::read("loaded"), OLD);
}

// The results of a lock, and of the call that ends it, agree with the state table in
// LocalDbLock.cpp.
void locks(Trial& trial, char const* path, bool save) {
    TempDir::write(LAN_FILE, OLD);
    trial.run([] { EXPECT_EQ(LocalDbCtrl::unlockDbObject(API_NETWORK, "before init"), 2); });
    LocalDbCtrl::init();
    LOCALDB_HANDLER& controller = *LocalDbCtrl::getDBByKey("default");
    TreeMapObject* object = nullptr;
    int state = -1;
    bool changed = false;
    int result = -1;
    trial.run([&] {
        object = LocalDbCtrl::lockDbObject(API_NETWORK, path, "default");
        state = controller.state[API_NETWORK];
        if (object != nullptr && object->jobj != nullptr) {
            object->set(*path != '\0' ? "b" : "a.b", 2);
            changed = controller.dbObject[API_NETWORK]->get<int>("a.b") == 2;
        }
        if (*path != '\0') {
            delete object;
        }
        result = save ? LocalDbCtrl::saveDbObject(API_NETWORK, "default")
                      : LocalDbCtrl::unlockDbObject(API_NETWORK, "default");
    });
    EXPECT_FALSE(isHeld(controller.lock[API_NETWORK]));
    EXPECT_TRUE(object != nullptr ? state == DB_STATE_WRITING : state != DB_STATE_WRITING);
    EXPECT_TRUE(result == 0 || !trial.fault.harmless);
    EXPECT_EQ(TempDir::read(LAN_FILE), save && result == 0 && changed ? NEW : OLD);
    EXPECT_EQ(entriesOf("data/network"), 1);
    EXPECT_TRUE(controller.state[API_NETWORK] == DB_STATE_UNINITIALIZED ||
                controller.state[API_NETWORK] == DB_STATE_ACCESSIBLE);
    EXPECT_TRUE(!save || object == nullptr || controller.dbObject[API_NETWORK] == nullptr);
    TreeMapObject* const next = LocalDbCtrl::lockDbObject(API_NETWORK, "", "default");
    ASSERT_NE(next, nullptr);
    bool const loaded = next->jobj != nullptr;
    next->set("a.b", 3);
    EXPECT_EQ(LocalDbCtrl::saveDbObject(API_NETWORK, "default"), loaded ? 0 : 2);
    LocalDbCtrl::removeDB("default");
}

// A first transaction leaves the document in memory. A refusal needs no memory to be put right.
void transacts(Trial& trial) {
    TempDir::write(LAN_FILE, OLD);
    TempDir::write("data/network/network_SCHEMA.ldb",
                   "{\"properties\": {\"a\": {\"properties\": {\"b\": {\"maximum\": 2}}}}}");
    LocalDbCtrl::init();
    LOCALDB_HANDLER& controller = *LocalDbCtrl::getDBByKey("default");
    trial.run([] { LocalDbTransaction(API_NETWORK, "", "default"); });
    EXPECT_EQ(LocalDbTransaction(API_NETWORK, "none", "default").status(),
              LocalDbTransaction::NO_NODE);
    bool changed = false;
    int result = -1;
    trial.run([&] {
        LocalDbTransaction whole(API_NETWORK, "", "default");
        if (whole) {
            whole->set("a.b", 7);  // discarded
        }
    });
    trial.run([&] {
        LocalDbTransaction node(API_NETWORK, "a", "default");
        if (node) {
            node->set("b", 3);
            EXPECT_TRUE(node->get<int>("b") != 3 ||
                        (node.save() == 2 && node.status() == LocalDbTransaction::INVALID &&
                         *node.fault().message != '\0'));
            node->set("b", 2);
            changed = node->get<int>("b") == 2;
            result = node.save();
        }
    });
    EXPECT_FALSE(isHeld(controller.lock[API_NETWORK]));
    EXPECT_TRUE(result == 0 || !trial.fault.harmless);
    EXPECT_EQ(TempDir::read(LAN_FILE), result == 0 && changed ? NEW : OLD);
    LocalDbTransaction next(API_NETWORK, "", "default");
    EXPECT_EQ(next->get<int>("a.b"), result == 0 && changed ? 2 : 1);
    EXPECT_EQ(next.save(), 0);
    std::filesystem::remove("data/network/network_SCHEMA.ldb");
    LocalDbSnapshot::forget();
    LocalDbCtrl::removeDB("default");
}

// All old or all new once somebody asks, and new at once if the save says so. What is refused when
// the new files are made and the record is put in its place leaves all old; after that it is
// written in place.
void savesSeveral(Trial& trial) {
    char const* const rulesFile = "data/security/security.ldb";
    TempDir::write(LAN_FILE, OLD);
    TempDir::write(rulesFile, OLD);
    LocalDbCtrl::init();
    int result = -1;
    trial.run([&] {
        LocalDbTransaction change(API_NETWORK, "a", "default");
        TreeMapObject* const rules = change.also(API_SECURITY, "a");
        EXPECT_EQ(static_cast<bool>(change), rules != nullptr);
        if (change && (change->set("b", 2), rules->set("b", 2), change->get<int>("b") == 2) &&
            rules->get<int>("b") == 2) {
            result = change.save();
        }
    });
    bool const refuses = trial.fault.call == faults::MOUNT || trial.fault.call == faults::RENAME ||
                         trial.fault.call == faults::OWNER || trial.fault.call == faults::MODE ||
                         trial.fault.call == faults::XATTR;
    EXPECT_TRUE(result == 0 || !trial.fault.harmless || refuses);
    EXPECT_TRUE(result == 0 || trial.fault.call != faults::RENAME || trial.n <= 3);
    EXPECT_TRUE(result != 0 || trial.fault.call != faults::MOUNT || !trial.reached);
    EXPECT_TRUE(result != 0 || TempDir::read(LAN_FILE) + TempDir::read(rulesFile) == NEW + NEW);
    LocalDbTransaction next(API_NETWORK, "a", "default");
    EXPECT_NE(next.also(API_SECURITY, "a"), nullptr);
    std::string const now = TempDir::read(LAN_FILE);
    EXPECT_TRUE(now == OLD || now == NEW) << now;
    EXPECT_EQ(TempDir::read(rulesFile), now);
    EXPECT_LE(entriesOf("data"), 3);  // the two folders and the lock
    next.keep();
    LocalDbCtrl::removeDB("default");
}

// The status tells the truth, and the next snapshot is whole.
void takesSnapshots(Trial& trial) {
    TempDir::write(LAN_FILE, OLD);
    std::unique_ptr<LocalDbSnapshot> snapshot;
    std::unique_ptr<TreeMapObject> copy;
    LocalDbSnapshot::forget();
    trial.run([&] {
        snapshot = std::make_unique<LocalDbSnapshot>(API_NETWORK);
        copy.reset(snapshot->copy("a"));
    });
    bool const isMemory = trial.fault.error == ENOMEM;
    EXPECT_TRUE(snapshot == nullptr || *snapshot ||
                snapshot->status() ==
                    (isMemory ? LocalDbSnapshot::NO_MEMORY : LocalDbSnapshot::UNREADABLE));
    EXPECT_TRUE(snapshot != nullptr || isMemory);  // the test's own allocation
    EXPECT_TRUE(copy == nullptr || (*snapshot && copy->get<int>("b") == 1));
    EXPECT_EQ(LocalDbSnapshot(API_NETWORK).get<int>("a.b"), 1);
    LocalDbSnapshot::forget();
}

// Only an existing schema that can be read lets a value pass or refuses it; the next one is read.
void validates(Trial& trial) {
    TempDir::write("schema", "{\"required\": [\"a\"]}");
    TreeMapObject valid("{\"a\": 1}");
    TreeMapObject invalid("{}");
    TreeMapObject schema("{\"required\": [\"a\"]}");
    int passes = -1;
    int refuses = -1;
    CompiledSchema::Fault fault = {};
    trial.run([&] {
        for (auto const& rule : {CompiledSchema("schema"), CompiledSchema(schema.jobj)}) {
            EXPECT_FALSE(rule.accepts(invalid.jobj, &fault));
            EXPECT_TRUE(fault.message[0] != '\0' && (rule || rule.fault().message[0] != '\0'));
        }
        passes = JsonData::validateFile(&valid, "schema");
        refuses = JsonData::validateFile(&invalid, "schema");
    });
    EXPECT_TRUE(passes == 0 || (passes == 2 && !trial.fault.harmless));
    EXPECT_TRUE(refuses == 2 || (refuses == 0 && trial.fault.call == faults::STAT));
    EXPECT_EQ(JsonData::validateFile(&valid, "schema"), 0);
    EXPECT_EQ(JsonData::validateFile(&invalid, "schema"), 2);
    LocalDbSnapshot::forget();
}

void makesASession(Trial& trial) {
    TempDir::write(LAN_FILE, OLD);
    LocalDbCtrl::init();
    int made = 0;
    LOCALDB_HANDLER* found = nullptr;
    char const* const key = "the key of a session, too long for a string's own buffer";
    trial.run([&] {
        found = LocalDbCtrl::getDBByKey("none");
        made = LocalDbCtrl::cloneNewDB(key);
        found = LocalDbCtrl::getDBByKey(key);
        LocalDbCtrl::removeDB(key);
    });
    EXPECT_TRUE(made == 1 || found == nullptr || found == LocalDbCtrl::controllers.at("default"));
    LocalDbCtrl::removeDB(key);
    EXPECT_EQ(LocalDbCtrl::cloneNewDB(key), 1);
    // a lock can always be ended, and a discard always be made
    trial.run([&] {
        LocalDbTransaction transaction(API_NETWORK, "", key);
        if (transaction) {
            EXPECT_NE(transaction.version(), 0U);
            transaction->set("a.b", 2);
        }
    });
    EXPECT_EQ(LocalDbTransaction(API_NETWORK, "", key)->get<int>("a.b"), 1);
    trial.run([&] {
        if (LocalDbCtrl::lockDbObject(API_NETWORK, "", key) != nullptr) {
            EXPECT_EQ(LocalDbCtrl::unlockDbObject(API_NETWORK, key), 0);
        }
    });
    LocalDbCtrl::removeDB(key);
    LocalDbCtrl::removeDB("default");
}

// A record that cannot be read stops; one that cannot be written stays as it is.
void countsAttempts(Trial& trial) {
    BELoginRecord::isRunning = false;
    BELoginRecord::init();
    BELoginRecord::setAttempt("a");
    int attempts[] = {1, 0};  // of the clients "a" and "b"
    auto const change = [&](bool (*operation)(char const*), int client, int after) {
        std::string const before = TempDir::read(".loginrecord.cfg");
        bool done = false;
        trial.run([&] { done = operation(client == 0 ? "a" : "b"); });
        EXPECT_TRUE(done || !trial.fault.harmless);
        EXPECT_EQ(TempDir::read(".loginrecord.cfg") == before, !done);
        EXPECT_FALSE(std::filesystem::exists("..loginrecord.cfg.saving"));
        EXPECT_FALSE(isHeld(BELoginRecord::lock));
        BELoginRecord::isRunning = true;
        attempts[client] = done ? after : attempts[client];
    };
    change(BELoginRecord::setAttempt, 1, 1);
    EXPECT_TRUE(BELoginRecord::setAttempt("b"));
    LoginAttemptInfo info = {0, 0};
    trial.run([&] { info = BELoginRecord::getAttempt("a"); });
    EXPECT_EQ(info.attempts, 1);  // known, or the record is stopped
    BELoginRecord::isRunning = true;
    change(BELoginRecord::eraseAttempt, 0, 0);
    change(BELoginRecord::setAttempt, 0, attempts[0] + 1);
    change([](char const* a) { return BELoginRecord::setAttemptAt(a, "s"); }, 0, attempts[0] + 1);
    change([](char const* a) { return BELoginRecord::eraseAttemptAt(a, "s"); }, 0, attempts[0] - 1);
    EXPECT_EQ(BELoginRecord::getAttempt("a").attempts, attempts[0]);
    EXPECT_EQ(BELoginRecord::getAttempt("b").attempts, attempts[1] + 1);
    BELoginRecord::isRunning = false;
    BELoginRecord::init();
}

void startsTheRecord(Trial& trial) {
    TempDir::write(".loginrecord.cfg", "[7]");
    BELoginRecord::isRunning = false;
    IntendedLeaks const array;  // of a record that cannot start
    trial.run(BELoginRecord::init);
    EXPECT_EQ(TempDir::read(".loginrecord.cfg"),
              BELoginRecord::isRunning ? asPrintedHere("[\n]") : "[7]");
    TempDir::write(".loginrecord.cfg", "[7]");
    std::string const said = printed([&] { trial.run(BELoginRecord::deinit); });
    EXPECT_EQ(TempDir::read(".loginrecord.cfg"),
              said == "deinit: erased record file\n" ? asPrintedHere("[\n]") : "[7]");
}

void readsSettings(Trial& trial) {
    TempDir::write("config",
                   "{\"webserver_ports\": \"a text too long for a string's own buffer\", "
                   "\"url_rewrite_path\": \"and another one, as long as the first one\", "
                   "\"repo_type\": 7, \"enable_bruteforce_prevent\": 0}");
    BEConfig::isInit = false;
    BEConfig::WEBSERVER_PORTS = "8081,8082";
    BEConfig::WEBSERVER_PORTS.shrink_to_fit();  // for the allocations to be the same ones each time
    BEConfig::REPO_TYPE = 1;
    trial.run([] { BEConfig::init("config"); });
    EXPECT_TRUE(BEConfig::REPO_TYPE == 7 || BEConfig::WEBSERVER_PORTS == "8081,8082");
    int uptime = -1;
    trial.run([&] { uptime = BEConfig::get_Session_Uptime(); });
    EXPECT_TRUE(uptime > 0 || (uptime == 0 && trial.reached));
    BEConfig::URL_REWRITE = "url_rewrite.txt";
    BEConfig::URL_REWRITE.shrink_to_fit();
}

void logs(Trial& trial) {
    BEConfig::LOG_FILE = "log";
    remove("log");
    Logger::mask = ~0U;
    Logger::enableFileLog = 1;
    std::string name(100, 'N');
    char const* const before = std::exchange(Logger::LogGroupNames[1], name.c_str());
    trial.run([] { Logger::print(LOG_TYPE_INFO, LOG_GROUP_WSL, "%s\n", "hello"); });
    Logger::LogGroupNames[1] = before;
    Logger::enableFileLog = 0;
    Logger::mask = 0;
    bool const failed = trial.reached && !trial.fault.harmless;
    bool const lost =
        failed && (trial.fault.call == faults::OPEN || trial.fault.call == faults::WRITE);
    name.resize(failed && trial.fault.call == faults::ALLOCATION ? 64 : 100);
    EXPECT_EQ(TempDir::read("log"), lost ? "" : name + "| INFO: hello\n");
}

// A value that cannot be stored stays the caller's. One name is too long for the buffers on the
// stack.
void assigns(Trial& trial) {
    std::string const name(150, 'k');
    std::string const inLong = name + ".a";
    for (char const* path : {"list.[0]", "list.[1]", "list.[1].[0]", "new.[0].[0].a",
                             inLong.c_str(), "new", name.c_str()}) {
        TreeMapObject document("{\"list\": [1]}");
        json_object* const value = json_object_new_int(7);
        json_object* parent = nullptr;
        char const* stored = nullptr;
        char const* found = nullptr;
        int result = -1;
        trial.run([&] { result = JsonData::setJObj(document.jobj, path, value, parent, stored); });
        json_object* node = nullptr;
        trial.run([&] { node = JsonData::getJObj(document.jobj, path, parent, found); });
        EXPECT_EQ(node, JsonData::getJObj(document.jobj, path));
        EXPECT_EQ(document.get<int>(path) == 7, result == 0) << path;
        EXPECT_TRUE(stored == nullptr || found == nullptr || std::string(stored) == found);
        EXPECT_EQ(json_object_put(value), result == 0 ? 0 : 1) << path;
        EXPECT_TRUE(document.get<int>("list.[0]") == 1 || result == 0) << path;
        delete[] found;
        free(const_cast<char*>(stored));
    }
}

// The array is unchanged or changed completely, and still belongs to the document.
void changesArrays(Trial& trial) {
    TreeMapObject item("{}");
    struct {
        int (*change)(TreeMapObject& list, TreeMapObject& item);
        char const* after;
    } const rows[] = {
        {[](TreeMapObject& list, TreeMapObject&) { return list.addArrayItem(3); }, "[1,2,3]"},
        {[](TreeMapObject& list, TreeMapObject&) { return list.addArrayItem("x"); }, "[1,2,'x']"},
        {[](TreeMapObject& list, TreeMapObject& i) { return list.addArrayItem(&i); }, "[1,2,{}]"},
        {[](TreeMapObject& list, TreeMapObject& i) { return list.setArrayItem(0, &i); }, "[{},2]"},
        {[](TreeMapObject& list, TreeMapObject&) { return list.delArrayItem(0); }, "[2]"},
        {[](TreeMapObject& list, TreeMapObject&) { return list.clearArrayItems(); }, "[]"},
    };
    for (auto const& row : rows) {
        TreeMapObject document("{\"list\": [1, 2]}");
        std::unique_ptr<TreeMapObject> const list(document.get("list"));
        int result = -1;
        trial.run([&] { result = row.change(*list, item); });
        EXPECT_EQ(text(list->jobj), result >= 0 ? row.after : "[1,2]");
        EXPECT_EQ(JsonData::getJObj(document.jobj, "list"), list->jobj);
    }
}

void usesHandles(Trial& trial) {
    TreeMapObject document(
        "{\"a\": {\"name\": \"text\"}, \"list\": [{\"name\": \"text\"}, 1], \"number\": 1}");
    TreeMapObject stored("{}");
    int valid = -1;
    IntendedLeaks const schema;  // of an invalid document
    trial.run([&] {
        valid = JsonData::validateObject(
            &document,
            "{\"properties\": {\"a\": {\"properties\": {\"name\": {\"pattern\": \"^t\"}}}, "
            "\"list\": {\"uniqueItems\": true}}}");
        for (TreeMapObject* hit : document.find("name", "text")) {
            delete hit;
        }
        EXPECT_TRUE(document.find("number", 1).empty());
        delete document.clone("a");
        delete JsonData::createObject("[]");
        std::unique_ptr<TreeMapObject> const list(document.get("list"));
        delete list->at(0);
        document.set("stored", &stored);
        document.del(std::string(150, 'k').c_str());
    });
    EXPECT_TRUE(valid == 0 || valid == 2);
}

// A result is complete or missing, and a text is not blamed for the lack of memory.
void comparesAndMerges(Trial& trial) {
    std::string const document = "{\"a\":{\"b\":1},\"list\":[1,null]}";
    std::string const twice = "{\"a\":1,\"\\u0061\":2}";
    TreeMapObject before(document.c_str());
    TreeMapObject after("{\"a\":{\"b\":2},\"list\":[1]}");
    TreeMapObject patch("{\"a\":{\"b\":2,\"c\":{\"d\":1}}}");
    auto const expectAll = [](TreeMapObject* result, char const* expected) {
        EXPECT_TRUE(result == nullptr || text(result->jobj) == expected) << text(result->jobj);
        delete result;
    };
    JsonFault fault = {9, 9, ""};
    TreeMapObject* result = nullptr;
    int merged = -1;
    trial.run([&] { result = JsonData::parse(document.data(), document.size(), &fault); });
    EXPECT_EQ(fault.line, result != nullptr ? 9U : 0U);
    expectAll(result, "{'a':{'b':1},'list':[1,null]}");
    trial.run([&] { result = JsonData::parse(twice.data(), twice.size(), &fault); });
    EXPECT_TRUE(result == nullptr && (fault.line == 0 || fault.column == 8));
    trial.run([&] { result = JsonData::difference(&before, &after); });
    expectAll(result, "[{'path':'a.b','before':1,'after':2},{'path':'list.[1]','before':null}]");
    trial.run([&] { result = before.findPaths("b", "1"); });
    expectAll(result, "['a.b']");
    trial.run([&] { merged = before.merge("", &patch); });
    EXPECT_TRUE(merged != 0 || text(before.jobj) == "{'a':{'b':2,'c':{'d':1}},'list':[1,null]}");
    trial.run([&] { merged = before.merge("new.[0].x", &patch); });
    EXPECT_TRUE(merged != 0 || before.presence("new.[0].x.a.c.d") == TreeMapObject::PRESENT);
}

struct Operation {
    char const* name;
    void (*run)(Trial& trial);
    bool mayThrow;  // std::bad_alloc, when a handle, a controller or a key cannot be allocated
    int syncs = 0;  // of files and, after a rename, of their folder
};

void PrintTo(Operation const& operation, std::ostream* out) { *out << operation.name; }

Operation const OPERATIONS[] = {
    {"Save", [](Trial& trial) { saves(trial, {OLD}); }, false, 2},
    {"SaveWithList", [](Trial& trial) { saves(trial, {.old = OLD, .hasList = true}); }, false, 2},
    {"SaveNew", [](Trial& trial) { saves(trial, {}); }, false, 2},
    {"SaveUnchanged", [](Trial& trial) { saves(trial, {NEW}); }, false, 2},
    {"SaveThroughLink", [](Trial& trial) { saves(trial, {.old = OLD, .isLink = true}); }, false, 2},
    {"SaveInPlace", savesInPlace, false, 1},
    {"SaveOverLeftover", [](Trial& trial) { saves(trial, {.old = "", .hasLeftover = true}); },
     false, 2},
    {"Load", loads, true},
    {"Snapshot", takesSnapshots, true},
    {"LockSave", [](Trial& trial) { locks(trial, "", true); }, false, 2},
    {"LockNodeSave", [](Trial& trial) { locks(trial, "a", true); }, false, 2},
    {"LockNodeUnlock", [](Trial& trial) { locks(trial, "a", false); }, false},
    {"Transaction", transacts, false, 2},
    {"TransactionOfTwo", savesSeveral, false, 6},
    {"Validation", validates, false},
    {"Session", makesASession, true},
    {"LoginAttempt", countsAttempts, false},
    {"RecordStart", startsTheRecord, false},
    {"Settings", readsSettings, false},
    {"Log", logs, false},
    {"Assign", assigns, false},
    {"Arrays", changesArrays, false},
    {"Handles", usesHandles, true},
    {"Differences", comparesAndMerges, false},
};

class FaultTest : public LibraryTest, public testing::WithParamInterface<Operation> {};

TEST_P(FaultTest, LeavesEverythingInOrder) {
    Logger::mask = 0;
    std::filesystem::create_directories("data/network");
    int faultsMet = 0;
    for (Fault const& fault : FAULTS) {
        for (int n = 1;; ++n) {
            SCOPED_TRACE("call " + std::to_string(fault.call) + ", error " +
                         std::to_string(fault.error) + ", the one number " + std::to_string(n));
            Trial trial = {fault, n, GetParam().mayThrow};
            long const openFiles = entriesOf("/proc/self/fd");
            std::string const output = printed([&] { GetParam().run(trial); });
            EXPECT_EQ(entriesOf("/proc/self/fd"), openFiles);
            if (HasFailure()) {
                FAIL() << output;
            }
            if (!trial.reached) {
                EXPECT_EQ(fault.call == faults::SYNC ? n - 1 : GetParam().syncs, GetParam().syncs);
                break;
            }
            ++faultsMet;
        }
    }
    EXPECT_GT(faultsMet, 0);
}

INSTANTIATE_TEST_SUITE_P(Operations, FaultTest, testing::ValuesIn(OPERATIONS),
                         [](testing::TestParamInfo<Operation> const& row) {
                             return std::string(row.param.name);
                         });

}  // namespace
