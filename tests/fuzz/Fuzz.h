// What the fuzz targets share.
#ifndef VOBIUTILS_TESTS_FUZZ_H
#define VOBIUTILS_TESTS_FUZZ_H

#include <stddef.h>
#include <stdint.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "Logger.h"

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

// A folder of the process's own as working directory, and every log line formatted for nobody.
class Sandbox {
  public:
    Sandbox() : folder_(std::filesystem::temp_directory_path() / "fuzz-XXXXXX") {
        require(mkdtemp(folder_.data()) != nullptr && chdir(folder_.c_str()) == 0 &&
                freopen("/dev/null", "w", stdout) != nullptr);
        Logger::mask = ~0U;
        Logger::enableFileLog = 0;
    }
    ~Sandbox() { std::filesystem::remove_all(folder_); }

    static void write(char const* name, std::string const& text) {
        std::ofstream(name, std::ios::binary) << text;
    }
    static std::string read(char const* name) {
        std::ifstream file(name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

  private:
    std::string folder_;
};

#endif
