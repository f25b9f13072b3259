// Reads a whole JSON file into a json-c value.
#include "jsondata/files/JsonFile.h"

#include "jsondata/files/FileBytes.h"
#include "jsondata/files/FileDescriptor.h"

namespace vobiutils {

json_object* readJsonFile(char const* name) {
    FileDescriptor file;
    FileBytes bytes;
    bool const isRead = name != nullptr && file.open(name, O_RDONLY) && bytes.append(file) == 0;
    return isRead ? bytes.parse() : nullptr;
}

}  // namespace vobiutils
