// The parsed schema of a file, for one validation.
#pragma once

#include <json-c/json.h>
#include <stddef.h>
#include <sys/stat.h>

#include "jsondata/FileCache.h"
#include "jsondata/JsonRef.h"
#include "jsondata/Shared.h"

namespace vobiutils {

// The largest file whose schema is kept. A usual one has 1 to 4 KB.
size_t const LARGEST_KEPT_SCHEMA = 32 << 10;

// What was made of schema files: parsed here, and compiled in SharedSchema.cpp.
extern FileCache schemas;

struct ParsedSchema;

// The value is kept for later validations, as long as the file is the same. A validator may write
// to it, as json-c does to a value that it prints: so it serves one validation at a time, and
// another that comes meanwhile parses the file for itself.
class SchemaFile {
  public:
    // `status` is that of the file.
    SchemaFile(char const* name, struct stat const& status);
    ~SchemaFile();
    SchemaFile(SchemaFile const&) = delete;
    SchemaFile& operator=(SchemaFile const&) = delete;

    // Valid as long as this object. Null if the file cannot be read, is not JSON, or is JSON null.
    json_object* get() const;

  private:
    Shared<ParsedSchema> kept_;  // used by this object alone
    JsonRef own_;
};

// Drops the schemas that are kept, and closes their files.
void forgetSchemas();

}  // namespace vobiutils
