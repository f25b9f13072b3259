// Saving a file as a whole, where that depends on the system: modes, owners and attributes, and
// what a kill and a full disk leave behind. golden/save.txt has the rest.
#include <sched.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <random>

#include "JsonData.h"
#include "LocalDbCtrl.h"
#include "LocalDbSnapshot.h"
#include "LocalDbTransaction.h"
#include "Logger.h"
#include "Support.h"
#include "TreeMapObject.h"

namespace {

namespace fs = std::filesystem;

std::string const ONE = "{\n  \"a\":1\n}";
std::string const TWO = "{\n  \"a\":2\n}";

int save(std::string const& file, std::string const& text) {
    TreeMapObject document(text.c_str());
    return JsonData::saveObjectToFile(file.c_str(), &document);
}

struct stat statusOf(char const* file) {
    struct stat status = {};
    stat(file, &status);
    return status;
}

class SaveTest : public LibraryTest {
  protected:
    SaveTest() {
        Logger::mask = 0;
        fs::create_directory("d");
    }
};

// Saves over a file with this access control list and mode, and with other attributes. Those that
// certify the content go.
void expectKept(char const* file, std::string const& list, mode_t mode, uid_t owner) {
    std::pair<char const*, std::string> const attributes[] = {
        {"user.note", "note"},
        {"user.long", std::string(1500, 'x')},
        {"trusted.note", "note"},
        {"security.ima", "\1sum"},
    };
    TempDir::write(file, ONE);
    std::string kept;
    for (auto const& [name, value] : attributes) {
        kept += setAttribute(file, name, value) && *name != 's' ? value : "";
    }
    EXPECT_EQ(chown(file, owner, owner), 0);
    setAttribute(file, ACL, list);  // an empty one takes it away
    chmod(file, mode);
    struct stat const before = statusOf(file);
    kept += attributeOf(file, ACL);
    EXPECT_EQ(save(file, TWO), 0);
    EXPECT_EQ(TempDir::read(file), TWO);
    std::string now;
    for (auto const& [name, value] : attributes) {
        now += attributeOf(file, name);
    }
    EXPECT_EQ(now + attributeOf(file, ACL), kept) << file << list.size() << mode;
    EXPECT_EQ(statusOf(file).st_mode, before.st_mode) << file << list.size();
    EXPECT_EQ(statusOf(file).st_uid, before.st_uid);
    EXPECT_EQ(statusOf(file).st_gid, before.st_gid);
    remove(file);
}

TEST_F(SaveTest, KeepsModeOwnerAndAttributes) {
    bool const hasLists = setAttribute("d", "system.posix_acl_default", READER_1235);
    EXPECT_EQ(save("d/new", ONE), 0);
    EXPECT_EQ(attributeOf("d/new", ACL), hasLists ? READER_1235 : "");
    fs::create_directory("e");
    bool const isRoot = geteuid() == 0;
    for (std::string const& list : {READER_1235, std::string()}) {
        for (mode_t mode : {0600U, 0640U, 0644U, 0604U, 0666U, isRoot ? 0444U : 0644U}) {
            for (char const* file : {"d/f", "e/f"}) {
                expectKept(file, list, mode, isRoot && mode != 0666U ? 1234 : geteuid());
            }
        }
    }
    mode_t const before = umask(027);
    EXPECT_EQ(save("e/f", ONE), 0);
    EXPECT_EQ(statusOf("e/f").st_mode & 07777, 0640U);
    umask(before);
    int const isRefused = setxattr("e/f", "user.empty", "", 0, 0);
    EXPECT_EQ(save("e/f", TWO), 0);
    EXPECT_EQ(getxattr("e/f", "user.empty", nullptr, 0), isRefused);
    if (isRoot && setAttribute("e/f", "security.note", "root's")) {
        EXPECT_EQ(chmod(".", 0755) + chmod("e", 0777) + chown("e/f", 1234, 0) + seteuid(1234), 0);
        ino_t const replaced = statusOf("e/f").st_ino;
        EXPECT_EQ(save("e/f", ONE), 0);
        EXPECT_EQ(seteuid(0), 0);
        EXPECT_NE(statusOf("e/f").st_ino, replaced);  // although that attribute cannot be copied
    }
    if (!hasLists) {
        GTEST_SKIP() << "no access control lists in " << fs::current_path();
    }
}

// On a file system of 40 KB where one can be mounted, else under a limit on the size of files.
TEST_F(SaveTest, LeavesTheOldFileOnAFullDisk) {
    ChildResult const child = inChild([] {
        fs::create_directory("full");
        bool const mounted = unshare(CLONE_NEWNS) == 0 &&
                             mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                             mount("tmpfs", "full", "tmpfs", 0, "size=40k") == 0;
        if (!mounted) {
            rlimit const limit = {32768, 32768};
            setrlimit(RLIMIT_FSIZE, &limit);
            signal(SIGXFSZ, SIG_IGN);
        }
        auto const saveTo = [](char const* what, std::string const& text) {
            int const result = save("full/f", text);
            printf("%s: %d %s\n", what, result, TempDir::read("full/f").c_str());
        };
        std::string const large = "{\"a\":\"" + std::string(50000, 'x') + "\"}";
        saveTo("one", ONE);
        saveTo("too large", large);
        saveTo("far too large", "[" + large + "," + large + "]");
        bool const bound = mounted && mount("full/f", "full/f", nullptr, MS_BIND, nullptr) == 0;
        saveTo("two, in place of a file that cannot be renamed over", TWO);
        EXPECT_TRUE(!bound || umount("full/f") == 0);
        chmod("full/f", 0666);
        chmod(".", 0755);
        chmod("full", 0555);
        EXPECT_TRUE(!mounted || setuid(1234) == 0);
        saveTo("too large, in place in a folder without another", large);
        saveTo("one, in place in that folder", ONE);
        EXPECT_EQ(entriesOf("full"), 1);
        chmod("full", 0755);  // lets an ordinary user clean up
    });
    EXPECT_EQ(child.output, "one: 0 " + ONE + "\ntoo large: 2 " + ONE + "\nfar too large: 2 " +
                                ONE + "\ntwo, in place of a file that cannot be renamed over: 0 " +
                                TWO + "\ntoo large, in place in a folder without another: 2 " +
                                TWO + "\none, in place in that folder: 0 " + ONE + "\n");
}

// Two versions of a document, saved in turn, until the process is killed.
[[noreturn]] void saveForEver(char const* name, std::atomic<int>* saves) {
    std::string const filling(20000, 'x');
    for (int i = 0;; *saves = ++i) {
        std::string const version = std::to_string(i % 2);
        save(name, "{\"first\":" + version + ",\"filling\":\"" + filling +
                       "\",\"last\":" + version + "}");
    }
}

// Two processes save at once, also through a link, and as two users if this one is root. Repeated
// until enough kills have hit a save in the middle, which a temporary file shows.
TEST_F(SaveTest, IsNeverTornByAKill) {
    std::minstd_rand random(std::random_device{}());
    TempDir::write("d/f", "{\"first\":0,\"last\":0}");
    fs::create_symlink("d/f", "link");
    for (char const* folder : {".", "d"}) {
        chmod(folder, 0777);
    }
    chmod("d/f", 0666);
    auto* const saves = static_cast<std::atomic<int>*>(
        mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    for (int round = 0, met = 0; met < 60 && round < 300; ++round) {
        using Clock = std::chrono::steady_clock;
        auto const start = Clock::now();
        pid_t writers[2];
        for (int i = 0; i < 2; ++i) {
            saves[i] = 0;
            writers[i] = fork();
            if (writers[i] == 0) {
                bool const otherUser = round % 3 == 2 && i == 0 && geteuid() == 0;
                ASSERT_TRUE(!otherUser || setuid(1234) == 0);
                prctl(PR_SET_PDEATHSIG, SIGKILL);  // should the test fail
                saveForEver(round % 3 == 1 ? "link" : "d/f", saves + i);
            }
        }
        // killed within the time that the first saves took: at any moment of one, on any disk
        for (auto end = Clock::time_point::max(); Clock::now() < end;) {
            if (end == Clock::time_point::max() && saves[0] > 0 && saves[1] > 0) {
                auto const taken = Clock::now() - start;
                end = start + taken + taken * static_cast<int>(random() % 1000) / 1000;
            }
            TreeMapObject read(json_object_from_file("d/f"));
            ASSERT_NE(read.jobj, nullptr) << round;
            ASSERT_EQ(read.get<int>("first"), read.get<int>("last"));
        }
        for (pid_t const writer : writers) {
            kill(writer, SIGKILL);
            waitpid(writer, nullptr, 0);
        }
        ASSERT_LE(entriesOf("d"), 2);
        met += entriesOf("d") == 2 ? 1 : 0;
    }
    EXPECT_EQ(save("d/f", ONE), 0);
    EXPECT_EQ(entriesOf("d"), 1);
    EXPECT_TRUE(fs::is_symlink("link"));
    EXPECT_EQ(statusOf("d/f").st_uid, geteuid() == 0 ? 1234 : geteuid());  // the other user saved
}

[[noreturn]] void transferForEver(std::atomic<int>* saves) {
    for (int amount = 1;; ++amount) {
        LocalDbTransaction change(API_WIFI, "", "default", 10);
        TreeMapObject* const other = change.also(API_SECURITY, "");
        if (other != nullptr) {
            change->set("share", change->get<int>("share") - amount % 1000);
            other->set("share", other->get<int>("share") + amount % 1000);
            *saves += change.save() == 0;
        }
    }
}

int sumOfShares() {
    unsigned int const types[] = {API_WIFI, API_SECURITY};
    LocalDbSnapshot taken[2];
    EXPECT_TRUE(LocalDbSnapshot::take(types, 2, taken));
    return taken[0].get<int>("share") + taken[1].get<int>("share");
}

// A process transfers from one database to the other until it is killed, again until so many kills
// have met it in the middle of a change, which a record shows: KILLS of them, if that is set. This
// one reads meanwhile, and finishes what is left.
TEST_F(SaveTest, TransfersAddUpDespiteKills) {
    std::minstd_rand random(std::random_device{}());
    char const* const kills = getenv("KILLS");
    for (unsigned int type : {API_WIFI, API_SECURITY}) {
        TempDir::write(LocalDbCtrl::getFileName(type), "{\"share\":0}");
    }
    Logger::mask = 0;
    LocalDbCtrl::init();
    auto* const saves = static_cast<std::atomic<int>*>(
        mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    int const wanted = kills != nullptr ? atoi(kills) : 10;
    for (int round = 0, met = 0; met < wanted && round < 30 * wanted; ++round) {
        *saves = 0;
        pid_t const writer = fork();
        if (writer == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);  // should the test fail
            transferForEver(saves);
        }
        while (*saves < 2) {
            ASSERT_EQ(sumOfShares(), 0) << round;
        }
        usleep(static_cast<useconds_t>(random() % 5000));
        kill(writer, SIGKILL);
        waitpid(writer, nullptr, 0);
        std::error_code none;  // an empty record is left by a change that is over
        auto const size = fs::file_size("data/.change", none);
        met += !none && size > 0 ? 1 : 0;
        ASSERT_EQ(sumOfShares(), 0) << round;
        EXPECT_TRUE(LocalDbTransaction(API_WIFI, "", "default"));
        ASSERT_EQ(entriesOf("data"), 3) << round;  // the two folders and the lock
        if (kills != nullptr && round % 100 == 0) {
            fprintf(stderr, "%d kills, %d in the middle of a change\n", round, met);
        }
    }
}

}  // namespace
