// Plays the sessions of golden/*.txt: what the library logs and answers after each command, a line
// that begins with ">", must be what the file says. With GOLDEN_UPDATE set the files are written
// anew, to be read before they are kept.
//
// Words of a command are parted by blanks. NULL is a null pointer, EMPTY the empty text, @40k forty
// times "k", and "~" a blank. The first argument is mostly the name of a handle, whose document is
// shown whenever it has changed.
#include <stdlib.h>
#include <string.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <sstream>
#include <vector>

#include "BEConfig.h"
#include "JsonData.h"
#include "LocalDbCtrl.h"
#include "Logger.h"
#include "Support.h"
#include "TreeMapObject.h"
#include "jsondata/JsonRef.h"

using namespace vobiutils;

namespace {

namespace fs = std::filesystem;

std::string expanded(std::string word) {
    for (char& c : word) {
        c = c == '~' ? ' ' : c;
    }
    if (word[0] == '@') {
        size_t const end = word.find_first_not_of("0123456789", 1);
        word = std::string(std::stoul(word.substr(1, end - 1)), word[end]) + word.substr(end + 1);
    }
    return word;
}

// Long runs of a character, the other way round.
std::string contracted(std::string const& text) {
    std::string result;
    for (size_t i = 0, end = 0; i < text.size(); i = end) {
        end = std::min(text.find_first_not_of(text[i], i), text.size());
        result += end - i < 24 ? text.substr(i, end - i) : "@" + std::to_string(end - i) + text[i];
    }
    return result;
}

std::string shown(int value) { return std::to_string(value); }
std::string shown(double value) { return std::to_string(value); }
std::string shown(bool value) { return value ? "true" : "false"; }
std::string shown(char const* value) {
    return value == nullptr ? "null" : "'" + std::string(value) + "'";
}
std::string shown(TreeMapObject const* handle) {
    return handle == nullptr
               ? "null"
               : text(handle->jobj) + (handle->jobj_parent != nullptr ? " lent '" : " owned '") +
                     std::string(handle->key_obj, strnlen(handle->key_obj, 32)) + "'" +
                     (handle->error != 0 ? " error" : "");
}

// The path of a node, to tell containers apart.
std::string place(json_object* root, json_object* node, std::string const& at = "root") {
    std::string found = root == node ? at : "";
    if (json_object_is_type(root, json_type_object)) {
        json_object_object_foreach(root, key, value) {
            found = found.empty() ? place(value, node, at + "." + key) : found;
        }
    } else if (json_object_is_type(root, json_type_array)) {
        for (size_t i = 0; i < json_object_array_length(root) && found.empty(); ++i) {
            found = place(json_object_array_get_idx(root, i), node,
                          at + ".[" + std::to_string(i) + "]");
        }
    }
    return found;
}

class Session {
  public:
    ~Session() {
        transcript([&] {
            for (auto const& [name, handle] : handles_) {
                delete handle;
            }
        });
    }

    // What a command logs and answers.
    std::string play(std::string const& line) {
        std::istringstream in(line);
        words_.assign(std::istream_iterator<std::string>(in), {});
        for (std::string& word : words_) {
            word = expanded(word);
        }
        result_.clear();
        std::string said = transcript([&] { commands_.at(words_[0])(); });
        said += said.empty() || said.back() == '\n' ? "" : "\n";
        result_.resize(result_.find_last_not_of('\n') + 1);
        said += result_.empty() ? "" : "= " + result_ + "\n";
        return contracted(said + changes());
    }

  private:
    char const* word(size_t i) const {
        std::string const& word = words_.at(i);
        return word == "NULL" ? nullptr : word == "EMPTY" ? "" : word.c_str();
    }
    unsigned int number(size_t i) const {
        return static_cast<unsigned int>(strtoul(word(i), nullptr, 10));
    }
    TreeMapObject* handle(size_t i) const {
        return word(i) != nullptr ? handles_.at(words_[i]) : nullptr;
    }
    json_object* node(size_t i) const { return word(i) != nullptr ? handle(i)->jobj : nullptr; }

    // Names a handle that a command has returned; the one that had the name goes unheard.
    void name(size_t i, TreeMapObject* handle) {
        result_ = shown(handle);
        Logger::mask = 0;
        delete handles_[words_.at(i)];
        Logger::mask = ~0U;
        handles_[words_[i]] = handle;
        texts_[words_[i]] = handle != nullptr ? text(handle->jobj) : "";
    }

