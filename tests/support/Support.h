// Test support: a temporary folder, captured output, JSON in single quotes, and settings that are
// restored after each test.
#pragma once

#include <gtest/gtest.h>
#include <json-c/json.h>
#include <pthread.h>

#include <functional>
#include <string>

// A temporary folder that is the working directory until the end of the scope, and is then removed.
class TempDir {
  public:
    TempDir();
    ~TempDir();
    TempDir(TempDir const&) = delete;
    TempDir& operator=(TempDir const&) = delete;

    // Names are relative to the folder; write creates missing folders.
    static void write(std::string const& name, std::string const& text);
    static std::string read(std::string const& name);

  private:
    std::string path_;
    std::string before_;
};

// Runs `action`, and returns what it prints.
std::string printed(std::function<void()> const& action, FILE* stream = stdout);

// Log lines without the column of the group: "DEBUG: ...". Pointers are replaced by PTR, null ones
// by NIL.
std::string withoutPointers(std::string text);

// A text in which a null pointer is NIL and an empty array "[\n]", with both as the C library and
// json-c print them here.
std::string asPrintedHere(std::string const& text);

// The log lines that `action` writes, in that form.
std::string transcript(std::function<void()> const& action);

// Runs `action` in a child process: what that prints, and its exit status.
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

// Parses JSON, which may use single quotes; the caller owns the reference.
json_object* json(char const* text);
// Serializes a value, without spaces and with single quotes.
std::string text(json_object* value);

// Allocations in its lifetime may leak.
class IntendedLeaks {
  public:
    IntendedLeaks();
    ~IntendedLeaks();
};

// A test in a temporary folder, with every log line enabled and printed on standard output only.
class LibraryTest : public testing::Test {
  protected:
    LibraryTest();
    ~LibraryTest() override;

    TempDir dir;

  private:
    std::function<void()> const restore_;  // the settings
};
