// Fuzz target: a configuration file. A setting gets the value in the file if that has the right
// type, else its default. A file that is not an object is skipped: it would end the process.
#include "BEConfig.h"
#include "BELoginRecord.h"
#include "Fuzz.h"
#include "jsondata/JsonRef.h"

using namespace vobiutils;

namespace {

int numberOf(json_object* file, char const* key, int other) {
    json_object* const value = json_object_object_get(file, key);
    bool const isNumber =
        json_object_is_type(value, json_type_int) || json_object_is_type(value, json_type_boolean);
    return isNumber ? json_object_get_int(value) : other;
}

}  // namespace

int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size) {
    enterSandbox();
    TempDir::write("config", asText(data, size));
    JsonRef const file(json_object_from_file("config"));
    if (file && !json_object_is_type(file.get(), json_type_object)) {
        return 0;
    }
    BEConfig::isInit = false;
    BELoginRecord::isRunning = false;
    BEConfig::URL_REWRITE = "";
    BEConfig::REPO_TYPE = 1;
    BEConfig::AUTH_CLEANUP = 60;
    BEConfig::init("config");

    json_object* const system = json_object_object_get(file.get(), "system");
    bool const hasSystem = json_object_object_get_ex(file.get(), "system", nullptr) != 0;
    auto const cleanup = static_cast<unsigned int>(numberOf(system, "cleanup_time", 60));
    require(BEConfig::isInit);
    json_object* const prefix = json_object_object_get(file.get(), "url_rewrite_path");
    bool const isString = json_object_is_type(prefix, json_type_string);
    require(BEConfig::URL_REWRITE == (isString ? json_object_get_string(prefix) : ""));
    require(BEConfig::REPO_TYPE == numberOf(file.get(), "repo_type", 1));
    require(BEConfig::AUTH_CLEANUP == (hasSystem ? static_cast<int>(cleanup * 60U) : 60));
    require(BELoginRecord::isRunning ==
            (file && numberOf(file.get(), "enable_bruteforce_prevent", 1) == 1));
    return 0;
}
