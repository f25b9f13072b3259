// What the commands of vobidb share: results, options, messages, and the ways to a database.
#pragma once

#include <CompiledSchema.h>
#include <LocalDbSnapshot.h>
#include <LocalDbTransaction.h>
#include <TreeMapObject.h>
#include <signal.h>

#include <functional>
#include <memory>
#include <string>

namespace vobidb {

// The exit status. A command may also throw one, after it has said why.
enum Result { DONE = 0, NOT_FOUND = 1, NOT_VALID = 1, FAILED = 2, BUSY = 3 };

typedef std::unique_ptr<TreeMapObject> Node;

struct Options {
    unsigned int milliseconds = 5000;  // to wait for a database
    bool isBare = false;
    bool isString = false;
    bool showsSecrets = false;
};

// Adds a message to standard error, which is written at the end, and returns the result.
[[gnu::format(printf, 2, 3)]] Result complain(Result result, char const* format, ...);

// Prints a line on standard output.
void print(std::string const& line);

// Without characters that could steer a terminal, U+0080 to U+009F among them.
std::string printable(std::string text);

// A value as JSON, in one line or in several.
std::string lineOf(json_object* value);
std::string pagesOf(json_object* value);

// Where and why the document of a database is not valid.
std::string textOf(unsigned int type, CompiledSchema::Fault const& fault);

// The API type of that name, and a path as the library reads it in one way only. Throw FAILED.
unsigned int typeOf(char const* name);
char const* pathOf(char const* text);

// Reads exactly one JSON value. Throws `result`; `what` is named in the message.
Node parsed(std::string const& text, std::string const& what, Result result);

// The whole file; standard input for "-". Throws FAILED.
std::string contentOf(char const* file);

// Writes all of it to a descriptor; false with errno.
bool writeAll(int fd, std::string const& text);

// What was saved last, and a copy of it. Throw NOT_FOUND without a data file, else FAILED.
LocalDbSnapshot saved(unsigned int type);
Node copyOf(LocalDbSnapshot const& snapshot);

// Holds the signals that ordinarily end the program back until the end of the scope.
class WithoutSignals {
  public:
    WithoutSignals();
    ~WithoutSignals();
    WithoutSignals(WithoutSignals const&) = delete;
    WithoutSignals& operator=(WithoutSignals const&) = delete;

  private:
    sigset_t before_;
};

// Waits while another program writes a change of several databases: the library would wait without a
// limit, even if that program has been stopped. Returns the milliseconds that are left. Throws BUSY.
unsigned int awaitChange(Options const& options);

// Returns DONE if the transaction holds its databases, and otherwise says why not.
Result explain(LocalDbTransaction const& change, unsigned int type);

// Saves the change; says so if that is not possible, and why.
Result save(LocalDbTransaction& change);

// Locks a database, changes its document, and saves it if `change` is DONE.
Result changeDatabase(unsigned int type, Options const& options,
                      std::function<Result(TreeMapObject& document)> const& change);

// Makes `document` equal to `content` in its place. False if one is an object and the other not, or
// if one is a plain value.
bool replaceContent(TreeMapObject& document, json_object* content);

// The commands, with the words after their name.
typedef Result Run(Options const& options, char** words, int count);
Run get, set, add, del, find, check;
Run diff;
Run backUp, restore;
Run edit;

}  // namespace vobidb
