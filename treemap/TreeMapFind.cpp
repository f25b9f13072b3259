// Search by value: walks over a document, and collects a handle on each object that matches.
#include <string.h>

#include "JsonData.h"
#include "TreeMapObject.h"
#include "jsondata/JsonRef.h"
#include "logging/Log.h"
#include "treemap/Hits.h"
#include "treemap/ValueTraits.h"

using namespace vobiutils;

namespace {

// One search: depth-first, in document order.
class Search {
  public:
    Search(Hits& hits, char const* key, json_object* value)
        : hits_(hits), key_(key), value_(value), type_(json_object_get_type(value)) {}

    // Searches an object or array and everything inside it. The number of hits.
    int in(json_object* container);

    bool isComplete() const { return complete_; }  // false when out of memory

  private:
    int inObject(json_object* object);
    int inArray(json_object* array);
    bool matches(char const* name, json_object* member);
    bool add(json_object* object);

    Hits& hits_;
    char const* const key_;
    json_object* const value_;
    json_type const type_;
    bool complete_ = true;
};

bool isContainer(json_object* value) {
    json_type const type = json_object_get_type(value);
    return type == json_type_object || type == json_type_array;
}

int Search::in(json_object* container) {
    return json_object_is_type(container, json_type_object) ? inObject(container)
                                                            : inArray(container);
}

// An object is a hit at most once. Members that are containers are searched, never compared.
int Search::inObject(json_object* object) {
    int count = 0;
    bool matched = false;
    json_object_iter member = {};
    json_object_object_foreachC(object, member) {
        if (isContainer(member.val)) {
            count += in(member.val);
        } else if (!matched && matches(member.key, member.val)) {
            matched = true;
            count += add(object) ? 1 : 0;
        }
    }
    return count;
}

int Search::inArray(json_object* array) {
    int count = 0;
    size_t const length = json_object_array_length(array);
    for (size_t i = 0; i < length; ++i) {
        json_object* const element = json_object_array_get_idx(array, i);
        if (element == nullptr) {
            UTIL_WARN("Found null object in the array\n");
        } else if (isContainer(element)) {
            count += in(element);
        } else {
            UTIL_WARN("%s: array items have primary type", "findInArray");  // no line end
        }
    }
    return count;
}

bool Search::matches(char const* name, json_object* member) {
    return strcmp(name, key_) == 0 &&
           JsonData::compareObjVal(value_, type_, member, json_object_get_type(member));
}

bool Search::add(json_object* object) {
    bool const added = append(hits_, object);
    complete_ = complete_ && added;
    return added;
}

void deleteAll(Hits& hits) {
    for (TreeMapObject* handle : hits) {
        delete handle;
    }
    hits.clear();
}

// Searches a whole document. The number of hits; `primitiveCount` for a document that is a
// primitive value.
int searchDocument(Search& search, json_object* document, int primitiveCount) {
    if (!isContainer(document)) {
        UTIL_ERROR("parent object is not object neither array\n");
        return primitiveCount;
    }
    return search.in(document);
}

// intended: a search for a string fails when it finds nothing. A search for any other value fails
// when it finds something, so that it never returns a hit. Takes over the reference on `value`.
Hits findNode(json_object* document, char const* key, json_object* value, bool isStringSearch) {
    JsonRef const wanted(value);
    Hits hits;
    if (key == nullptr || *key == '\0') {
        UTIL_ERROR("Key is null or empty\n");
        return hits;
    }
    int count = 0;
    if (wanted && document != nullptr) {
        Search search(hits, key, wanted.get());
        count = searchDocument(search, document, isStringSearch ? 0 : 1);
        if (!search.isComplete()) {
            deleteAll(hits);
            count = isStringSearch ? 0 : 1;
        }
    }
    if (isStringSearch ? count == 0 : count > 0) {
        UTIL_ERROR("Some error happened, cannot return result\n");
        hits.clear();  // intended leak: the handles
    }
    return hits;
}

template <typename T>
Hits findValue(json_object* document, char const* key, T value) {
    return findNode(document, key, ValueTraits<T>::make(value), isCString<T>);
}

bool areGiven(char const* function, char const* key, json_object* value, json_object* container) {
    if (key == nullptr || value == nullptr || container == nullptr) {
        UTIL_ERROR("%s: NULL arguments is not accepted\n", function);
        return false;
    }
    return true;
}

int findIn(Hits& hits, char const* key, json_object* value, json_object* container,
           json_type type) {
    if (!json_object_is_type(container, type)) {
        return 0;
    }
    return Search(hits, key, value).in(container);
}

}  // namespace

template <>
std::list<TreeMapObject*> TreeMapObject::find<int>(char const* key, int value) {
    return findValue(jobj, key, value);
}
template <>
std::list<TreeMapObject*> TreeMapObject::find<unsigned int>(char const* key, unsigned int value) {
    return findValue(jobj, key, value);
}
template <>
std::list<TreeMapObject*> TreeMapObject::find<double>(char const* key, double value) {
    return findValue(jobj, key, value);
}
template <>
std::list<TreeMapObject*> TreeMapObject::find<bool>(char const* key, bool value) {
    return findValue(jobj, key, value);
}
template <>
std::list<TreeMapObject*> TreeMapObject::find<char const*>(char const* key, char const* value) {
    return findValue(jobj, key, value);
}

int TreeMapObject::findInObject(std::list<TreeMapObject*>& result, char const* key,
                                json_object* value, json_object* object) {
    return areGiven("findInObject", key, value, object)
               ? findIn(result, key, value, object, json_type_object)
               : 0;
}

int TreeMapObject::findInArray(std::list<TreeMapObject*>& result, char const* key,
                               json_object* value, json_object* array) {
    return areGiven("findInArray", key, value, array)
               ? findIn(result, key, value, array, json_type_array)
               : 0;
}
