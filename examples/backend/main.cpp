// A small web back end of a home gateway: users log in, and read and change the nine databases.
//
//   backend [--any] [--name NAME]... [CONFIGURATION-FILE]
//
// Relative paths in the configuration file (backend.json) start at the current directory. Listens on the loopback interface,
// with --any on all interfaces. Accepts requests whose Host is an IP address, localhost or a NAME. Ends on SIGTERM and
// SIGINT. If it cannot start, it prints the reason on standard error and exits with status 1.
#include <BEConfig.h>
#include <JsonData.h>
#include <LocalDbCtrl.h>
#include <Logger.h>
#include <signal.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <exception>

#include "Routes.h"
#include "http/HttpServer.h"

namespace {

// Blocks the signals before any thread is started, so that only sigtimedwait receives them.
sigset_t holdBackSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return signals;
}

// Returns the configuration, or null, with the reason on standard error. The library itself would fall back to its defaults:
// other ports, no TLS, no lock-out.
Node readSettings(std::string const& file) {
    Node document(JsonData::createObjectFromFile(file.c_str()));
    if (document == nullptr || document->presence("any") == TreeMapObject::IMPOSSIBLE) {
        std::fprintf(stderr, "%s: there is no such file, or it is not a JSON object\n",
                     file.c_str());
        document.reset();
    }
    return document;
}

// Reads the setting as BEConfig::init does. BELoginRecord::isRunning does not tell: it is false when the disk is full, too.
bool locksOut(TreeMapObject& settings) {
    char const key[] = "enable_bruteforce_prevent";
    return settings.presence(key) != TreeMapObject::PRESENT || settings.get<int>(key) == 1;
}

void warnOfOpenDoors(bool locksOut) {
    if (BEConfig::ENABLE_BYPASS_TOKEN != 0) {
        std::fprintf(stderr, "warning: enable_bypass_token lets anyone in\n");
    }
    if (!locksOut) {
        std::fprintf(stderr, "warning: login attempts are not counted, so no one is locked out\n");
    }
}

// Serves until a signal arrives. Returns false if it could not start.
bool serve(bool locksOut, std::vector<std::string> const& names, bool onAllInterfaces,
           sigset_t const& signals) {
    Routes routes(locksOut);
    HttpServer server(routes, names);
    bool const served = server.start(onAllInterfaces);
    timespec const interval = {std::max(1, BEConfig::AUTH_CLEANUP), 0};
    while (served && sigtimedwait(&signals, nullptr, &interval) < 0) {
        routes.closeExpiredSessions();
    }
    return served;
}

}  // namespace

int main(int, char** argv) {
    // Not by catching exceptions: the destructor of a half-started asio::thread_pool waits for ever.
    std::set_terminate([] {
        std::fprintf(stderr, "not enough memory or threads\n");
        std::_Exit(1);
    });
    bool onAllInterfaces = false;
    std::vector<std::string> names = {"localhost"};
    std::string file = "backend.json";
    for (char** argument = argv + 1; *argument != nullptr; ++argument) {
        std::string const text = *argument;
        if (text == "--any") {
            onAllInterfaces = true;
        } else if (text == "--name" && argument[1] != nullptr) {
            names.emplace_back(*++argument);
        } else {
            file = text;
        }
    }
    Node const settings = readSettings(file);
    if (settings == nullptr) {
        return 1;
    }
    sigset_t const signals = holdBackSignals();
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
    BEConfig::init(file.c_str());
    Logger::init();
    // undoes what Logger::init does: a process that crashes has to end, so that it is started again
    signal(SIGSEGV, SIG_DFL);
    LocalDbCtrl::init();
    warnOfOpenDoors(locksOut(*settings));
    bool const served = serve(locksOut(*settings), names, onAllInterfaces, signals);
    LocalDbCtrl::removeDB("default");
    return served ? 0 : 1;
}
