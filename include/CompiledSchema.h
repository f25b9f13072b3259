/// \file
/// A JSON Schema that is made ready once, and then says of any number of values whether they are
/// valid, and if not, where and why.
///
/// \code{.cpp}
/// CompiledSchema const rule("./data/network/NETWORK_LAN_UPDATE_REQ_SCHEMA.ldb");
/// CompiledSchema::Fault fault;
/// if (!rule.accepts(request.jobj, &fault)) {
///     return refuse(fault.path, fault.message);  // "rules.[2].port", "must be at most 65535"
/// }
/// \endcode
///
/// The schema is checked as a whole when it is compiled. One that is missing, unreadable or
/// malformed accepts nothing: to refuse is the answer to everything that cannot be decided, also
/// within the limits of the validator or when out of memory.
///
/// Schemas of files are shared. Up to 16 of them, from files of at most 32 KB, are kept compiled
/// until their files change, and their files open; see LocalDbSnapshot::forget.
///
/// A validator that takes the place of the library's own may lack what compiling needs. The schema
/// is then kept as it is, and copied for each check; a malformed one is not noticed before; and a
/// fault has no path, because all that is known is that the value is not valid.
///
/// Threads: a schema never changes. Any number of threads may use one at once, each for a value of
/// its own; only a schema that is being assigned to belongs to one thread. Nothing here throws.
#ifndef VOBIUTILS_COMPILEDSCHEMA_H
#define VOBIUTILS_COMPILEDSCHEMA_H

#include <json-c/json.h>

#pragma GCC visibility push(default)

namespace vobiutils {
struct __attribute__((visibility("hidden"))) SharedSchema;
}

/// \copydoc CompiledSchema.h
class CompiledSchema {
  public:
    /// Where and why a value, or the schema itself, was refused. Each string ends with a NUL, is
    /// valid UTF-8, and is cut where it does not fit.
    struct Fault {
        char path[256];        ///< of the value: "rules.[2].port"; "" for the whole value
        char keyword[32];      ///< that refused it: "maximum"; "schema" for none in particular
        char message[160];     ///< for a user: "must be at most 65535"; never contains the value
        char schemaPath[256];  ///< of the keyword: a JSON pointer into the schema
    };

    /// Compiles the schema in a file, given by its whole name, or shares it with those who have
    /// compiled it before, if the file is still the same. A null name names no file.
    explicit CompiledSchema(char const* file);

    /// Compiles a schema, which stays the caller's and may change or go afterwards.
    explicit CompiledSchema(json_object* document);

    CompiledSchema(CompiledSchema const& other);             ///< shares the schema
    CompiledSchema& operator=(CompiledSchema const& other);  ///< shares the schema
    ~CompiledSchema();  ///< releases the schema if no other object has it and it is not kept

    /// Whether there is a schema to check values against.
    explicit operator bool() const;

    /// Why there is none; four empty strings if there is one. Valid as long as this object.
    Fault const& fault() const;

    /// Whether a value, null for JSON null, satisfies the schema. If not, `fault`, unless null, is
    /// the first one found: a container comes before its members, these in the order of the
    /// document, and what concerns one value in the order of the schema. Where no alternative of an
    /// "anyOf" or "oneOf" fits, it is that of the one that got furthest. Without a schema it is
    /// that of the schema. The value stays the caller's.
    bool accepts(json_object* value, Fault* fault = nullptr) const;

  private:
    vobiutils::SharedSchema* schema_;  // null when out of memory
};

#pragma GCC visibility pop

#endif
