// Runs a fuzz target once over every file of the folders named on the command line.
#include <filesystem>

#include "Fuzz.h"

int main(int count, char** folders) {
    int files = 0;
    for (int i = 1; i < count; ++i) {
        for (auto const& entry : std::filesystem::directory_iterator(folders[i])) {
            std::string const input = TempDir::read(entry.path());
            LLVMFuzzerTestOneInput(reinterpret_cast<uint8_t const*>(input.data()), input.size());
            ++files;
        }
    }
    fprintf(stderr, "%d files\n", files);
    return files > 0 ? 0 : 1;
}
