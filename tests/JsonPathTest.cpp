// The path language as text: tokens and index numbers.
#include "jsondata/JsonPath.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "Support.h"

using namespace vobiutils;

namespace {

struct Number {
    unsigned int value;
    bool complaint;
    bool operator==(Number const& other) const = default;
};

std::ostream& operator<<(std::ostream& out, Number const& number) {
    return out << number.value << (number.complaint ? " with the message" : "");
}

Number extracted(std::string const& text) {
    std::istringstream stream(text);
    unsigned int value = 0;
    stream >> value >> std::ws;
    return {value, !stream.eof()};
}

std::vector<Number> converted(std::vector<std::string> const& texts) {
    std::vector<Number> numbers;
    for (std::string const& text : texts) {
        Number number = {0, false};
        std::string const path = "[" + text + "].x";
        std::string const said = printed([&] {
            number.value = static_cast<unsigned int>(indexOf(PathCursor(path.c_str()).token()));
        });
        EXPECT_TRUE(said.empty() || said == "EXCEPTION: BE_StrTo: something unexpected happened");
        number.complaint = !said.empty();
        numbers.push_back(number);
    }
    return numbers;
}

std::vector<std::string> allTexts(std::string const& alphabet, size_t maxLength) {
    std::vector<std::string> texts = {""};
    for (size_t i = 0; i < texts.size(); ++i) {
        if (texts[i].size() < maxLength) {
            for (char c : alphabet) {
                texts.push_back(texts[i] + c);
            }
        }
    }
    return texts;
}

TEST(JsonPath, IndexNumbersAgreeWithStreamExtraction) {
    std::vector<std::string> texts = {
        "999999999",
        "1000000000",
        "4294967295",
        "4294967296",
        "4294967296 ",
        "99999999999",
        "99999999999 ",
        "99999999999x",
        "-4294967295",
        "-4294967296",
        "-99999999999",
        "00000000000000000007",
        "0x10",
        "\t\n\v\f\r 5",
        "5\t\n\v\f\r ",
        "1 2",
        "12345678901234567890123",
        std::string(100000, '0') + "7",
        std::string(100000, '9'),
        "5\xA0",
        std::string("\xA0") + "5",
    };
    std::vector<std::string> const shortOnes = allTexts(" +-09x", 4);
    texts.insert(texts.end(), shortOnes.begin() + 1, shortOnes.end());  // "[]" has no number
    for (char const* const token : {"[", "[]", "[1"}) {
        EXPECT_EQ(indexOf(PathToken(token)), -1) << token;
    }
    std::vector<Number> const numbers = converted(texts);
    for (size_t i = 0; i < texts.size(); ++i) {
        bool const blank = texts[i].find_first_not_of(' ') == std::string::npos;
        Number const expected = blank ? Number{0, true} : extracted(texts[i]);
        EXPECT_EQ(numbers[i], expected) << "'" << texts[i].substr(0, 40) << "'";
    }
}

}  // namespace
