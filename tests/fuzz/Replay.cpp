// Runs a fuzz target once over every file of the folders named on the command line.
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size);

int main(int count, char** folders) {
    int files = 0;
    for (int i = 1; i < count; ++i) {
        for (auto const& entry : std::filesystem::directory_iterator(folders[i])) {
            std::ifstream file(entry.path(), std::ios::binary);
            std::string const input{std::istreambuf_iterator<char>(file), {}};
            LLVMFuzzerTestOneInput(reinterpret_cast<uint8_t const*>(input.data()), input.size());
            ++files;
        }
    }
    printf("%d files\n", files);
    return files > 0 ? 0 : 1;
}