    std::string changes() {
        std::string changed;
        for (auto const& [name, handle] : handles_) {
            std::string const now = handle != nullptr ? text(handle->jobj) : "";
            changed += texts_[name] != now ? name + " " + now + "\n" : "";
            texts_[name] = now;
        }
        return changed;
    }

    // Calls `action` with the value of word i, in the type that the word before it names.
    template <typename Action>
    void typed(size_t i, Action const& action) const {
        std::string const& type = words_[i - 1];
        if (type == "int") {
            action(static_cast<int>(number(i)));
        } else if (type == "double") {
            action(atof(word(i)));
        } else if (type == "bool") {
            action(strcmp(word(i), "true") == 0);
        } else {
            action(word(i));
        }
    }

    void found(std::list<TreeMapObject*> const& hits) {
        result_ = std::to_string(hits.size()) + " hits";
        for (TreeMapObject* hit : hits) {
            result_ += " " + text(hit->jobj);
            transcript([&] { delete hit; });
        }
    }

    void stored(int code, json_object* parent, char const* key, void (*release)(char const*)) {
        result_ += parent != nullptr ? " in " + place(node(1), parent) : "";
        result_ += key != nullptr || code == 0 ? " key " + shown(key) : "";
        release(key);
    }

    void lookUp() {
        json_object* parent = nullptr;
        char const* key = nullptr;
        json_object* const value = JsonData::getJObj(node(1), word(2), parent, key);
        result_ = text(value);
        transcript([&] { EXPECT_EQ(JsonData::getJObj(node(1), word(2)), value); });
        stored(2, parent, key, [](char const* copy) { delete[] copy; });
    }

    void assign() {
        json_object* parent = nullptr;
        char const* key = nullptr;
        JsonRef const value(json(word(3)));
        int const code = JsonData::setJObj(node(1), word(2), value.get(), parent, key);
        result_ = shown(code);
        stored(code, parent, key, [](char const* copy) { free(const_cast<char*>(copy)); });
    }

    void compare() {
        JsonRef const a(json(word(1)));
        JsonRef const b(json(word(2)));
        result_ = shown(JsonData::compareObjVal(a.get(), json_object_get_type(a.get()), b.get(),
                                                json_object_get_type(b.get())));
    }

    void search(bool inArray) {
        std::list<TreeMapObject*> hits;
        JsonRef const value(word(3) != nullptr ? json(word(3)) : nullptr);
        int const count = inArray ? handle(1)->findInArray(hits, word(2), value.get(), node(4))
                                  : handle(1)->findInObject(hits, word(2), value.get(), node(4));
        found(hits);
        result_ = shown(count) + " " + result_;
    }

    void showState() {
        LOCALDB_HANDLER* const controller = LocalDbCtrl::controllers.at(words_[1]);
        unsigned int const type = number(2);
        result_ = "state " + shown(controller->state[type]) +
                  (isHeld(controller->lock[type]) ? " held" : " free") +
                  (controller->dbObject[type] != nullptr ? " loaded" : "");
    }

    void print(std::string const& file) {
        std::ifstream in(file);
        result_ = in ? std::string(std::istreambuf_iterator<char>(in), {}) : "no file";
    }

