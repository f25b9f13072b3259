// Test support: a scratch folder, what the library prints, JSON in single quotes, and the settings
// put back after each test.
#ifndef VOBIUTILS_TESTS_SUPPORT_H
#define VOBIUTILS_TESTS_SUPPORT_H

#include <gtest/gtest.h>
#include <json-c/json.h>
#include <pthread.h>

#include <functional>
#include <string>

// A folder of its own that is the working directory until the scope ends, and is then removed.
class TempDir {
  public:
    TempDir();
    ~TempDir();
    TempDir(TempDir const&) = delete;
    TempDir& operator=(TempDir const&) = delete;

    // Names are relative to the folder; write makes the folders on the way.
    static void write(std::string const& name, std::string const& text);
    static std::string read(std::string const& name);
    static bool exists(std::string const& name);

  private:
    std::string path_;
    std::string before_;
};

// What `action` prints on standard output, or on standard error.
std::string printed(std::function<void()> const& action);
std::string printedOnError(std::function<void()> const& action);

// Log lines without the group column: "DEBUG: ...". Every pointer reads PTR, a null one NIL.
std::string withoutPointers(std::string text);

// The log lines that `action` writes, in that form.
std::string transcript(std::function<void()> const& action);

// Runs `action` in a process of its own: what it prints, and its exit status.
struct ChildResult {
    int status;
    std::string output;
};
ChildResult inChild(std::function<void()> const& action);

// How many entries a folder has.
long entriesOf(char const* folder);

// An extended attribute: empty when there is none; false when it cannot be set.
std::string attributeOf(char const* file, char const* name);
bool setAttribute(char const* file, char const* name, std::string const& value);

// The access control list of a file, and a value for it: user 1235 may read, the group may not.
extern char const ACL[];
extern std::string const READER_1235;

// Whether a thread holds the mutex, this one or another.
bool isHeld(pthread_mutex_t& mutex);

// JSON written with single quotes; the caller holds the reference.
json_object* json(char const* text);
// The text of a value, without blanks and with single quotes.
std::string text(json_object* value);

// For as long as it lives, what is allocated is meant to leak.
class IntendedLeaks {
  public:
    IntendedLeaks();
    ~IntendedLeaks();
};

// A test in a scratch folder with every log line on, printed on standard output only.
class LibraryTest : public testing::Test {
  protected:
    LibraryTest();
    ~LibraryTest() override;

    TempDir dir;

  private:
    std::function<void()> const restore_;  // the settings
};

#endif
