// powercut [TYPES]: tries every disk that a loss of power may leave during a save of so many
// databases, 1 and then 2 unless given, and during the recovery from each of these disks, and so on.
// Each time a reader has to find all files old or all new: new once the save has returned, and what
// an earlier reader has found. Nor does it matter where a kill stops the save, with a reader before
// the loss of power. Without any one of the save's syncs that has to fail. The same for two
// of which one cannot be renamed over when the change counts, and is written in place.
// Before that: a reader while others save back and forth, and a save that follows a change.
#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <unistd.h>

#include <deque>

#include "DiskModel.h"
#include "LocalDbCtrl.h"
#include "LocalDbSnapshot.h"
#include "LocalDbTransaction.h"
#include "Logger.h"
#include "Support.h"

namespace {

namespace fs = std::filesystem;

DiskModel* model = nullptr;  // of the action that is being watched
std::set<Disk> left;         // what losses of power during it may leave
int syncs = 0;
int droppedSync = 0;     // its number; 0 for none
bool isRefused = false;  // the rename to the first database
bool othersSave = false;
int killAt = 0;  // the number of the call at which the process is killed; 0 for none
int calls = 0;

std::string plain(fs::path const& name) { return name.lexically_normal(); }
std::string nameOf(int fd) {
    return fs::proximate(fs::read_symlink("/proc/self/fd/" + std::to_string(fd)));
}

// Called before the model does what the process has done.
bool isWatched() {
    if (model != nullptr) {
        left.merge(model->disks());
    }
    return model != nullptr;
}
// From then on it changes nothing.
bool isKilled() {
    errno = EIO;
    return killAt != 0 && ++calls >= killAt;
}
int moved(int result, std::string const& from, std::string const& to) {
    if (result == 0 && isWatched()) {
        model->move(from, to);
    }
    return result;
}

void write(Disk const& disk) {
    fs::remove_all("data");
    for (auto const& [name, content] : disk) {
        TempDir::write(name, content);
    }
    LocalDbSnapshot::forget();
}

typedef std::string Action(int types);

// What a reader finds.
std::string read(int types) {
    static unsigned int const all[] = {0, 1, 2, 3, 4, 5, 6, 7, 8};
    LocalDbSnapshot taken[API_TYPE_COUNT];
    bool const areRead = LocalDbSnapshot::take(all, types, taken);
    int sum = 0;
    for (LocalDbSnapshot const& snapshot : taken) {
        sum += snapshot ? snapshot.get<int>("a") : 0;
    }
    return !areRead ? "unreadable" : sum == 0 ? "old" : sum == types ? "new" : "mixed";
}

std::string save(int types, int value) {
    int const at = std::exchange(killAt, 0);  // not while it locks
    LocalDbTransaction change(0, "", "default");
    for (int type = 0; type < types; ++type) {
        change.also(static_cast<unsigned int>(type), "")->set("a", value);
    }
    killAt = at;
    calls = 0;
    bool const isSaved = change.save() == 0;
    killAt = 0;
    return isSaved ? "new" : "refused";
}

std::string save(int types) { return save(types, 1); }

std::string saveAndRead(int types) {
    save(types);
    return read(types);
}

// Whether a reader takes no part of a change while others save, back and forth, before each look at
// one of the files.
bool isNotMisled() {
    Disk const disk = {{plain(LocalDbCtrl::getFileName(0)), "{\"a\":0}"},
                       {plain(LocalDbCtrl::getFileName(1)), "{\"a\":0}"}};
    write(disk);
    othersSave = true;
    std::string const found = read(2);
    othersSave = false;
    return found != "mixed";
}

// The disks to be tried, each with what a reader has to find, if that is decided.
struct Search {
    // Does something on a disk, and adds those that a loss of power may leave meanwhile.
    bool follow(Disk const& disk, std::string const& wanted, int types, Action* action) {
        write(disk);
        DiskModel watching(disk);
        syncs = 0;
        left.clear();
        model = &watching;
        std::string const found = action(types);
        model = nullptr;
        add(left, wanted);
        add(watching.disks(), found);
        return (found == "old" || found == "new") && (wanted.empty() || found == wanted);
    }

    void add(std::set<Disk> const& disks, std::string const& wanted) {
        for (Disk const& disk : disks) {
            auto const [entry, isNew] = expected.emplace(disk, wanted);
            if (isNew || (entry->second.empty() && !wanted.empty())) {
                entry->second = wanted;
                untried.push_back(disk);
            }
        }
    }

