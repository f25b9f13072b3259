// Strict parsing: StrictScan checks the text, json-c builds the value, and the numbers of values in
// both are compared. If the value has fewer, an object has a member twice, which json-c replaces,
// or memory ran out, which json-c does not always tell.
#include "jsondata/StrictParse.h"

#include <errno.h>
#include <limits.h>

#include "jsondata/JsonChildren.h"
#include "jsondata/StrictScan.h"
#include "treemap/NewHandle.h"

using namespace vobiutils;

namespace {

JsonFault const NO_MEMORY = {0, 0, "out of memory"};

// Columns count characters, lines end at a line feed.
JsonFault faultAt(char const* text, char const* position, char const* reason) {
    JsonFault fault = {1, 1, reason};
    for (; text < position; ++text) {
        bool const beginsCharacter = (*text & 0xc0) != 0x80;
        fault.column = *text == '\n' ? 1 : fault.column + (beginsCharacter ? 1 : 0);
        fault.line += *text == '\n' ? 1 : 0;
    }
    return fault;
}

JsonFault faultOf(StrictScan const& scan, std::string_view text) {
    return scan.reason() != nullptr ? faultAt(text.data(), scan.position(), scan.reason())
                                    : NO_MEMORY;
}

// Parses what StrictScan has accepted. False when json-c says that memory ran out.
bool build(std::string_view text, JsonRef& value) {
    json_tokener* const tokener = json_tokener_new();
    if (tokener == nullptr) {
        return false;
    }
    errno = 0;
    value.reset(json_tokener_parse_ex(tokener, text.data(), static_cast<int>(text.size())));
    if (json_tokener_get_error(tokener) == json_tokener_continue) {
        value.reset(json_tokener_parse_ex(tokener, "", 1));  // the NUL ends a number
    }
    bool const isBuilt = json_tokener_get_error(tokener) == json_tokener_success;
    json_tokener_free(tokener);
    return isBuilt && errno != ENOMEM;
}

size_t countValues(json_object* value) {
    size_t count = 1;
    for (Children children(value); children.next();) {
        count += countValues(children.value());
    }
    return count;
}

}  // namespace

bool vobiutils::parseStrictly(std::string_view text, JsonRef& value, JsonFault& fault) {
    if (text.size() > INT_MAX / 2 - 1024) {  // as StrictScan wants it; json-c counts by an int
        fault = {1, 1, "the text is too long"};
        return false;
    }
    StrictScan scan(text, StrictScan::ANY);
    if (!scan.run()) {
        fault = faultOf(scan, text);
        return false;
    }
    if (build(text, value) && countValues(value.get()) == scan.values()) {
        return true;
    }
    StrictScan names(text, StrictScan::ONCE);
    fault = names.run() ? NO_MEMORY : faultOf(names, text);
    return false;
}

TreeMapObject* JsonData::parse(char const* text, size_t length, JsonFault* fault) {
    JsonRef value(nullptr);
    JsonFault found = NO_MEMORY;
    std::string_view const given = text != nullptr ? std::string_view(text, length) : "";
    TreeMapObject* const handle =
        parseStrictly(given, value, found) ? tryOwningHandle(value.release()) : nullptr;
    if (handle == nullptr && fault != nullptr) {
        *fault = found;
    }
    return handle;
}
