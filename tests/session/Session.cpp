// Plays a session line by line. The commands are in tables, one for each subject.
#include "Session.h"

#include <string.h>
#include <unistd.h>

#include <algorithm>
#include <iterator>
#include <regex>
#include <sstream>
#include <utility>

#include "BEConfig.h"
#include "Logger.h"

namespace {

// Expands a word as the head of Session.h says.
std::string expanded(std::string word) {
    static std::regex const form("@(\\d*)(\\.\\.(\\d+))?<([^>]*)>");
    std::replace(word.begin(), word.end(), '~', ' ');
    std::string result;
    std::smatch found;
    for (; std::regex_search(word, found, form); word = found.suffix()) {
        result += found.prefix();
        std::string const text = found[4];
        if (found.length(1) == 0) {
            result += static_cast<char>(std::stoi(text));
            continue;
        }
        bool const isList = found[2].matched;
        int const first = isList ? std::stoi(found[1]) : 1;
        for (int i = first, last = std::stoi(found[isList ? 3 : 1]); i <= last; ++i) {
            size_t const number = isList ? text.find('#') : text.npos;
            result += isList && i > first ? "," : "";
            result += text.substr(0, number);
            result += number != text.npos ? std::to_string(i) + text.substr(number + 1) : "";
        }
    }
    return result + word;
}

// Writes long runs of a character as "@40<x>", and truncates long lines and long output.
std::string contracted(std::string const& text) {
    std::istringstream lines(text);
    std::string result;
    int count = 0;
    for (std::string line; std::getline(lines, line); ++count) {
        std::string shorter;
        for (size_t i = 0, end = 0; i < line.size(); i = end) {
            end = std::min(line.find_first_not_of(line[i], i), line.size());
            shorter += end - i < 24 ? line.substr(i, end - i)
                                    : "@" + std::to_string(end - i) + "<" + line[i] + ">";
        }
        if (shorter.size() > 400) {
            shorter.resize(100);
            shorter += "... " + std::to_string(line.size()) + " bytes";
        }
        result += count < 60 ? shorter + "\n" : "";
    }
    return result + (count > 60 ? "... " + std::to_string(count) + " lines\n" : "");
}

void chooseLevels(std::string const& which) {
    BEConfig::LOG_WARNING_ENABLE = BEConfig::LOG_ERROR_ENABLE = 1;
    BEConfig::LOG_DEBUG_ENABLE = BEConfig::LOG_INFO_ENABLE = which == "all" ? 1 : 0;
    Logger::mask = which == "nothing" ? 0 : ~0U;
}

void deleteQuietly(TreeMapObject* handle) {
    if (handle != nullptr) {
        unsigned int const mask = std::exchange(Logger::mask, 0);
        delete handle;
        Logger::mask = mask;
    }
}

}  // namespace

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

char const* Call::word(size_t i) const {
    std::string const& word = words.at(i);
    return word == "NULL" ? nullptr : word == "EMPTY" ? "" : word.c_str();
}

unsigned int Call::number(size_t i) const {
    return static_cast<unsigned int>(strtoul(word(i), nullptr, 10));
}

TreeMapObject* Call::handle(size_t i) const {
    std::scoped_lock const lock(session.guard);
    return word(i) != nullptr ? session.handles.at(words[i]) : nullptr;
}

json_object* Call::node(size_t i) const { return word(i) != nullptr ? handle(i)->jobj : nullptr; }

json_object* Call::json(size_t i) const { return word(i) != nullptr ? ::json(word(i)) : nullptr; }

void Call::keep(size_t i, TreeMapObject* handle) {
    answer(handle);
    std::scoped_lock const lock(session.guard);
    deleteQuietly(std::exchange(session.handles[words.at(i)], handle));
    session.texts[words[i]] = handle != nullptr ? text(handle->jobj) : "";
}

Session::Session() { chooseLevels("warnings"); }

Session::~Session() {
    transactions.clear();
    for (auto const& [name, handle] : handles) {
        deleteQuietly(handle);
    }
}

std::string Session::play(std::string const& line) {
    std::istringstream in(line);
    std::string answer;
    std::string said = transcript(
        [&] { answer = performByName(Words(std::istream_iterator<std::string>(in), {})); });
    said += said.empty() || said.back() == '\n' ? "" : "\n";
    answer.resize(answer.find_last_not_of('\n') + 1);
    said += answer.empty() ? "" : "= " + answer + "\n";
    return contracted(withoutPointers(said) + changes());
}

std::string Session::performAsUser(Words const& words) {
    return inChild([&] {
               EXPECT_TRUE(geteuid() != 0 || seteuid(1234) == 0);
               std::string const answer = perform(words);
               fputs(answer.c_str(), stdout);
           })
        .output;
}

// Performs a command on the thread that its first word names, if it does.
std::string Session::performByName(Words words) {
    if (words[0] == "as-user") {
        return performAsUser(Words(words.begin() + 1, words.end()));
    }
    if (words[0].size() > 1) {
        return perform(words);
    }
    Actor& actor = actors_[words[0]];
    bool const begins = words[1] == "begins";
    if (words[1] == "waits") {
        return shown(actor.sleeps());
    }
    if (words[1] != "ends") {
        words.erase(words.begin(), words.begin() + (begins ? 2 : 1));
        actor.begin([this, words] { return perform(words); });
    }
    return begins ? (actor.sleeps(), "") : actor.end();
}

std::string Session::perform(Words const& words) {
    if (words[0] == "log") {
        chooseLevels(words[1]);
        return "";
    }
    for (Commands const* commands :
         {&FILE_COMMANDS, &PATH_COMMANDS, &DOCUMENT_COMMANDS, &HANDLE_COMMANDS, &DATABASE_COMMANDS,
          &LOGIN_COMMANDS, &SETTING_COMMANDS, &LOG_COMMANDS}) {
        auto const command = commands->find(words[0]);
        if (command != commands->end()) {
            Call call = {*this, words, ""};
            std::transform(words.begin(), words.end(), call.words.begin(), expanded);
            command->second(call);
            return call.result;
        }
    }
    return "no such command";
}

std::string Session::changes() {
    std::scoped_lock const lock(guard);
    std::string changed;
    for (auto const& [name, handle] : handles) {
        std::string const now = handle != nullptr ? text(handle->jobj) : "";
        changed += texts[name] != now ? name + " " + now + "\n" : "";
        texts[name] = now;
    }
    return changed;
}