    std::map<std::string, std::function<void()>> const commands_ = {
        // files
        {"write", [&] { std::ofstream(word(1)) << word(2); }},
        {"folder", [&] { fs::create_directories(words_[1]); }},
        {"rename", [&] { fs::rename(words_[1], words_[2]); }},
        {"print", [&] { print(words_[1]); }},
        {"data", [&] { BEConfig::DATA_LOCATION = word(1); }},
        // values and documents
        {"lookup", [&] { lookUp(); }},
        {"assign", [&] { assign(); }},
        {"compare", [&] { compare(); }},
        {"new", [&] { name(1, new TreeMapObject(word(2))); }},
        {"create", [&] { name(1, JsonData::createObject(word(2))); }},
        {"load", [&] { name(1, JsonData::createObjectFromFile(word(2))); }},
        {"message", [&] { name(1, new TreeMapObject(number(2), number(3))); }},
        {"free", [&] { delete handle(1), handles_.erase(words_[1]); }},
        {"json", [&] { result_ = shown(JsonData::getJson(handle(1))); }},
        {"save", [&] { result_ = shown(JsonData::saveObjectToFile(word(1), handle(2))); }},
        {"dump", [&] { result_ = printedOnError([&] { handle(1)->dump(word(2)); }); }},
        {"validate", [&] { IntendedLeaks const schema; result_ = shown(JsonData::validateObject(handle(1), word(2))); }},
        {"validate-file", [&] { result_ = shown(JsonData::validateFile(handle(1), word(2))); }},
        {"validate-files", [&] { result_ = shown(JsonData::validateFile(word(1), word(2))); }},
        {"validate-message", [&] { result_ = shown(LocalDbCtrl::validateObject(handle(1), number(2), number(3))); }},
        // handles
        {"show", [&] { result_ = shown(handle(1)); }},
        {"get-int", [&] { result_ = shown(handle(1)->get<int>(word(2))); }},
        {"get-bool", [&] { result_ = shown(handle(1)->get<bool>(word(2))); }},
        {"get-double", [&] { result_ = shown(handle(1)->get<double>(word(2))); }},
        {"get-text", [&] { result_ = shown(handle(1)->get<char const*>(word(2))); }},
        {"get", [&] { typed(4, [&](auto out) {
             bool const got = handle(1)->get_ex(word(2), out);
             result_ = shown(got) + " " + shown(out);
         }); }},
        {"set", [&] { typed(4, [&](auto value) { handle(1)->set(word(2), value); }); }},
        {"set-unsigned", [&] { handle(1)->set(word(2), number(3)); }},
        {"put", [&] { handle(1)->set(word(2), handle(3)); }},
        {"del", [&] { handle(1)->del(word(2)); }},
        {"node", [&] { name(1, handle(2)->get(word(3))); }},
        {"clone", [&] { name(1, handle(2)->clone(word(3))); }},
        {"at", [&] { name(1, handle(2)->at(number(3))); }},
        {"len", [&] { result_ = shown(handle(1)->len()); }},
        {"set-item", [&] { result_ = shown(handle(1)->setArrayItem(number(2), handle(3))); }},
        {"add-item", [&] { result_ = shown(handle(1)->addArrayItem(handle(2))); }},
        {"add", [&] { typed(3, [&](auto value) { result_ = shown(handle(1)->addArrayItem(value)); }); }},
        {"del-item", [&] { result_ = shown(handle(1)->delArrayItem(number(2))); }},
        {"clear", [&] { result_ = shown(handle(1)->clearArrayItems()); }},
        {"find", [&] { IntendedLeaks const ofNumbers; typed(4, [&](auto value) { found(handle(1)->find(word(2), value)); }); }},
        {"find-unsigned", [&] { IntendedLeaks const hits; found(handle(1)->find(word(2), number(3))); }},
        {"find-in-object", [&] { search(false); }},
        {"find-in-array", [&] { search(true); }},
        // the database
        {"init", [&] { IntendedLeaks const formerController; LocalDbCtrl::init(); }},
        {"clone-db", [&] { result_ = shown(LocalDbCtrl::cloneNewDB(word(1))); }},
        {"remove-db", [&] { result_ = shown(LocalDbCtrl::removeDB(word(1))); }},
        {"key", [&] { result_ = LocalDbCtrl::getDBByKey(word(1)) != nullptr ? "found" : "null"; }},
        {"state", [&] { showState(); }},
        {"lock", [&] { name(1, LocalDbCtrl::lockDbObject(number(2), word(3), word(4))); }},
        {"save-db", [&] { result_ = shown(LocalDbCtrl::saveDbObject(static_cast<API_TYPE_T>(number(1)), word(2))); }},
        {"unlock-db", [&] { result_ = shown(LocalDbCtrl::unlockDbObject(number(1), word(2))); }},
        {"forget", [&] { handles_.erase(words_[1]); }},
    };

    std::map<std::string, TreeMapObject*> handles_;
    std::map<std::string, std::string> texts_;
    std::vector<std::string> words_;
    std::string result_;
};

class GoldenTest : public LibraryTest, public testing::WithParamInterface<char const*> {};

TEST_P(GoldenTest, SaysWhatTheFileSays) {
    std::string const file = std::string(GOLDEN_FILES) + "/" + GetParam() + ".txt";
    std::istringstream expected(TempDir::read(file));
    std::string actual;
    Session session;
    for (std::string line; std::getline(expected, line);) {
        if (line.starts_with("> ")) {
            actual += line + "\n" + session.play(line.substr(2));
        } else if (line.empty() || line[0] == '#') {
            actual += line + "\n";
        }
    }
    if (getenv("GOLDEN_UPDATE") != nullptr) {
        std::ofstream(file) << actual;
    }
    EXPECT_EQ(actual, expected.str());
}

INSTANTIATE_TEST_SUITE_P(Golden, GoldenTest,
                         testing::Values("lookup", "assign", "documents", "values", "arrays",
                                         "search", "validation", "lock", "registry"),
                         [](auto const& file) { return std::string(file.param); });

}  // namespace
