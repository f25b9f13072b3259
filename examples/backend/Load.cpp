// Load on a running back end, and the check of what it left behind.
//
//   backend_load run PORT SECONDS JOURNAL    writers and readers at once, until the time is over or the
//                                            back end is gone; then the figures. Exit status 1 for an
//                                            answer that should not have been given, 3 when it is gone
//   backend_load check JOURNAL BEFORE AFTER  whether the data files below AFTER hold what was
//                                            acknowledged, and for the rest what is below BEFORE
//
// Each writer has a part of a database to itself, and keeps a model of it: the part as it was last
// acknowledged and, when no answer came to the last request, as it would be had that been served.
#include <JsonData.h>
#include <TreeMapObject.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "LoadClient.h"

namespace {

namespace fs = std::filesystem;
typedef std::chrono::steady_clock Clock;
typedef std::unique_ptr<TreeMapObject> Node;

char const* const TYPES[] = {"gateway",    "wifi", "network", "security", "service",
                             "mediashare", "qos",  "misc",    "fac"};
char const* const WRITTEN[] = {"misc", "qos", "wifi"};
unsigned int const WRITERS = 6;
unsigned int const READERS = 6;
int const LONGEST_LIST = 40;

struct Figures {
    std::vector<double> milliseconds;  // of the requests that were served
    unsigned int busy = 0;             // 503
    std::string failure;               // what should not have been answered
    bool isCutOff = false;             // the back end went away
};

// One thread's connection, logged in.
class Client {
  public:
    Client(int port, Clock::time_point end) : http_(port), end_(end) {
        std::string answer;
        int const status = http_.ask(
            "POST", "/login", R"({"username":"admin","password":"sample-admin-password"})", answer);
        TreeMapObject login(answer.c_str());
        char const* token = nullptr;
        if (status == 200 && login.get_ex("token", token)) {
            http_.token = token;
        } else if (status == 0) {
            figures.isCutOff = true;
        } else {
            figures.failure = "login: " + answer;
        }
    }

    bool isOver() const {
        return !figures.failure.empty() || figures.isCutOff || Clock::now() >= end_;
    }

    // True when it was served. A busy type is asked again; false when the back end is gone.
    bool ask(char const* method, std::string const& path, std::string const& body) {
        for (;;) {
            auto const start = Clock::now();
            std::string answer;
            int const status = http_.ask(method, path, body, answer);
            if (status == 0) {
                figures.isCutOff = true;
                return false;
            }
            if (status == 503) {
                ++figures.busy;
                continue;
            }
            if (status >= 300) {
                figures.failure = method + (" " + path + ": ") + answer;
            }
            figures.milliseconds.push_back(
                std::chrono::duration<double, std::milli>(Clock::now() - start).count());
            return status < 300;
        }
    }

    Figures figures;

  private:
    LoadClient http_;
    Clock::time_point const end_;
};

// The part of a database that one writer changes.
class Part {
  public:
    explicit Part(unsigned int writer)
        : name_("load" + std::to_string(writer)),
          type_(WRITTEN[writer % 3]),
          next_(std::make_unique<TreeMapObject>(R"({"counter":0,"list":[]})")) {}

    // One step: makes the part, counts, and every third time appends to the list, or replaces it by a shorter one.
    void change(Client& client, int step) {
        std::string const place = "/api/" + type_ + "/" + name_;
        Node const list(next_->get("list"));
        bool served = false;
        if (step == 0) {
            served = client.ask("PUT", place, JsonData::getJson(next_.get()));
        } else if (step % 3 != 0) {
            next_->set("counter", step);
            served = client.ask("PUT", place + ".counter", std::to_string(step));
        } else if (list->len() < LONGEST_LIST) {
            list->addArrayItem(step);
            served = client.ask("POST", place + ".list", std::to_string(step));
        } else {
            list->remove("[0]");
            served = client.ask("PUT", place + ".list", JsonData::getJson(list.get()));
        }
        if (served) {
            acknowledged_.reset(next_->clone(""));
        }
    }

    void write(TreeMapObject& journal) const {
        TreeMapObject entry(false);
        entry.set("name", name_.c_str());
        entry.set("type", type_.c_str());
        entry.set("acknowledged", acknowledged_.get());
        entry.set("next", next_.get());
        journal.addArrayItem(&entry);
    }

