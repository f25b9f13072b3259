// Fuzz target: the file of the login record. A file that is not an array stops the record and is
// left as it is; in an array an attempt counts.
#include "BELoginRecord.h"
#include "Fuzz.h"
#include "jsondata/JsonRef.h"

using namespace vobiutils;

// The value of a file that is not an array leaks, as intended.
extern "C" [[gnu::visibility("default")]] char const* __lsan_default_options();
extern "C" char const* __lsan_default_options() { return "detect_leaks=0"; }

int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size) {
    enterSandbox();
    char const file[] = ".loginrecord.cfg";
    std::string const input = asText(data, size);
    TempDir::write(file, input);
    JsonRef const value(json_object_from_file(file));
    BELoginRecord::isRunning = true;
    LoginAttemptInfo const before = BELoginRecord::getAttempt("a");
    bool const usable = json_object_is_type(value.get(), json_type_array);
    require(BELoginRecord::isRunning == usable);
    require(before.attempts < 10 ? before.lockMinutes == 0 : before.attempts > 0);

    bool const erased = BELoginRecord::eraseAttempt("a");
    require(!erased || BELoginRecord::getAttempt("a").attempts == 0);
    require(usable || !erased);
    std::string const text = TempDir::read(file);
    bool const counted = BELoginRecord::setAttempt("a");
    LoginAttemptInfo const after = BELoginRecord::getAttempt("a");
    require(counted ? after.attempts == 1 && after.lockMinutes == 0 : TempDir::read(file) == text);
    require(usable || text == input);
    require(counted == usable);
    BELoginRecord::setMaximum(2);
    require(BELoginRecord::setAttemptAt("b", "s") == usable);
    require(BELoginRecord::eraseAttemptAt("b", "s") == usable);
    BELoginRecord::setMaximum(0);
    return 0;
}
