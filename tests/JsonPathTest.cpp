// The index numbers of the path language are those that a text stream reads.
#include <sstream>
#include <vector>

#include "BEConfig.h"
#include "JsonData.h"
#include "Support.h"
#include "jsondata/JsonRef.h"

using namespace vobiutils;

namespace {

using JsonPathTest = LibraryTest;

// The log lines for an index into an empty array; the first one complains about anything but a
// number.
std::string expectedLines(std::string const& text) {
    std::istringstream stream(text);
    unsigned int value = 0;
    stream >> value >> std::ws;
    bool const isBlank = text.find_first_not_of(' ') == text.npos;
    return (stream.eof() && !isBlank ? "" : "EXCEPTION: BE_StrTo: something unexpected happened") +
           ("ERROR: Request wrong index num=" + std::to_string(static_cast<int>(value))) +
           " len=0!\n";
}

TEST_F(JsonPathTest, IndexNumbersAgreeWithStreamExtraction) {
    std::istringstream separated(
        "999999999|1000000000|4294967295|4294967296|4294967296 |99999999999|99999999999 |"
        "99999999999x|-4294967295|-4294967296|-99999999999|00000000000000000007|0x10|"
        "\t\n\v\f\r 5|5\t\n\v\f\r |1 2|12345678901234567890123|5\xA0|\xA0 5");
    std::vector<std::string> texts = {std::string(100000, '0') + "7", std::string(100000, '9')};
    for (std::string text; std::getline(separated, text, '|');) {
        texts.push_back(text);
    }
    // and every text of up to four of these characters
    for (size_t i = 0, first = texts.size(); texts.size() < first + 1554; ++i) {
        for (char const c : std::string(" +-09x")) {
            texts.push_back((i == 0 ? "" : texts[first + i - 1]) + c);
        }
    }
    JsonRef const array(json("[]"));
    BEConfig::LOG_DEBUG_ENABLE = BEConfig::LOG_INFO_ENABLE = 0;
    for (std::string const& text : texts) {
        EXPECT_EQ(transcript([&] { JsonData::getJObj(array.get(), ("[" + text + "]").c_str()); }),
                  expectedLines(text))
            << "'" << text.substr(0, 40) << "'";
    }
}

}  // namespace
