// Common parts of the fuzz targets.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <stdlib.h>

#include <algorithm>
#include <string>

#include "Logger.h"
#include "Support.h"

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size);

inline void require(bool condition) {
    if (!condition) {
        abort();
    }
}

inline std::string asText(uint8_t const* data, size_t size) {
    return std::string(reinterpret_cast<char const*>(data), size);
}

// The rest of the input, line by line.
inline bool takeLine(std::string& input, std::string& line) {
    size_t const end = std::min(input.find('\n'), input.size());
    line = input.substr(0, end);
    bool const any = !input.empty();
    input.erase(0, end + 1);
    return any;
}

// Works in a temporary folder, with every log line enabled and written to /dev/null. Called for
// each input.
inline void enterSandbox() {
    static TempDir const folder;
    static FILE* const output = freopen("/dev/null", "w", stdout);
    require(output != nullptr);
    Logger::mask = ~0U;
    Logger::enableFileLog = 0;
}
