// processes COUNT: four processes of two threads each count to COUNT in one database, and one of the
// processes is killed again and again. No increment may be lost.
#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <iterator>
#include <numeric>
#include <thread>

#include "LocalDbCtrl.h"
#include "LocalDbTransaction.h"
#include "Support.h"

namespace {

int const PROCESSES = 4;
int const WORKERS = 2 * PROCESSES;

struct Shared {
    std::atomic<int> saved[WORKERS];  // by each worker, as it knows
    std::atomic<bool> hasFailed;
};

void check(Shared& shared, bool isRight, char const* what) {
    if (!isRight) {
        fprintf(stderr, "%s\n", what);
        shared.hasFailed = true;
    }
}

// A worker that was killed between its save and its note finds one more than it knows of. Each third
// increment is that of two databases.
void count(Shared& shared, int worker, int last) {
    std::string const own = "by.[" + std::to_string(worker) + "]";
    std::atomic<int>& saved = shared.saved[worker];
    int mayBeUnknown = 1;
    while (saved < last && !shared.hasFailed) {
        LocalDbTransaction change(API_MISC, "", "default", 60000);
        TreeMapObject* const other = saved % 3 == 0 ? change.also(API_FAC, "") : nullptr;
        if (!change) {
            check(shared, change.status() == LocalDbTransaction::BUSY, "no lock");
            continue;
        }
        int const found = change->get<int>(own.c_str());
        check(shared, found == saved || found == saved + mayBeUnknown, "an increment is lost");
        change->set(own.c_str(), found + 1);
        change->set("sum", change->get<int>("sum") + 1);
        if (other != nullptr) {
            other->set("sum", change->get<int>("sum"));
        }
        check(shared, change.save() == 0, "not saved");
        saved = found + 1;
        mayBeUnknown = 0;
    }
}

pid_t start(Shared& shared, int process, int last) {
    pid_t const child = fork();
    if (child == 0) {
        LocalDbCtrl::init();
        std::thread second(count, std::ref(shared), 2 * process, last);
        count(shared, 2 * process + 1, last);
        second.join();
        _exit(shared.hasFailed ? 1 : 0);
    }
    return child;
}

// Right to one for each worker: one that was killed before its note is counted with its next.
int sumOf(Shared const& shared) {
    return std::accumulate(std::begin(shared.saved), std::end(shared.saved), 0);
}

// Kills a process each time that the sum has grown by a few, and at least every second.
int countAndKill(Shared& shared, int last) {
    pid_t children[PROCESSES];
    for (int i = 0; i < PROCESSES; ++i) {
        children[i] = start(shared, i, last);
    }
    int kills = 0;
    int const end = WORKERS * last - 20;
    while (sumOf(shared) < end && !shared.hasFailed) {
        int const next = std::min(sumOf(shared) + 10 + last / 4, end);
        for (int i = 0; i < 1000 && sumOf(shared) < next && !shared.hasFailed; ++i) {
            usleep(1000);
        }
        pid_t& child = children[kills % PROCESSES];
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        child = start(shared, kills % PROCESSES, last);
        ++kills;
    }
    for (pid_t const child : children) {
        int status = 0;
        waitpid(child, &status, 0);
        check(shared, status == 0, "a process has failed");
    }
    return kills;
}

}  // namespace

int main(int argc, char** argv) {
    int const last = argc > 1 ? atoi(argv[1]) : 0;
    TempDir const dir;
    TempDir::write("data/misc/misc.ldb", R"({"sum": 0, "by": [0, 0, 0, 0, 0, 0, 0, 0]})");
    TempDir::write("data/fac/fac.ldb", R"({"sum": 0})");
    Shared& shared = *static_cast<Shared*>(
        mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    int const kills = countAndKill(shared, last);
    LocalDbCtrl::init();
    int const sum = LocalDbTransaction(API_MISC, "", "default", 60000)->get<int>("sum");
    check(shared, sum == WORKERS * last, "the sum is wrong");
    printf("%d increments, %d processes killed\n", sum, kills);
    return shared.hasFailed || kills == 0 ? 1 : 0;
}