  private:
    std::string const name_;
    std::string const type_;
    Node acknowledged_;  // null before the first answer
    Node next_;
};

std::string randomPlace(std::minstd_rand& random) {
    static char const* const PLACES[] = {"/api/network/lan.ipv4.address",
                                         "/api/wifi/ssids.[0].name",
                                         "/api/service?find=name&value=console-online"};
    unsigned int const choice = static_cast<unsigned int>(random() % 12);
    return choice < 3 ? PLACES[choice] : std::string("/api/") + TYPES[choice - 3];
}

double percentile(std::vector<double>& values, double part) {
    if (values.empty()) {
        return 0;
    }
    auto const nth =
        values.begin() + static_cast<long>(part * static_cast<double>(values.size() - 1));
    std::nth_element(values.begin(), nth, values.end());
    return *nth;
}

// 1 when something was answered that should not have been; 3 when the back end went away; else 0.
int report(char const* who, std::vector<Figures>& all, double seconds) {
    Figures sum;
    for (Figures const& one : all) {
        sum.milliseconds.insert(sum.milliseconds.end(), one.milliseconds.begin(),
                                one.milliseconds.end());
        sum.busy += one.busy;
        sum.isCutOff = sum.isCutOff || one.isCutOff;
        if (!one.failure.empty()) {
            std::printf("failed: %s\n", one.failure.c_str());
            sum.failure = one.failure;
        }
    }
    double const perSecond = static_cast<double>(sum.milliseconds.size()) / seconds;
    std::printf(
        "%zu %s: %zu requests, %.0f a second; half within %.2f ms, 99 %% within %.2f ms; "
        "%u times busy\n",
        all.size(), who, sum.milliseconds.size(), perSecond, percentile(sum.milliseconds, 0.5),
        percentile(sum.milliseconds, 0.99), sum.busy);
    return !sum.failure.empty() ? 1 : sum.isCutOff ? 3 : 0;
}

int run(int port, int seconds, char const* journalFile) {
    auto const start = Clock::now();
    auto const end = start + std::chrono::seconds(seconds);
    std::vector<Part> parts;
    std::vector<Figures> writers(WRITERS);
    std::vector<Figures> readers(READERS);
    std::vector<std::thread> threads;
    for (unsigned int i = 0; i < WRITERS; ++i) {
        parts.emplace_back(i);
    }
    for (unsigned int i = 0; i < WRITERS; ++i) {
        threads.emplace_back([&, i] {
            Client client(port, end);
            for (int step = 0; !client.isOver(); ++step) {
                parts[i].change(client, step);
            }
            writers[i] = client.figures;
        });
    }
    for (unsigned int i = 0; i < READERS; ++i) {
        threads.emplace_back([&, i] {
            std::minstd_rand random(i + 1);
            Client client(port, end);
            while (!client.isOver()) {
                client.ask("GET", randomPlace(random), "");
            }
            readers[i] = client.figures;
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    double const lasted = std::chrono::duration<double>(Clock::now() - start).count();
    TreeMapObject journal(true);
    for (Part const& part : parts) {
        part.write(journal);
    }
    bool const written = JsonData::saveObjectToFile(journalFile, &journal) == 0;
    int const ofWriters = report("writers", writers, lasted);
    int const ofReaders = report("readers", readers, lasted);
    return !written || ofWriters == 1 || ofReaders == 1 ? 1 : std::max(ofWriters, ofReaders);
}

bool isSame(TreeMapObject* one, TreeMapObject* other) {
    TreeMapObject none;  // a null handle cannot be compared
    Node const difference(
        JsonData::difference(one != nullptr ? one : &none, other != nullptr ? other : &none));
    return difference != nullptr && difference->len() == 0;
}

// Takes the writers' parts out of a document. False when one is neither as it was acknowledged nor
// as it would be after the request that was not answered. One of which nothing was acknowledged may be
// from an earlier run.
bool takeParts(TreeMapObject& document, std::string const& type, TreeMapObject& journal) {
    bool isGood = true;
    for (unsigned int i = 0; Node const entry{journal.at(i)}; ++i) {
        if (type != entry->get<char const*>("type")) {
            continue;
        }
        char const* const name = entry->get<char const*>("name");
        Node const found(document.get(name));
        Node const acknowledged(entry->get("acknowledged"));
        Node const next(entry->get("next"));
        if (acknowledged != nullptr && !isSame(found.get(), acknowledged.get()) &&
            !isSame(found.get(), next.get())) {
            std::printf("lost: %s %s is\n", type.c_str(), name);
            document.dump(name);
            isGood = false;
        }
        document.remove(name);
    }
    return isGood;
}

int check(char const* journalFile, fs::path const& before, fs::path const& after) {
    Node const journal(JsonData::createObjectFromFile(journalFile));
    bool isGood = journal != nullptr && journal->len() >= 0;
    for (std::string const type : TYPES) {
        std::string const file = type + "/" + type + ".ldb";
        Node const old(JsonData::createObjectFromFile((before / file).c_str()));
        Node const now(JsonData::createObjectFromFile((after / file).c_str()));
        if (now == nullptr || now->jobj == nullptr) {
            std::printf("torn: %s\n", file.c_str());
            isGood = false;
        } else if (isGood && takeParts(*now, type, *journal) && isSame(old.get(), now.get())) {
            continue;
        } else {
            std::printf("changed: %s\n", file.c_str());
            isGood = false;
        }
    }
    std::printf("%s\n", isGood ? "every acknowledged write is in the files, and nothing else"
                               : "the files are not as acknowledged");
    return isGood ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    std::string const what = argc == 5 ? argv[1] : "";
    if (what == "run") {
        return run(atoi(argv[2]), atoi(argv[3]), argv[4]);
    }
    if (what == "check") {
        return check(argv[2], argv[3], argv[4]);
    }
    std::fprintf(stderr, "backend_load run PORT SECONDS JOURNAL | check JOURNAL BEFORE AFTER\n");
    return 2;
}
