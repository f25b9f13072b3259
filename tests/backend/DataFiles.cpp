// The back end on damaged data files: each member of a database is removed, and replaced by a value of each
// type; so is the whole of each file. Every request that concerns the file must be answered. And on one that many
// change at once: no change is lost.
#include <BEConfig.h>
#include <CompiledSchema.h>
#include <JsonData.h>
#include <LocalDbCtrl.h>
#include <LocalDbSnapshot.h>
#include <TreeMapObject.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <optional>
#include <set>
#include <thread>
#include <vector>

#include "Routes.h"
#include "Support.h"

namespace fs = std::filesystem;

// Thousands of documents are saved here; that a save survives a loss of power is tested elsewhere.
extern "C" [[gnu::visibility("default")]] int fsync(int) { return 0; }

namespace {

fs::path const SAMPLE = "sample";  // a copy of the sample gateway

// Members that the back end itself knows: they are changed two levels deeper.
std::set<std::string> const KNOWN = {"users", "led", "lan", "ssids", "portForwarding"};

char const* const BROKEN[] = {"", "nonsense", "{\"users\": [{"};
char const* const REPLACEMENTS[] = {nullptr, "null", "true", "7",         "0.5",
                                    "'x'",   "[]",   "{}",   "[null, 7]", "[{'id': 1}, null, [7]]"};

struct Question {
    char const* method;
    std::string path;
    std::string body;
};

Question const LOGIN = {"POST", "/login",
                        R"({"username":"admin","password":"sample-admin-password"})"};
Question const OTHER_LOGIN = {"POST", "/login",
                              R"({"username":"home","password":"sample-home-password"})"};
Question const EMPTY_LOGIN = {"POST", "/login", "{}"};

// Asked whenever their type is damaged.
Question const QUESTIONS[] = {
    {"GET", "/api/gateway/about", ""},
    {"GET", "/api/gateway/led", ""},
    {"PUT", "/api/gateway/led", R"({"brightness":7})"},
    {"PUT", "/api/gateway/led.brightness", "8"},
    {"GET", "/api/network/lan", ""},
    {"PUT", "/api/network/lan", R"({"hostname":"x"})"},
    {"GET", "/api/wifi/ssids", ""},
    {"GET", "/api/wifi/ssids.[0]", ""},
    {"PUT", "/api/wifi/ssids.[0]", R"({"id":1,"enabled":false})"},
    {"PUT", "/api/service/portForwarding.rules.[0]", R"({"id":1,"enabled":false})"},
    {"POST", "/api/service/portForwarding.rules",
     R"({"name":"x","protocol":"tcp","externalPort":1,"internalPort":1,)"
     R"("internalClient":"192.168.1.2","enabled":true})"},
    {"DELETE", "/api/service/portForwarding.rules.[0]", ""},
};

// Asked at the damaged place: method, step from there, body.
char const* const AT_THE_PLACE[][3] = {
    {"GET", "", ""},        {"GET", "?", ""},     {"POST", "", "7"},    {"POST", "", R"({"a":7})"},
    {"PUT", "", R"("x")"},  {"PUT", ".a", "7"},   {"PUT", ".[0]", "7"}, {"PUT", "", R"({"a":7})"},
    {"DELETE", ".[0]", ""}, {"DELETE", ".a", ""}, {"DELETE", "", ""},
};

// The path of the value, and those below it; of an array the first element.
void collectPaths(json_object* value, std::string const& path, int depth,
                  std::vector<std::string>& paths) {
    std::string const start = path.empty() ? "" : path + ".";
    paths.push_back(path);
    if (depth == 0) {
        return;
    }
    if (json_object_is_type(value, json_type_object)) {
        json_object_object_foreach(value, name, member) {
            collectPaths(member, start + name, depth - 1 + (KNOWN.contains(name) ? 2 : 0), paths);
        }
    } else if (json_object_is_type(value, json_type_array) && json_object_array_length(value) > 0) {
        collectPaths(json_object_array_get_idx(value, 0), start + "[0]", depth - 1, paths);
    }
}

// The document with the value at the path replaced; with null, the member is removed.
std::string changed(std::string const& document, std::string const& path, char const* replacement) {
    TreeMapObject copy(document.c_str());
    if (replacement == nullptr) {
        copy.del(path.c_str());
    } else if (path.empty()) {
        return replacement;
    } else {
        TreeMapObject value(json(replacement));
        copy.set(path.c_str(), &value);
    }
    return JsonData::getJson(&copy);
}

std::string plain(std::string const& document) {
    return text(TreeMapObject(document.c_str()).jobj);
}

class DataFiles : public testing::Test {
  protected:
    DataFiles() {
        fs::create_directories("sample");
        fs::create_directories("data");
        fs::copy(SAMPLE_GATEWAY "/data", SAMPLE / "data", fs::copy_options::recursive);
        Node const gateway(JsonData::createObjectFromFile("sample/data/gateway/gateway.ldb"));
        gateway->removeAll("mustChangePassword");
        JsonData::saveObjectToFile("sample/data/gateway/gateway.ldb", gateway.get());
        fs::copy(SAMPLE / "data/gateway", "data/gateway");  // for logging in
        BEConfig::DATA_LOCATION = "./data";
        BEConfig::MULTIDB_MODE_ENABLE = 1;
        BEConfig::ENABLE_BYPASS_TOKEN = 1;  // for what is asked while nobody can log in
    }

