// Writes a fault for the caller: its path, keyword and message.
#include "jsonschema/Fault.h"

#include "jsonschema/Json.h"
#include "jsonschema/Text.h"

namespace jsonschema {

namespace {

char const* const NO_KEYWORD = "schema";

// A part of a JSON pointer, with "~" and "/" escaped; false when it does not fit.
bool addToken(Text& pointer, std::string_view token) {
    char escaped[sizeof json_schema_fault::schema_path];
    Text text(escaped);
    while (!token.empty()) {
        bool const isSpecial = token[0] == '~' || token[0] == '/';
        std::string_view const part =
            isSpecial ? token.substr(0, 1) : token.substr(0, token.find_first_of("~/"));
        text.add(!isSpecial ? part : part == "~" ? "~0" : "~1");
        token.remove_prefix(part.size());
    }
    return pointer.addStep("/", escaped);
}

// Adds the way from the document to a place; false when it does not fit.
bool addPointer(Text& pointer, Location const& at) {
    if (at.parent != nullptr && !addPointer(pointer, at.parent->location)) {
        return false;
    }
    if (at.keyword == nullptr) {
        return at.name == nullptr || pointer.addStep("", at.name);
    }
    if (!addToken(pointer, at.keyword)) {
        return false;
    }
    if (at.name != nullptr) {
        return addToken(pointer, at.name);
    }
    char digits[12];
    Text(digits).add(static_cast<size_t>(at.index));
    return at.index < 0 || pointer.addStep("/", digits);
}

// Adds the step to a member or element, and returns its value.
json_object* addStep(Text& path, json_object* container, unsigned int number, bool isFirst,
                     bool& fits) {
    if (is(container, json_type_array)) {
        char index[16];
        Text(index).add("[").add(size_t{number}).add("]");
        fits = fits && path.addStep(isFirst ? "" : ".", index);
        return elementOf(container, number);
    }
    lh_entry* member = firstMember(container);
    for (; number > 0; --number) {
        member = lh_entry_next(member);
    }
    fits = fits && path.addStep(isFirst ? "" : ".", nameOf(member));
    return valueOf(member);
}

}  // namespace

void describe(Finding const& finding, json_object* instance, json_schema_fault& fault) {
    if (finding.isEmpty()) {
        describe("could not be checked within the limits", fault);
        return;
    }
    Text path(fault.path);
    json_object* value = instance;
    bool fits = true;
    for (unsigned int const& number : finding) {
        value = addStep(path, value, number, &number == finding.begin(), fits);
    }
    Keyword const& cause = *finding.cause().keyword;
    Location at = finding.schema().location;
    if (&cause != &NEVER) {
        at = {&finding.schema(), cause.name};
    }
    Text(fault.keyword).add(at.keyword != nullptr ? at.keyword : NO_KEYWORD);
    Text schemaPath(fault.schema_path);
    addPointer(schemaPath, at);
    Text message(fault.message);
    message.add(finding.isOfName() ? "its name " : "");
    if (finding.isUndecided() || cause.describe == nullptr) {
        message.add("could not be checked within the limits");
        return;
    }
    cause.describe(finding.cause(), value, message);
}

void describe(Malformation const& malformation, bool isUndecided, json_schema_fault& fault) {
    Location const& at = malformation.at;
    describe("", fault);
    Text(fault.keyword).add(at.keyword != nullptr ? at.keyword : NO_KEYWORD);
    Text schemaPath(fault.schema_path);
    addPointer(schemaPath, at);
    Text message(fault.message);
    message.add(isUndecided ? "the schema could not be read within the limits"
                            : "the schema is malformed");
    if (fault.schema_path[0] != '\0') {
        message.add(" at ").add(fault.schema_path);
    }
    if (!isUndecided && malformation.expected != nullptr) {
        message.add(": must be ").add(malformation.expected);
    }
}

void describe(char const* message, json_schema_fault& fault) {
    Text(fault.path).add("");
    Text(fault.keyword).add(NO_KEYWORD);
    Text(fault.message).add(message);
    Text(fault.schema_path).add("");
}

}  // namespace jsonschema
