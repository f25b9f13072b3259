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
#include <TreeMapObject.h>
#include <signal.h>

#include <csignal>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "Routes.h"
#include "http/HttpServer.h"

namespace {

struct Arguments {
    bool onAllInterfaces = false;
    std::vector<std::string> names;
    char const* file = "backend.json";
};

Arguments argumentsIn(char** argument) {
    Arguments arguments;
    for (; *argument != nullptr; ++argument) {
        if (std::strcmp(*argument, "--any") == 0) {
            arguments.onAllInterfaces = true;
        } else if (std::strcmp(*argument, "--name") == 0 && argument[1] != nullptr) {
            arguments.names.emplace_back(*++argument);
        } else {
            arguments.file = *argument;
        }
    }
    return arguments;
}

// Before there are threads, which inherit it: only sigwait gets these signals.
sigset_t holdBackSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return signals;
}

// Why the configuration file cannot be used; null when it can. The library would fall back to its defaults:
// other ports, no TLS, no lock-out.
char const* faultOfConfiguration(char const* file) {
    std::unique_ptr<TreeMapObject> const document(JsonData::createObjectFromFile(file));
    if (document == nullptr) {
        return "there is no such file";
    }
    if (document->jobj == nullptr) {
        return "it cannot be read, or is not JSON";
    }
    return document->presence("any") != TreeMapObject::IMPOSSIBLE ? nullptr
                                                                  : "it is not a JSON object";
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
bool serve(Arguments const& arguments, sigset_t const& signals) {
    Routes routes;
    HttpServer server(routes, arguments.names);
    if (!server.start(arguments.onAllInterfaces)) {
        return false;
    }
    int signal = 0;
    sigwait(&signals, &signal);
    return true;
}

}  // namespace

int main(int, char** argv) {
    Arguments const arguments = argumentsIn(argv + 1);
    if (char const* const fault = faultOfConfiguration(arguments.file)) {
        std::fprintf(stderr, "%s: %s\n", arguments.file, fault);
        return 1;
    }
    sigset_t const signals = holdBackSignals();
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
    BEConfig::init(arguments.file);
    Logger::init();
    std::signal(SIGSEGV, SIG_DFL);  // a process that crashes must end, so that it is started again
    LocalDbCtrl::init();
    warnOfOpenDoors();

    bool const served = serve(arguments, signals);
    LocalDbCtrl::removeDB("default");
    return served ? 0 : 1;
}
