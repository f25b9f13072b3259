// Golden sessions: commands written as text, and what the library logs and answers to each.
//
// The words of a command are separated by spaces. In a word "~" is a space, "@3<ab>" is "ababab",
// "@1..3<n#>" is "n1,n2,n3" and "@<255>" is the byte 255. NULL is a null pointer, EMPTY an empty
// string. The first argument is mostly the name of a handle. A document is shown whenever it has
// changed.
//
// Prefixes choose where a command runs: "lock ..." on the main thread, "B lock ..." on a thread B.
// "B begins lock ..." only waits until B sleeps in the call, "B waits" shows whether it still does,
// and "B ends" waits for the result. "as-user save ..." runs in a child process, as another user if
// this one is root.
//
// At first only warnings and errors are shown; "log all" adds DEBUG and INFO, "log nothing" hides
// all.
#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Actor.h"
#include "LocalDbTransaction.h"
#include "Support.h"
#include "TreeMapObject.h"

typedef std::vector<std::string> Words;

class Session {
  public:
    Session();
    ~Session();

    // Performs a command, and returns what it logs and answers.
    std::string play(std::string const& line);

    std::map<std::string, TreeMapObject*> handles;
    std::map<std::string, std::string> texts;  // of their documents, as last shown
    std::map<std::string, std::unique_ptr<LocalDbTransaction>> transactions;
    std::mutex guard;  // protects the maps

  private:
    std::string perform(Words const& words);
    std::string performByName(Words words);
    std::string performAsUser(Words const& words);
    std::string changes();

    std::map<std::string, Actor> actors_;
};

std::string shown(int value);
std::string shown(double value);
std::string shown(bool value);
std::string shown(char const* value);
std::string shown(TreeMapObject const* handle);

// One command at work.
struct Call {
    Session& session;
    Words words;
    std::string result;

    char const* word(size_t i) const;
    unsigned int number(size_t i) const;
    TreeMapObject* handle(size_t i) const;
    json_object* node(size_t i) const;  // borrowed from the handle
    json_object* json(size_t i) const;  // parsed; the caller owns it

    template <typename Value>
    void answer(Value const& value) {
        result = shown(value);
    }

    // Stores a returned handle under the name in word i; a previous one of that name is deleted
    // silently.
    void keep(size_t i, TreeMapObject* handle);

    // Calls `action` with the value of word i, converted to the type that word i - 1 names.
    template <typename Action>
    void typed(size_t i, Action const& action) const {
        std::string const& type = words[i - 1];
        if (type == "int") {
            action(static_cast<int>(number(i)));
        } else if (type == "double") {
            action(atof(word(i)));
        } else if (type == "bool") {
            action(words[i] == "true");
        } else {
            action(word(i));
        }
    }
};

typedef std::map<std::string, void (*)(Call& c)> Commands;

extern Commands const FILE_COMMANDS;
extern Commands const PATH_COMMANDS;
extern Commands const DOCUMENT_COMMANDS;
extern Commands const HANDLE_COMMANDS;
extern Commands const DATABASE_COMMANDS;
extern Commands const LOGIN_COMMANDS;
extern Commands const SETTING_COMMANDS;  // BEConfigTest.cpp
extern Commands const LOG_COMMANDS;      // LoggerTest.cpp