    std::map<Disk, std::string> expected;
    std::deque<Disk> untried;
};

// Whether a save without one of its syncs, or with all, is right. Counts them.
bool isRight(int types, int without, int& count) {
    Search search;
    Disk disk;
    for (int type = 0; type < types; ++type) {
        fs::path const file = plain(LocalDbCtrl::getFileName(static_cast<unsigned int>(type)));
        disk[file] = "{\"a\":0}";
        disk[file.parent_path() / ".lock"] = "";  // of an earlier save: whether it is there decides
                                                  // nothing, and doubles the disks
    }
    droppedSync = without;
    bool right = search.follow(disk, "", types, save);
    count = syncs;
    droppedSync = 0;
    bool isKilledLast = without == 0;
    for (int at = 1; right && isKilledLast; ++at) {
        killAt = at;
        right = search.follow(disk, "", types, saveAndRead);
        isKilledLast = calls >= at;
    }
    while (right && !search.untried.empty()) {
        disk = search.untried.front();
        search.untried.pop_front();
        right = search.follow(disk, search.expected[disk], types, read);
    }
    fprintf(stderr, "%d at once, without sync %d of %d: %zu disks, %s\n", types, without, count,
            search.expected.size(), right ? "right" : "wrong");
    return right;
}

// Whether a save that follows a change outlasts it, though it puts back what the file had before.
bool outlastsChange(int without) {
    std::string const old = "{\n  \"a\":0\n}";  // as it is saved
    Disk const disk = {{plain(LocalDbCtrl::getFileName(0)), old},
                       {plain(LocalDbCtrl::getFileName(1)), old}};
    write(disk);
    DiskModel watching(disk);
    model = &watching;
    save(2, 1);
    syncs = 0;
    droppedSync = without;
    save(1, 0);
    droppedSync = 0;
    model = nullptr;
    bool result = true;
    for (Disk const& after : watching.disks()) {
        write(after);
        result = result && read(2) == "mixed" && LocalDbSnapshot(0).get<int>("a") == 0;
    }
    return result;
}

bool check(int types) {
    int count = 0;
    isRefused = true;
    bool isAsItMustBe = types == 1 || isRight(types, 0, count);
    isRefused = false;
    for (int without = 0; without <= count; ++without) {
        isAsItMustBe = isRight(types, without, count) == (without == 0) && isAsItMustBe;
    }
    return isAsItMustBe;
}

}  // namespace

#pragma GCC visibility push(default)  // a sanitizer looks for some of the names

#define WRAP(RESULT, NAME, PARAMETERS)          \
    extern "C" RESULT __real_##NAME PARAMETERS; \
    extern "C" RESULT __wrap_##NAME PARAMETERS; \
    RESULT __wrap_##NAME PARAMETERS

WRAP(int, open64, (char const* name, int flags, mode_t mode)) {
    static int value = 0;
    if (flags == (O_RDONLY | O_CLOEXEC) && strstr(name, ".ldb") != nullptr &&
        std::exchange(othersSave, false)) {
        save(2, value = 1 - value);
        othersSave = true;
    }
    bool const isNew = (flags & O_CREAT) != 0 && access(name, F_OK) != 0;
    int const fd = isKilled() ? -1 : __real_open64(name, flags, mode);
    moved(isNew && fd >= 0 ? 0 : -1, "", plain(name));
    return fd;
}
WRAP(int, open, (char const* name, int flags, mode_t mode)) {
    return __wrap_open64(name, flags, mode);
}
WRAP(ssize_t, write, (int fd, void const* bytes, size_t size)) {
    if (isKilled()) {
        return -1;
    }
    if (isWatched()) {
        model->files[model->now[nameOf(fd)]].content.replace(
            static_cast<size_t>(lseek(fd, 0, SEEK_CUR)), size, static_cast<char const*>(bytes),
            size);
    }
    return __real_write(fd, bytes, size);
}
WRAP(int, ftruncate64, (int fd, off_t length)) {
    if (isKilled()) {
        return -1;
    }
    if (isWatched()) {
        model->files[model->now[nameOf(fd)]].content.resize(static_cast<size_t>(length));
    }
    return __real_ftruncate64(fd, length);
}
WRAP(int, ftruncate, (int fd, off_t length)) { return __wrap_ftruncate64(fd, length); }
WRAP(int, fsync, (int fd)) {  // a real one would only take time
    if (isKilled()) {
        return -1;
    }
    if (++syncs != droppedSync && isWatched()) {
        model->sync(nameOf(fd));
    }
    return 0;
}
WRAP(int, rename, (char const* from, char const* to)) {
    if (isRefused && strstr(from, ".change.1") != nullptr) {
        errno = EBUSY;
        return -1;
    }
    return isKilled() ? -1 : moved(__real_rename(from, to), plain(from), plain(to));
}
WRAP(int, unlink, (char const* name)) {
    return isKilled() ? -1 : moved(__real_unlink(name), plain(name), "");
}

#pragma GCC visibility pop

int main(int count, char** words) {
    TempDir const dir;
    Logger::mask = 0;
    LocalDbCtrl::init();
    return (count > 1
                ? check(atoi(words[1]))
                : isNotMisled() && outlastsChange(0) && !outlastsChange(1) && check(1) && check(2))
               ? 0
               : 1;
}
