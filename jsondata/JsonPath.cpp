#include "jsondata/JsonPath.h"

#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

namespace vobiutils {

namespace {

// Takes a text apart from its front.
class Scanner {
  public:
    explicit Scanner(std::string_view text) : rest_(text) {}

    bool atEnd() const { return rest_.empty(); }

    void skipSpace() {
        while (!rest_.empty() && isSpace(rest_.front())) {
            rest_.remove_prefix(1);
        }
    }

    // True for a minus sign.
    bool takeSign() {
        char const sign = rest_.empty() ? '\0' : rest_.front();
        if (sign == '-' || sign == '+') {
            rest_.remove_prefix(1);
        }
        return sign == '-';
    }

    struct Digits {
        bool any = false;
        bool tooLarge = false;
        uint32_t value = 0;
    };

    Digits takeDigits() {
        Digits digits;
        for (; !rest_.empty() && rest_.front() >= '0' && rest_.front() <= '9';
             rest_.remove_prefix(1)) {
            uint64_t const next =
                uint64_t{digits.value} * 10U + static_cast<unsigned int>(rest_.front() - '0');
            digits.any = true;
            digits.tooLarge = digits.tooLarge || next > UINT32_MAX;
            digits.value = static_cast<uint32_t>(next);
        }
        return digits;
    }

  private:
    static bool isSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

    std::string_view rest_;
};

}  // namespace

unsigned int BE_StrTo(std::string_view text) {
    Scanner scanner(text);
    scanner.skipSpace();
    bool const blank = scanner.atEnd();
    bool const negative = scanner.takeSign();
    Scanner::Digits const digits = scanner.takeDigits();
    if (digits.any && !digits.tooLarge) {
        scanner.skipSpace();  // a stream that failed skips nothing more
    }
    if (blank || !scanner.atEnd()) {
        printf("EXCEPTION: BE_StrTo: something unexpected happened");
    }
    if (digits.tooLarge) {
        return UINT32_MAX;
    }
    return negative ? 0U - digits.value : digits.value;
}

int64_t indexFromText(PathToken token) {
    std::string_view const text = token.text();
    return text.size() < 3 ? -1 : int64_t{BE_StrTo(text.substr(1, text.size() - 2))};
}

char* duplicate(PathToken token) {
    std::string_view const text = token.text();
    char* const copy = static_cast<char*>(malloc(text.size() + 1));
    if (copy != nullptr) {
        memcpy(copy, text.data(), text.size());
        copy[text.size()] = '\0';
    }
    return copy;
}

}  // namespace vobiutils
