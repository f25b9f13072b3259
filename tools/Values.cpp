// Reads and changes values, and checks databases.
#include <CompiledSchema.h>
#include <JsonData.h>
#include <LocalDbCtrl.h>
#include <string.h>
#include <sys/stat.h>

#include <algorithm>
#include <new>
#include <vector>

#include "Tool.h"

namespace vobidb {

namespace {

// A bare string is printed as it is, bytes that steer a terminal included.
void printValue(Options const& options, json_object* value) {
    bool const isBare = options.isBare && json_object_is_type(value, json_type_string);
    print(isBare ? std::string(json_object_get_string(value),
                               static_cast<size_t>(json_object_get_string_len(value)))
                 : pagesOf(value));
}

// A VALUE as it is on the command line.
Node valueOf(Options const& options, char const* word) {
    if (!options.isString) {
        return parsed(word, "VALUE (without the option -s)", FAILED);
    }
    TreeMapObject const string(json_object_new_string(word));
    return parsed(lineOf(string.jobj), "VALUE",
                  FAILED);  // a string of bytes that are not UTF-8 is not
}

Result store(TreeMapObject& document, std::string const& path, TreeMapObject const& value) {
    if (document.presence(path.c_str()) == TreeMapObject::IMPOSSIBLE) {
        return complain(NOT_FOUND, "no value can be stored at \"%s\"", path.c_str());
    }
    return JsonData::setJObj(document.jobj, path.c_str(), value.jobj) == 0
               ? DONE
               : complain(FAILED, "out of memory");
}

char const* partOf(char const* path) {
    if (*pathOf(path) == '\0') {
        throw complain(FAILED, "the whole database is not changed at once: name a path in it");
    }
    return path;
}

// A link to a schema that is missing counts as a schema, which accepts nothing.
std::string schemaOf(unsigned int type) {
    std::string file = LocalDbCtrl::getFileName(type);
    file.replace(file.rfind('.'), std::string::npos, "_SCHEMA.ldb");
    struct stat status;
    return lstat(file.c_str(), &status) == 0 ? file : "";
}

Result checkOne(unsigned int type) {
    Node const document = copyOf(saved(type));
    std::string const schema = schemaOf(type);
    CompiledSchema::Fault fault;
    if (schema.empty() || CompiledSchema(schema.c_str()).accepts(document->jobj, &fault)) {
        return DONE;
    }
    print(textOf(type, fault));
    return NOT_VALID;
}

}  // namespace

Result get(Options const& options, char** words, int count) {
    unsigned int const type = typeOf(words[0]);
    char const* const path = pathOf(count > 1 ? words[1] : "");
    Node const document = copyOf(saved(type));
    if (document->presence(path) != TreeMapObject::PRESENT) {
        return complain(NOT_FOUND, "%s: nothing at \"%s\"", words[0], path);
    }
    printValue(options, JsonData::getJObj(document->jobj, path));
    return DONE;
}

Result set(Options const& options, char** words, int count) {
    if (count % 2 == 0) {
        return complain(FAILED, "a VALUE is missing");
    }
    unsigned int const type = typeOf(words[0]);
    std::vector<Node> values;
    for (int i = 1; i < count; i += 2) {
        partOf(words[i]);
        values.push_back(valueOf(options, words[i + 1]));
    }
    return changeDatabase(type, options, [&](TreeMapObject& document) {
        Result result = DONE;
        for (size_t i = 0; i < values.size() && result == DONE; ++i) {
            result = store(document, words[1 + 2 * i], *values[i]);
        }
        return result;
    });
}

Result add(Options const& options, char** words, int) {
    unsigned int const type = typeOf(words[0]);
    std::string const path = pathOf(words[1]);
    Node const value = valueOf(options, words[2]);
    return changeDatabase(type, options, [&](TreeMapObject& document) {
        json_object* const array = JsonData::getJObj(document.jobj, path.c_str());
        if (!json_object_is_type(array, json_type_array)) {
            return complain(NOT_FOUND, "%s: no array at \"%s\"", words[0], path.c_str());
        }
        std::string const end = "[" + std::to_string(json_object_array_length(array)) + "]";
        return store(document, path.empty() ? end : path + "." + end, *value);
    });
}

Result del(Options const& options, char** words, int) {
    char const* const path = partOf(words[1]);
    return changeDatabase(typeOf(words[0]), options, [&](TreeMapObject& document) {
        return document.remove(path) ? DONE
                                     : complain(NOT_FOUND, "%s: nothing at \"%s\"", words[0], path);
    });
}

Result find(Options const&, char** words, int count) {
    Node const document = copyOf(saved(typeOf(words[0])));
    Node const paths(document->findPaths(words[1], count > 2 ? words[2] : nullptr));
    if (!paths) {
        throw std::bad_alloc();
    }
    for (int i = 0; i < paths->len(); ++i) {
        print(printable(json_object_get_string(
            json_object_array_get_idx(paths->jobj, static_cast<size_t>(i)))));
    }
    return paths->len() > 0 ? DONE : NOT_FOUND;
}

Result check(Options const&, char** words, int count) {
    int worst = DONE;
    for (unsigned int type = 0; type < API_TYPE_COUNT; ++type) {
        bool const isAsked = count == 0 || std::any_of(words, words + count, [type](char const* w) {
                                 return typeOf(w) == type;
                             });
        try {
            worst = std::max<int>(worst, isAsked ? checkOne(type) : DONE);
        } catch (Result result) {  // which has been said
            bool const isMissing = result == NOT_FOUND && count == 0;
            worst = std::max<int>(worst, isMissing ? DONE : result);
        }
    }
    return static_cast<Result>(worst);
}

}  // namespace vobidb
