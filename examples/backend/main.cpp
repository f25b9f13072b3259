// The web back end of a home gateway, small: log in, and read and change the nine databases.
//
//   backend [--any] [--name NAME]... [CONFIGURATION-FILE]
//
// Works in the current directory, on what the configuration file (backend.json) names there. Listens
// on the loopback interface; with --any on all of them. Answers to requests for an IP address, for
// localhost and for each NAME. Ends on SIGTERM and SIGINT. When it cannot start, it prints the reason on
// standard error and exits with status 1.
#include <BEConfig.h>
#include <BELoginRecord.h>
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

// Before there are threads, which inherit it: only sigtimedwait gets these signals.
sigset_t holdBackSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return signals;
}

// Whether the configuration file can be used. The library would fall back to its defaults: other ports, no TLS,
// no lock-out.
bool isUsable(std::string const& file) {
    std::unique_ptr<TreeMapObject> const document(JsonData::createObjectFromFile(file.c_str()));
    char const* fault = nullptr;
    if (document == nullptr) {
        fault = "there is no such file";
    } else if (document->jobj == nullptr) {
        fault = "it cannot be read, or is not JSON";
    } else if (document->presence("any") == TreeMapObject::IMPOSSIBLE) {
        fault = "it is not a JSON object";
    }
    if (fault != nullptr) {
        std::fprintf(stderr, "%s: %s\n", file.c_str(), fault);
    }
    return fault == nullptr;
}

void warnOfOpenDoors() {
    if (BEConfig::ENABLE_BYPASS_TOKEN != 0) {
        std::fprintf(stderr, "warning: enable_bypass_token lets anyone in\n");
    }
    if (!BELoginRecord::isRunning) {
        std::fprintf(stderr, "warning: login attempts are not recorded, so no one is locked out\n");
    }
}

// Until a signal ends it. False when it could not begin.
bool serve(std::vector<std::string> const& names, bool onAllInterfaces, sigset_t const& signals) {
    Routes routes;
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
    std::set_terminate([] {  // a handler would let Asio's destructors wait for threads that do not end
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
    if (!isUsable(file)) {
        return 1;
    }
    sigset_t const signals = holdBackSignals();
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
    BEConfig::init(file.c_str());
    Logger::init();
    signal(SIGSEGV, SIG_DFL);  // a process that crashes must end, so that it is started again
    LocalDbCtrl::init();
    warnOfOpenDoors();
    bool const served = serve(names, onAllInterfaces, signals);
    LocalDbCtrl::removeDB("default");
    return served ? 0 : 1;
}
