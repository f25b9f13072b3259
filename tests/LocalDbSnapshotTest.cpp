// Snapshots: what they read, share, notice and refuse.
#include "LocalDbSnapshot.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <memory>
#include <vector>

#include "BEConfig.h"
#include "LocalDbTransaction.h"
#include "Logger.h"
#include "Support.h"
#include "jsondata/files/FileBytes.h"
#include "jsondata/files/FileDescriptor.h"
#include "jsondata/files/FileIdentity.h"
#include "session/Actor.h"

namespace {

using Snapshot = LocalDbSnapshot;

char const LAN_FILE[] = "data/network/network.ldb";

class LocalDbSnapshotTest : public LibraryTest {
  protected:
    LocalDbSnapshotTest() { Logger::mask = 0; }
    ~LocalDbSnapshotTest() override { Snapshot::forget(); }

    // The content of a new snapshot, as ["a"] shows it, or its status.
    static std::string lan() {
        Snapshot const snapshot(API_NETWORK);
        EXPECT_EQ(static_cast<bool>(snapshot), snapshot.status() == Snapshot::READ);
        EXPECT_EQ(snapshot.version() != 0, static_cast<bool>(snapshot));
        char const* const value = snapshot.get<char const*>("a");
        return value != nullptr ? value : std::to_string(snapshot.status());
    }
    // Writes the file anew and waits until its times are no longer recent.
    static void writeSettled(std::string const& content) {
        TempDir::write(LAN_FILE, content);
        usleep(40000);
    }
    // Makes the next change of the file in place look as recent as the last one.
    static void dateAhead() {
        timespec const times[2] = {{0, UTIME_OMIT}, {time(nullptr) + 3600, 0}};
        EXPECT_EQ(utimensat(AT_FDCWD, LAN_FILE, times, 0), 0);
    }
};

std::string const STATUS_NO_FILE = std::to_string(Snapshot::NO_FILE);
std::string const STATUS_UNREADABLE = std::to_string(Snapshot::UNREADABLE);

// Every value is that of a handle on the same document, and so is every line, but for a string.
TEST_F(LocalDbSnapshotTest, ReadsAsAHandleDoes) {
    Logger::mask = ~0U;
    char const content[] =
        "{\"i\":7,\"d\":2.5,\"b\":true,\"s\":\"12x\",\"n\":null,\"o\":{\"k\":1},\"l\":[\"e\",{}]}";
    dir.write(LAN_FILE, content);
    auto const readAll = [](auto& source, bool unchanged, char const* path) {
        int i = -1;
        int64_t n = -1;
        bool b = true;
        double d = -1;
        char const* s = "";
        std::string const read = std::to_string(source.template get<int>(path)) + " " +
                                 std::to_string(source.template get<bool>(path)) + " " +
                                 std::to_string(source.template get<double>(path)) + " " +
                                 std::to_string(source.template get_ex<int>(path, i)) +
                                 std::to_string(source.template get_ex<int64_t>(path, n)) +
                                 std::to_string(source.template get_ex<bool>(path, b)) +
                                 std::to_string(source.template get_ex<double>(path, d)) +
                                 std::to_string(source.template get_ex<char const*>(path, s)) +
                                 std::to_string(i) + std::to_string(n) + std::to_string(b) +
                                 std::to_string(d) + (s != nullptr ? s : "null");
        char const* const text = source.template get<char const*>(path);
        return read + (unchanged || text == nullptr ? "" : text);
    };
    Snapshot const snapshot(API_NETWORK);
    Snapshot const none(API_TYPE_COUNT);
    for (char const* path : {"i", "d", "b", "s", "n", "o", "o.k", "l", "l.[0]", "l.[2]", "none",
                             "i.x", "[0]", "", ""}) {
        TreeMapObject handle(content);
        TreeMapObject empty;
        bool const isString = path[0] == 's' || std::string(path) == "l.[0]";
        std::string values[4];
        EXPECT_EQ(transcript([&] { values[0] = readAll(snapshot, !isString, path); }),
                  transcript([&] { values[1] = readAll(handle, !isString, path); }));
        EXPECT_EQ(values[0], values[1]);
        EXPECT_EQ(transcript([&] { values[2] = readAll(none, false, path); }),
                  transcript([&] { values[3] = readAll(empty, false, path); }));
        EXPECT_EQ(values[2], values[3]);
        EXPECT_EQ(snapshot.get<char const*>(path) != nullptr, isString);
    }
    EXPECT_EQ(snapshot.get<int>(nullptr) + none.get<int>(nullptr), 0);
    Logger::mask = 0;
    struct {
        char const* path;
        int length;
        char const* copy;
    } const rows[] = {{"l", 2, "['e',{}]"}, {"o", -1, "{'k':1}"},  {"d", -1, "2.5"},
                      {"n", -1, nullptr},   {"x", -1, nullptr},    {nullptr, -1, nullptr},
                      {"l.[0]", -1, "'e'"}, {"l.[2]", -1, nullptr}};
    for (auto const& row : rows) {
        EXPECT_EQ(snapshot.len(row.path), row.length);
        EXPECT_EQ(none.len(row.path), -1);
        EXPECT_EQ(none.copy(row.path), nullptr);
        std::unique_ptr<TreeMapObject> const copy(snapshot.copy(row.path));
        EXPECT_EQ(snapshot.type(row.path),
                  json_object_get_type(copy != nullptr ? copy->jobj : nullptr));
        EXPECT_EQ(copy != nullptr ? text(copy->jobj) : "", row.copy != nullptr ? row.copy : "");
    }
    std::unique_ptr<TreeMapObject> const mine(snapshot.copy(""));
    mine->set("o.k", 2);
    EXPECT_EQ(snapshot.get<int>("o.k"), 1);
}

TEST_F(LocalDbSnapshotTest, SharesOneParsedDocument) {
    writeSettled("{\"a\": \"1\"}");
    Snapshot const first(API_NETWORK);
    Snapshot second(API_NETWORK);
    char const* const address = first.get<char const*>("a");
    EXPECT_EQ(second.get<char const*>("a"), address);
    Snapshot const copy(second);
    second = Snapshot(API_QOS);
    EXPECT_EQ(second.status(), Snapshot::NO_FILE);
    second = second = first;
    EXPECT_EQ(second.get<char const*>("a"), address);
    EXPECT_EQ(copy.get<char const*>("a"), address);
    Snapshot::forget();
    Snapshot const other(API_NETWORK);
    EXPECT_NE(other.get<char const*>("a"), address);
    EXPECT_STREQ(address, "1");  // while it is held
    EXPECT_EQ(other.version(), first.version());
    dateAhead();  // read again each time, and parsed once
    Snapshot const recent(API_NETWORK);
    EXPECT_EQ(Snapshot(API_NETWORK).get<char const*>("a"), recent.get<char const*>("a"));
}

TEST_F(LocalDbSnapshotTest, NoticesEachChangeOfTheFile) {
    LocalDbCtrl::init();
    struct {
        char const* change;
        std::string after;
        void (*make)();
    } const rows[] = {
        {"none yet", STATUS_NO_FILE, [] {}},
        {"made", "1", [] { TempDir::write(LAN_FILE, "{\"a\": \"1\"}"); }},
        {"saved", "2",
         [] {
             LocalDbTransaction change(API_NETWORK, "", "default");
             change->set("a", "2");
             EXPECT_EQ(lan(), "1");
             EXPECT_EQ(change.save(), 0);
         }},
        {"kept in memory", "2",
         [] {
             LocalDbTransaction change(API_NETWORK, "", "default");
             change->set("a", "x");
             change.keep();
         }},
        {"replaced by hand", "3",
         [] {
             TempDir::write("other", "{\"a\": \"3\"}");
             rename("other", LAN_FILE);
         }},
        {"written in place, with the times before", "4",
         [] {
             struct stat before;
             stat(LAN_FILE, &before);
             TempDir::write(LAN_FILE, "{\"a\": \"4\"}");
             timespec const times[2] = {before.st_atim, before.st_mtim};
             utimensat(AT_FDCWD, LAN_FILE, times, 0);
         }},
        {"truncated", STATUS_UNREADABLE, [] { EXPECT_EQ(truncate(LAN_FILE, 3), 0); }},
        {"null", STATUS_UNREADABLE, [] { TempDir::write(LAN_FILE, "null"); }},
        {"whole again", "5", [] { TempDir::write(LAN_FILE, "{\"a\": \"5\"}"); }},
        {"removed", STATUS_NO_FILE, [] { rename(LAN_FILE, "away"); }},
        {"put back", "5", [] { rename("away", LAN_FILE); }},
        {"a folder in its place", STATUS_UNREADABLE,
         [] {
             remove(LAN_FILE);
             mkdir(LAN_FILE, 0700);
         }},
        {"no folder for it", STATUS_NO_FILE, [] { std::filesystem::remove_all("data"); }},
        {"somewhere else", "6",
         [] {
             BEConfig::DATA_LOCATION = "elsewhere";
             TempDir::write("elsewhere/network/network.ldb", "{\"a\": \"6\"}");
         }},
        {"in no possible place", STATUS_NO_FILE, [] { BEConfig::DATA_LOCATION.assign(300, 'd'); }},
    };
    for (useconds_t pause : {0U, 40000U}) {  // changed while recent, and later
        std::string const location = BEConfig::DATA_LOCATION;
        for (auto const& row : rows) {
            row.make();
            EXPECT_EQ(lan(), row.after) << row.change;
            usleep(pause);
            EXPECT_EQ(lan(), row.after) << row.change;
        }
        BEConfig::DATA_LOCATION = location;
        LocalDbCtrl::removeDB("default");
        LocalDbCtrl::init();
    }
    LocalDbCtrl::removeDB("default");
}

// A change through a mapping is without a trace, as one is within a step of a coarse clock.
TEST_F(LocalDbSnapshotTest, ReadsARecentFileAgain) {
    dir.write(LAN_FILE, "{\"a\": \"1\"}");
    vobiutils::FileDescriptor const file(LAN_FILE, O_RDWR);
    void* const mapped = mmap(nullptr, 10, PROT_READ | PROT_WRITE, MAP_SHARED, file.get(), 0);
    ASSERT_NE(mapped, MAP_FAILED);
    char volatile* const digit = static_cast<char*>(mapped) + 7;
    *digit = '1';
    dateAhead();
    struct stat before;
    struct stat after;
    ASSERT_EQ(stat(LAN_FILE, &before), 0);
    EXPECT_EQ(lan(), "1");
    *digit = '2';
    ASSERT_EQ(stat(LAN_FILE, &after), 0);
    EXPECT_EQ(vobiutils::FileIdentity(before), vobiutils::FileIdentity(after));
    EXPECT_EQ(lan(), "2");
    munmap(mapped, 10);
}

TEST_F(LocalDbSnapshotTest, CallsRecentWhatMayChangeUnseen) {
    struct stat status = {};
    status.st_mtim = {100, 500000000};
    for (auto const& [seconds, nanoseconds, isRecent] :
         std::vector<std::tuple<long, long, bool>>{{100, 500000000, true},
                                                   {100, 519999999, true},
                                                   {100, 520000000, false},
                                                   {101, 0, false},
                                                   {99, 0, true}}) {
        timespec const now = {seconds, nanoseconds};
        EXPECT_EQ(vobiutils::FileIdentity(status).isRecentAt(now), isRecent);
        std::swap(status.st_mtim, status.st_ctim);  // the later of the two counts
    }
    status.st_ctim = {100, 0};
    status.st_mtim = status.st_ctim;  // of a file system that keeps whole seconds
    EXPECT_TRUE(vobiutils::FileIdentity(status).isRecentAt({101, 999999999}));
    EXPECT_FALSE(vobiutils::FileIdentity(status).isRecentAt({102, 0}));
}

// A reader of a pipe waits for its writer; others find the file that has taken its place.
TEST_F(LocalDbSnapshotTest, NeverWaitsForAnotherReader) {
    std::filesystem::create_directories("data/network");
    ASSERT_EQ(mkfifo(LAN_FILE, 0600), 0);
    Actor slow;
    slow.begin(lan);
    EXPECT_TRUE(slow.sleeps());
    ASSERT_EQ(rename(LAN_FILE, "pipe"), 0);
    writeSettled("{\"a\": \"new\"}");
    Snapshot const before(API_NETWORK);
    EXPECT_EQ(lan(), "new");
    Snapshot::forget();
    dir.write("pipe", "{\"a\": \"old\"}");
    EXPECT_EQ(slow.end(), "old");
    EXPECT_EQ(lan(), "new");
}

TEST_F(LocalDbSnapshotTest, NamesTheContentByItsVersion) {
    // the same on every machine
    struct {
        char const* content;
        uint64_t version;
    } const rows[] = {
        {"{}", 0x19e971d9a5398ae8},
        {"{\"a\": \"12345678\"}", 0xd1bda199a346002c},
        {"{\"a\": \"12345679\"}", 0x583b282386268329},
        {"{\"a\": \"12345678\"} ", 0x3775cc8710dfc893},
        {"{\"a\": \"62342678212345678b12345678\"}", 0x3e624d1c24941fa9},
        {"{\"a\": \"82340678012345678b12345678\"}", 0xfbd67a5925889766},
    };
    for (auto const& row : rows) {
        dir.write(LAN_FILE, row.content);
        EXPECT_EQ(Snapshot(API_NETWORK).version(), row.version) << row.content;
    }
}

// Neither memory nor descriptors grow: one of each type is kept, and those that are held.
TEST_F(LocalDbSnapshotTest, KeepsOneOfEachType) {
    dir.write(LAN_FILE, "{\"a\": \"0\"}");
    long const before = entriesOf("/proc/self/fd");
    std::vector<Snapshot> held;
    for (int i = 0; i < 50; ++i) {
        dir.write("other", "{\"a\": \"" + std::to_string(i) + "\"}");
        rename("other", LAN_FILE);
        held.emplace_back(API_NETWORK);
    }
    EXPECT_EQ(entriesOf("/proc/self/fd"), before + 1);
    for (int i = 0; i < 50; ++i) {
        EXPECT_EQ(held[static_cast<size_t>(i)].get<int>("a"), i);
    }
    Snapshot::forget();
    EXPECT_EQ(entriesOf("/proc/self/fd"), before);
}

}  // namespace
