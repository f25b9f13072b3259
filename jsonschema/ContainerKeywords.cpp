// The keywords for arrays and objects.
#include <string.h>

#include "jsonschema/Equality.h"
#include "jsonschema/Evaluation.h"
#include "jsonschema/Json.h"
#include "jsonschema/KeywordFunctions.h"
#include "jsonschema/NameMap.h"

namespace jsonschema {

namespace keywords {

namespace {

bool isArray(App app) { return app.type == json_type_array; }
bool isObject(App app) { return app.type == json_type_object; }

Place placeOf(App app, size_t index) { return {&app.place, static_cast<unsigned int>(index)}; }

}  // namespace

// Arrays.

bool minItems(App app) { return !isArray(app) || lengthOf(app.instance) >= app.instruction->count; }

bool maxItems(App app) { return !isArray(app) || lengthOf(app.instance) <= app.instruction->count; }

bool uniqueItems(App app) {
    return app.instruction->count == 0 || !isArray(app) ||
           firstRepeated(app.instance, app.evaluation.budget()) == lengthOf(app.instance);
}

namespace {

bool satisfiesAt(App app, size_t index, Node const* schema) {
    return app.evaluation.satisfies(elementOf(app.instance, index), *schema, placeOf(app, index));
}

bool itemsFrom(App app, size_t first) {
    size_t const length = lengthOf(app.instance);
    for (size_t i = first; i < length; ++i) {
        if (!satisfiesAt(app, i, app.instruction->schema)) {
            return false;
        }
    }
    return true;
}

}  // namespace

bool items(App app) {
    if (!isArray(app)) {
        return true;
    }
    if (!app.instruction->isList) {
        return itemsFrom(app, 0);
    }
    for (size_t i = 0; i < app.instruction->count && i < lengthOf(app.instance); ++i) {
        if (!satisfiesAt(app, i, app.instruction->schemas[i])) {
            return false;
        }
    }
    return true;
}

bool additionalItems(App app) {
    Instruction const* const listed = app.instruction->siblings[0];
    return !isArray(app) || listed == nullptr || !listed->isList || itemsFrom(app, listed->count);
}

bool contains(App app) {
    if (!isArray(app)) {
        return true;
    }
    Evaluation::Silence const silence(app.evaluation);
    for (size_t i = 0; i < lengthOf(app.instance) && !app.evaluation.budget().isUndecided(); ++i) {
        if (satisfiesAt(app, i, app.instruction->schema)) {
            return true;
        }
    }
    return false;
}

// Objects.

bool minProperties(App app) {
    return !isObject(app) || memberCount(app.instance) >= app.instruction->count;
}

bool maxProperties(App app) {
    return !isObject(app) || memberCount(app.instance) <= app.instruction->count;
}

size_t firstMissing(Instruction const& names, json_object* object, Budget& budget) {
    for (size_t i = 0; i < names.count; ++i) {
        std::string_view const name = names.names[i];
        // json-c names end at NUL, so a name containing one matches no member
        if (!budget.spend(1 + name.size() / 16) || strlen(name.data()) != name.size() ||
            findMember(object, name.data()) == nullptr) {
            return i;
        }
    }
    return names.count;
}

bool required(App app) {
    Instruction const& names = *app.instruction;
    return !isObject(app) ||
           firstMissing(names, app.instance, app.evaluation.budget()) == names.count;
}

namespace {

// Calls `holds` with the name, value and place of every member, until it returns false.
template <typename Holds>
bool everyMember(App app, Holds const& holds) {
    if (!isObject(app)) {
        return true;
    }
    Budget& budget = app.evaluation.budget();
    Place place = placeOf(app, 0);
    for (lh_entry* member = firstMember(app.instance); member != nullptr;
         member = lh_entry_next(member)) {
        std::string_view const name = nameOf(member);
        if (!budget.spend(1 + name.size() / 16) || !holds(name, valueOf(member), place)) {
            return false;
        }
        ++place.number;
    }
    return true;
}

bool isMatch(App app, NameMap::Entry const& entry, std::string_view name) {
    return entry.pattern->matches(name, app.evaluation.matchSpace(), app.evaluation.budget());
}

}  // namespace

namespace {

// With what was merged into "properties": each member is looked up only once.
bool satisfiesMerged(App app) {
    NameMap const& map = *app.instruction->map;
    NameMap::Search search(map);
    Instruction const* const additional = app.instruction->siblings[0];
    Node const* const others =
        additional != nullptr && additional->isMerged ? additional->schema : nullptr;
    size_t required = 0;
    return everyMember(
               app,
               [&](std::string_view name, json_object* value, Place const& place) {
                   NameMap::Entry const* const entry = search.find(name, app.evaluation.budget());
                   required += entry != nullptr && entry->isRequired ? 1 : 0;
                   Node const* const schema = entry != nullptr ? entry->schema : others;
                   return schema == nullptr || app.evaluation.satisfies(value, *schema, place);
               }) &&
           (!isObject(app) || required == map.requiredCount());
}

}  // namespace

bool properties(App app) {
    if (!app.evaluation.findsFaults()) {
        return satisfiesMerged(app);
    }
    return everyMember(app, [&](std::string_view name, json_object* value, Place const& place) {
        NameMap::Entry const* const entry =
            app.instruction->map->find(name, app.evaluation.budget());
        return entry == nullptr || app.evaluation.satisfies(value, *entry->schema, place);
    });
}

bool patternProperties(App app) {
    return everyMember(app, [&](std::string_view name, json_object* value, Place const& place) {
        bool holds = true;
        for (NameMap::Entry const& entry : *app.instruction->map) {
            if (isMatch(app, entry, name)) {
                holds = app.evaluation.satisfies(value, *entry.schema, place) && holds;
            }
            if (!holds && !app.evaluation.goesOn()) {
                return false;
            }
        }
        return holds;
    });
}

namespace {

bool isNamedBeside(App app, std::string_view name) {
    Instruction const* const named = app.instruction->siblings[0];
    Instruction const* const patterns = app.instruction->siblings[1];
    if (named != nullptr && named->map->find(name, app.evaluation.budget()) != nullptr) {
        return true;
    }
    if (patterns != nullptr) {
        for (NameMap::Entry const& entry : *patterns->map) {
            if (isMatch(app, entry, name)) {
                return true;
            }
        }
    }
    return false;
}

}  // namespace

bool additionalProperties(App app) {
    return everyMember(app, [&](std::string_view name, json_object* value, Place const& place) {
        return isNamedBeside(app, name) ||
               app.evaluation.satisfies(value, *app.instruction->schema, place);
    });
}

bool propertyNames(App app) {
    return everyMember(app, [&](std::string_view name, json_object*, Place const& place) {
        json_object* const string = json_object_new_string(name.data());
        if (string == nullptr) {
            app.evaluation.budget().giveUp();
            return false;
        }
        Place const ofName = {place.container, place.number, true};
        bool const holds = app.evaluation.satisfies(string, *app.instruction->schema, ofName);
        json_object_put(string);
        return holds;
    });
}

bool dependencies(App app) {
    bool holds = true;
    everyMember(app, [&](std::string_view name, json_object*, Place const&) {
        NameMap::Entry const* const entry =
            app.instruction->map->find(name, app.evaluation.budget());
        if (entry != nullptr) {
            holds = app.evaluation.satisfies(app.instance, *entry->schema, app.place) && holds;
        }
        return holds || app.evaluation.goesOn();
    });
    return holds && !app.evaluation.budget().isUndecided();
}

}  // namespace keywords

}  // namespace jsonschema
