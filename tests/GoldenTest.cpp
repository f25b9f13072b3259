// Plays the sessions in golden/*.txt: what the library logs and answers after each command, a line
// that begins with ">", must be what the file says. With GOLDEN_UPDATE set the files are written
// anew, to be read before they are kept. session/Session.h has the form of a command.
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

#include "session/Session.h"

namespace {

namespace fs = std::filesystem;

std::set<fs::path> sessions() {
    std::set<fs::path> files(fs::directory_iterator(GOLDEN_FILES), {});
    std::erase_if(files, [](fs::path const& file) { return file.extension() != ".txt"; });
    return files;
}

class GoldenTest : public LibraryTest, public testing::WithParamInterface<fs::path> {};

TEST_P(GoldenTest, SaysWhatTheFileSays) {
    std::istringstream expected(TempDir::read(GetParam()));
    std::string actual;
    Session session;
    for (std::string line; std::getline(expected, line);) {
        if (line.starts_with("> ")) {
            actual += line + "\n" + session.play(line.substr(2));
        } else if (line.empty() || line[0] == '#') {
            actual += line + "\n";
        }
    }
    if (getenv("GOLDEN_UPDATE") != nullptr) {
        std::ofstream(GetParam()) << actual;
    }
    EXPECT_EQ(actual, asPrintedHere(expected.str()));
}

INSTANTIATE_TEST_SUITE_P(Golden, GoldenTest, testing::ValuesIn(sessions()),
                         [](auto const& file) { return file.param.stem().string(); });

}  // namespace