    Reply ask(Question const& question) {
        SCOPED_TRACE(question.method + (" " + question.path) + " " + question.body);
        size_t const search = question.path.find('?');
        Request request = {question.method, question.path.substr(0, search), {}, "::1", token_,
                           question.body};
        if (search != std::string::npos) {
            request.parameters = {{"find", "name"}, {"value", "x"}};
        }
        if (question.method != std::string("GET") && !tag_.empty()) {
            request.headers["if-match"] = tag_;
        }
        std::string const before = TempDir::read(database_);
        Reply reply = routes_->answer(request);
        TreeMapObject body(reply.body.c_str());
        char const* error = nullptr;
        body.get_ex("error", error);
        EXPECT_TRUE(reply.status >= 200 && reply.status <= 500) << reply.status;
        EXPECT_EQ(reply.status >= 400, error != nullptr) << reply.body;
        std::string const after = TempDir::read(database_);
        EXPECT_TRUE(reply.status != 204 || plain(after) != plain(before));
        EXPECT_TRUE(after == before || isValid(after)) << after;
        tag_ = reply.etag.empty() ? tag_ : reply.etag;
        return reply;
    }

    // Restarts with the text in the file, and asks what concerns its type and the damaged place.
    void askWith(fs::path const& file, std::string const& text, std::string const& path) {
        std::string const type = file.parent_path().filename();
        database_ = "data/" + type + "/" + type + ".ldb";
        fs::copy_file(SAMPLE / database_, database_, fs::copy_options::overwrite_existing);
        TempDir::write(file, text);
        LocalDbCtrl::init();
        routes_.emplace();
        token_ = "";
        TreeMapObject welcome(ask(LOGIN).body.c_str());
        char const* token = nullptr;
        token_ = welcome.get_ex("token", token) ? token : "";
        ask(EMPTY_LOGIN);
        EXPECT_TRUE(path.rfind("users.[0]", 0) != 0 || ask(OTHER_LOGIN).status == 200);
        std::string const place = "/api/" + type + "/";
        tag_ = ask({"GET", place, ""}).etag;
        for (Question const& question : QUESTIONS) {
            if (question.path.rfind(place, 0) == 0) {
                ask(question);
            }
        }
        for (auto const& [method, step, body] : AT_THE_PLACE) {
            if (file == database_) {
                ask({method, place + path + (path.empty() && *step == '.' ? step + 1 : step),
                     body});
            }
        }
        routes_.reset();
        LocalDbCtrl::removeDB("default");
    }

    void damage(fs::path const& file) {
        std::string const original = TempDir::read(file);
        bool const isDatabase = file.stem() == file.parent_path().filename();
        std::vector<std::string> paths;
        collectPaths(TreeMapObject(original.c_str()).jobj, "", isDatabase ? 1 : 0, paths);
        for (char const* const text : BROKEN) {
            SCOPED_TRACE(file.string() + ": " + text);
            askWith(file, text, "");
        }
        for (std::string const& path : paths) {
            for (char const* const value : REPLACEMENTS) {
                SCOPED_TRACE(file.string() + " " + path + ": " + (value ? value : "removed"));
                askWith(file, changed(original, path, value), path);
            }
        }
        TempDir::write(file, original);
    }

  private:
    bool isValid(std::string const& document) const {
        std::string const schema = database_.parent_path() / database_.stem();
        return CompiledSchema((schema + "_SCHEMA.ldb").c_str())
            .accepts(TreeMapObject(document.c_str()).jobj);
    }

    TempDir folder_;
    std::optional<Routes> routes_;
    std::string token_;
    std::string tag_;
    fs::path database_;
};

TEST_F(DataFiles, OfAnyShapeGetAnAnswer) {
    for (fs::directory_entry const& type : fs::directory_iterator(SAMPLE / "data")) {
        fs::path const folder = "data" / type.path().filename();
        fs::copy(type, folder, fs::copy_options::recursive | fs::copy_options::skip_existing);
        for (fs::directory_entry const& file : fs::directory_iterator(type)) {
            damage(folder / file.path().filename());
        }
        if (folder != "data/gateway") {
            fs::remove_all(folder);
        }
    }
}

TEST_F(DataFiles, AreChangedOnConditionByOneAtATime) {
    fs::create_directories("data/misc");
    TempDir::write("data/misc/misc.ldb", R"({"n": 0})");
    TempDir::write("data/misc/misc_SCHEMA.ldb", R"({"properties": {"n": {"minimum": 0}}})");
    LocalDbCtrl::init();
    Routes routes;
    std::atomic<int> changes = 0;
    std::thread threads[4];
    for (std::thread& thread : threads) {
        thread = std::thread([&] {
            for (int step = 0; step < 200; ++step) {
                Request request = {"GET", "/api/misc/n", {}, "::1", "", ""};
                Reply const seen = routes.answer(request);
                request.method = "PUT";
                request.body = std::to_string(std::stoi(seen.body) + 1);
                request.headers["if-match"] = seen.etag;
                changes += routes.answer(request).status == 200 ? 1 : 0;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(LocalDbSnapshot(API_MISC).get<int>("n"), changes);
    LocalDbCtrl::removeDB("default");
}

}  // namespace
