// A schema made ready for one call: its draft known, every keyword of the right form, its patterns
// compiled, its references resolved. The document is read in place and never changed.
#ifndef JSONSCHEMA_SCHEMA_H
#define JSONSCHEMA_SCHEMA_H

#include <json-c/json.h>

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "jsonschema/Budget.h"
#include "jsonschema/Keyword.h"
#include "jsonschema/Pattern.h"

namespace jsonschema {

class Schema {
  public:
    Schema(json_object* document, Budget& budget);

    // False for a malformed schema, wherever the fault lies in it.
    bool isWellFormed() const { return wellFormed_; }

    int draft() const { return draft_; }

    // The schema a "$ref" stands for; `reference` is the value of that keyword.
    json_object* target(json_object* reference) const { return targets_.at(reference); }
    bool hasReferences() const { return hasReferences_; }

    // The pattern of a text, known by the place where it stands.
    Pattern const& pattern(void const* text) const { return patterns_.at(text); }

  private:
    bool readSchema(json_object* schema, std::string const& base);
    bool readKeyword(Keyword const& keyword, json_object* operand, std::string const& base);
    bool readSchemas(json_object* array, std::string const& base);
    bool readItems(json_object* items, std::string const& base);
    bool readMap(json_object* map, Form form, std::string const& base);
    bool readReference(json_object* reference, std::string const& base);
    bool readPattern(void const* place, std::string_view text);
    std::string const& enterId(json_object* schema, std::string const& base, std::string& own);
    bool readReferences(json_object* document);
    bool resolveReferences();
    json_object* find(std::string const& uri) const;
    bool wasRead(json_object* schema) const;

    struct Reference {
        json_object* text;
        std::string uri;
    };
    struct Identified {
        std::string uri;
        json_object* schema;
    };

    Budget& budget_;
    int draft_;
    bool wellFormed_;
    bool hasReferences_ = false;
    bool identifying_ = false;  // the second reading, for references and what they may lead to
    std::vector<json_object*> read_;
    std::vector<Identified> identified_;
    std::vector<Reference> references_;
    std::unordered_map<json_object*, json_object*> targets_;
    std::unordered_map<void const*, Pattern> patterns_;
};

// The text of a value; empty for one that is no text.
std::string_view textOf(json_object* text);

// The entry of a member, null when there is none, or `object` is no object.
lh_entry* findMember(json_object* object, char const* name);

// The value of a member, null also for JSON null.
json_object* memberOf(json_object* object, char const* name);

}  // namespace jsonschema

#endif
