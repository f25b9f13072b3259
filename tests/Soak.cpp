// soak SECONDS: threads that move amounts between two databases of the gateway in the current folder, and readers that
// add them up. Fails if a sum is ever wrong; that a save fails, as on a full disk, is no fault.
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>

#include "LocalDbCtrl.h"
#include "LocalDbSnapshot.h"
#include "LocalDbTransaction.h"
#include "Logger.h"
#include "TreeMapObject.h"

namespace {

unsigned int const TYPES[] = {API_NETWORK, API_SECURITY};
std::atomic<int> saved;
std::atomic<int> refused;
std::atomic<int> wrong;

void move(unsigned int from) {
    LocalDbTransaction change(TYPES[from], "", "default", 20);  // both orders: some meet
    TreeMapObject* const other = change.also(TYPES[1 - from], "");
    if (other == nullptr) {
        ++refused;
        return;
    }
    change->set("soak.counter", change->get<int>("soak.counter") - 1);
    other->set("soak.counter", other->get<int>("soak.counter") + 1);
    ++(change.save() == 0 ? saved : refused);
}

void addUp() {
    LocalDbSnapshot parts[2];
    if (LocalDbSnapshot::take(TYPES, 2, parts)) {
        wrong += parts[0].get<int>("soak.counter") + parts[1].get<int>("soak.counter") != 0;
    }
}

}  // namespace

int main(int argc, char** argv) {
    Logger::mask = 0;
    LocalDbCtrl::init();
    auto const end =
        std::chrono::steady_clock::now() + std::chrono::seconds(argc > 1 ? atoi(argv[1]) : 1);
    std::vector<std::jthread> threads;
    for (unsigned int thread = 0; thread < 6; ++thread) {
        threads.emplace_back([thread, end] {
            while (std::chrono::steady_clock::now() < end) {
                thread < 4 ? move(thread % 2) : addUp();
            }
        });
    }
    threads.clear();
    std::printf("%d saved, %d refused, %d wrong\n", saved.load(), refused.load(), wrong.load());
    return wrong == 0 ? 0 : 1;
}
