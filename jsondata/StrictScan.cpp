// The grammar of JSON.
#include "jsondata/StrictScan.h"

#include <assert.h>
#include <string.h>

#include "jsondata/JsonRef.h"
#include "jsondata/NumberRange.h"
#include "jsondata/Utf8.h"

namespace vobiutils {

namespace {

int const MAX_DEPTH = JSON_TOKENER_DEFAULT_DEPTH - 1;  // containers above a value

bool isHighSurrogate(unsigned int unit) { return unit >= 0xd800 && unit <= 0xdbff; }
bool isLowSurrogate(unsigned int unit) { return unit >= 0xdc00 && unit <= 0xdfff; }

}  // namespace

bool StrictScan::failAt(char const* position, char const* reason) {
    at_ = position;
    reason_ = reason;
    return false;
}

void StrictScan::skipSpace() {
    while (next() == ' ' || next() == '\t' || next() == '\r' || next() == '\n') {
        ++at_;
    }
}

bool StrictScan::take(char c) {
    assert(c != '\0');  // which next() gives at the end
    bool const isNext = next() == c;
    at_ += isNext ? 1 : 0;
    return isNext;
}

bool StrictScan::run() {
    skipSpace();
    if (!value(0)) {
        return false;
    }
    skipSpace();
    return at_ == end_ || fail("something follows the value");
}

bool StrictScan::value(int depth) {
    if (depth > MAX_DEPTH) {
        return fail("nested too deeply");
    }
    ++values_;
    switch (next()) {
        case '{': return container(depth, '}');
        case '[': return container(depth, ']');
        case '"': return string();
        case 't': return word("true");
        case 'f': return word("false");
        case 'n': return word("null");
        default: return number();
    }
}

bool StrictScan::container(int depth, char end) {
    ++at_;
    skipSpace();
    if (take(end)) {
        return true;
    }
    bool const isObject = end == '}';
    bool const remembers = isObject && names_ == ONCE;
    JsonRef const known(remembers ? json_object_new_object() : nullptr);
    if (remembers && !known) {
        return fail(nullptr);
    }
    do {
        skipSpace();
        if ((isObject && !name(known.get())) || !value(depth + 1)) {
            return false;
        }
        skipSpace();
    } while (take(','));
    return take(end) || fail(isObject ? "',' or '}' expected" : "',' or ']' expected");
}

// A name, the colon and the space around it.
bool StrictScan::name(json_object* known) {
    char const* const start = at_;
    if (next() != '"') {
        return fail("a member name in double quotes expected");
    }
    if (!string() || (known != nullptr && !isNew(start, known))) {
        return false;
    }
    skipSpace();
    if (!take(':')) {
        return fail("':' expected");
    }
    skipSpace();
    return true;
}

// The name begins at `quoted` and has just been read. Names are compared as json-c reads them: "a"
// is "\u0061".
bool StrictScan::isNew(char const* quoted, json_object* known) {
    json_tokener* const tokener = json_tokener_new();
    if (tokener == nullptr) {
        return fail(nullptr);
    }
    JsonRef const name(json_tokener_parse_ex(tokener, quoted, static_cast<int>(at_ - quoted)));
    json_tokener_free(tokener);
    char const* const key = json_object_get_string(name.get());
    if (key != nullptr && json_object_object_get_ex(known, key, nullptr) != 0) {
        return failAt(quoted, "the object has this member already");
    }
    return (key != nullptr && json_object_object_add(known, key, nullptr) == 0) || fail(nullptr);
}

bool StrictScan::string() {
    ++at_;
    while (at_ < end_) {
        unsigned char const c = static_cast<unsigned char>(*at_);
        if (c == '"') {
            ++at_;
            return true;
        }
        if (c == '\\' ? !escape() : !character(c)) {
            return false;
        }
    }
    return fail("the string does not end");
}

// ASCII, which most are, is not worth a call.
bool StrictScan::character(unsigned char first) {
    if (first < ' ') {
        return fail("a control character in a string");
    }
    size_t const length = first < 0x80 ? 1 : characterLength(at_, end_);
    at_ += length;
    assert(at_ <= end_);
    return length > 0 || fail("not UTF-8");
}

// A surrogate counts only as the first or second half of a pair.
bool StrictScan::escape() {
    char const* const start = at_++;
    if (!take('u')) {
        if (next() == '\0' || strchr("\"\\/bfnrt", next()) == nullptr) {
            return failAt(start, "no such escape");
        }
        ++at_;
        return true;
    }
    unsigned int unit = 0;
    unsigned int low = 0;
    if (!codeUnit(unit)) {
        return failAt(start, "four hexadecimal digits expected after \\u");
    }
    if (unit == 0) {
        return failAt(start, "the character 0 in a string");
    }
    bool const isPair =
        isHighSurrogate(unit) && take('\\') && take('u') && codeUnit(low) && isLowSurrogate(low);
    bool const isHalf = isHighSurrogate(unit) || isLowSurrogate(unit);
    return !isHalf || isPair || failAt(start, "half of a surrogate pair");
}

bool StrictScan::codeUnit(unsigned int& unit) {
    for (int i = 0; i < 4; ++i, ++at_) {
        unsigned int const c = static_cast<unsigned char>(next());
        unsigned int const letter = (c | 0x20U) - 'a';
        if (c - '0' > 9 && letter > 5) {
            return false;
        }
        unit = unit * 16 + (c - '0' > 9 ? letter + 10 : c - '0');
    }
    return true;
}

// The last form that a value can have, so that what is not a value at all is reported here.
bool StrictScan::number() {
    char const* const start = at_;
    bool const isNegative = take('-');
    if (!take('0') && !digits()) {
        return fail(isNegative ? "a digit expected" : "a value expected");
    }
    bool isComplete = !take('.') || digits();
    if (isComplete && (take('e') || take('E'))) {
        if (!take('+')) {
            take('-');
        }
        isComplete = digits();
    }
    if (!isComplete) {
        return fail("a digit expected");
    }
    return isInRange(start, at_) || failAt(start, "the number is too large");
}

bool StrictScan::digits() {
    char const* const start = at_;
    while (next() >= '0' && next() <= '9') {
        ++at_;
    }
    return at_ > start;
}

bool StrictScan::word(std::string_view wanted) {
    if (static_cast<size_t>(end_ - at_) < wanted.size() ||
        memcmp(at_, wanted.data(), wanted.size()) != 0) {
        return fail("a value expected");
    }
    at_ += wanted.size();
    return true;
}

}  // namespace vobiutils
