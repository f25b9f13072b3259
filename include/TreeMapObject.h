/// \file
/// The handle through which programs hold a JSON document, or a node inside one, and read, change
/// and search it.
///
/// Paths are those of JsonData.h.
///
/// Ownership: a handle whose `jobj_parent` is null owns one json-c reference on its node and
/// releases it when deleted. A handle whose `jobj_parent` is set borrows a node of another handle's
/// document and must not outlive it; nothing detects one that does. Every handle returned is new,
/// and the caller deletes it; std::unique_ptr<TreeMapObject> does that. Handles are not copied.
///
/// Nulls: a null path never names anything (operations report it as their failure), except where
/// null is documented to mean the whole value. A handle without a value (`jobj` null) has no members.
///
/// A value must not be stored inside itself.
///
/// Limits: recursion is as deep as the document (find, and json-c's writing, copying and
/// releasing): 128 KiB of stack are enough for 256 levels; documents nested deeper than that are
/// the caller's responsibility. Memory: allocating a returned handle may throw std::bad_alloc;
/// nothing else throws.
///
/// Threads: a document, with every handle on it, belongs to one thread at a time, for reading too.
/// Different documents may be used by any threads at once.
#ifndef VOBIUTILS_TREEMAPOBJECT_H
#define VOBIUTILS_TREEMAPOBJECT_H

#include <json-c/json.h>
#include <stdint.h>

#include <list>

#pragma GCC visibility push(default)

/// \copydoc TreeMapObject.h
class TreeMapObject {
  public:
    json_object* jobj;         ///< the node; may be null
    char key_obj[32];          ///< its name in its parent, where an operation has set it: a member
                               ///< name or "[n]"; not terminated when the name has 32 characters
    json_object* jobj_parent;  ///< the container of a borrowed node; null when the node is owned
    int error;                 ///< 1 when no file name could be formed for the node, else 0

    /// No value.
    TreeMapObject();
    /// A new empty array (true) or object (false).
    explicit TreeMapObject(bool array);
    /// The value parsed from `text`; none when it is null or does not begin with JSON.
    explicit TreeMapObject(char const* text);
    /// Takes over one reference that the caller holds on `node`.
    explicit TreeMapObject(json_object* node);
    /// The message file of an API type and a communication type (see LocalDbCtrl.h): its value, or
    /// a new empty object when the file is missing or not JSON. For a pair without a message
    /// `error` is 1 and there is no value.
    TreeMapObject(unsigned int apiType, unsigned int commType);

    /// Releases the node when the handle owns it.
    ~TreeMapObject();

    /// \cond
    TreeMapObject(TreeMapObject const&) = delete;
    TreeMapObject& operator=(TreeMapObject const&) = delete;
    /// \endcond

    /// \name Typed values
    /// T is one of the types named at each template; no other compiles.
    /// \{

    /// Stores `value` at `path`, by the rules of JsonData::setJObj; a failure is logged. An
    /// unsigned int is stored as a 32-bit signed one (4294967295 as -1). A string is copied; a null
    /// one changes nothing. T: int, unsigned int, int64_t, char const*, double, bool.
    template <typename T>
    void set(char const* path, T value);

    /// The value at `path`, or 0, 0.0, false or null when there is none. A value of another type is
    /// converted by json-c's rules, with a warning (an int or double is a number to both). A string
    /// belongs to the document and is valid until its value is changed or released. T: int,
    /// int64_t, bool, double, char const*.
    template <typename T>
    T get(char const* path);

    /// Like get, but true only when `path` names a value of the type (an int or double serves both
    /// numbers). On failure `out` is left as it was, except that a string becomes null.
    /// T: int, int64_t, bool, double, char const*.
    template <typename T>
    bool get_ex(char const* path, T& out);

    /// \}
    /// \name Nodes
    /// \{

    /// Removes the member at `path`. Array elements, and members that are JSON null, stay.
    void del(char const* path);

    /// Stores the node of `obj` at `path`; the document takes a reference of its own, `obj` keeps
    /// its. A null `obj` changes nothing; one without a value stores JSON null. The last token of
    /// the path is written into this handle's own key_obj, deliberately. A handle that borrows an
    /// array then no longer has the array's name in its parent there, which delArrayItem and
    /// clearArrayItems use.
    void set(char const* path, TreeMapObject* obj);

    /// A new handle that borrows the node at `path`; null when there is none. For the empty path
    /// the new handle owns another reference on the node.
    TreeMapObject* get(char const* path);

    /// Prints the node at `path` on standard error; see JsonData::dumpObject.
    int dump(char const* path);

    /// Number of elements; -1 when the node is not an array.
    int len();

    /// A new handle that owns a deep copy of the node at `path` (of the whole value for a null
    /// path); null when there is none or it cannot be copied, see JsonData::cloneObject.
    TreeMapObject* clone(char const* path);

    /// \}
    /// \name Whatever a path names
    /// These take the paths of JsonData::isPath, and refuse any other. They log nothing, except
    /// that merge logs a value that cannot be stored.
    ///
    /// \code{.cpp}
    /// switch (document->presence(path)) {
    ///     case TreeMapObject::PRESENT: return document->merge(path, body.get());
    ///     case TreeMapObject::VACANT: return refuse(404);
    ///     case TreeMapObject::IMPOSSIBLE: return refuse(409);
    /// }
    /// \endcode
    /// \{

    /// Whether there is a value at a path.
    enum Presence {
        PRESENT,     ///< there is, and it may be JSON null; the empty path always is
        VACANT,      ///< there is not, but set or merge would store one exactly there
        IMPOSSIBLE,  ///< not well-formed, an index beyond the end, or a step into a plain value
    };
    /// Tells whether there is a value at `path`, and if not, whether one could be stored there.
    Presence presence(char const* path);

    /// Removes the member or the element at `path`, JSON null included. True when there was one.
    /// Later elements move up. Handles on the removed value are stale, handles on the array are
    /// not. The document itself cannot be removed.
    bool remove(char const* path);

    /// Removes every member called `name`, of any type, at any depth, whether a path can name it or
    /// not. How many were removed; 0 for a null name.
    int removeAll(char const* name);

    /// Merges `patch` into the value at `path`, as RFC 7396 says: members of the patch replace
    /// those of the value, object by object; a member that is null removes one. A patch that is not
    /// an object replaces the value. What is missing on the way is created. The document shares
    /// the arrays and plain values of the patch, as by set. 0 when merged; 2 for a path that is
    /// IMPOSSIBLE, a null patch, when out of memory (a part may then be merged), and when the
    /// handle borrows its node and the empty path would have to replace that. The patch must not be
    /// a part of the document.
    int merge(char const* path, TreeMapObject* patch);

    /// Searches the node and everything inside it for members called `name` whose value is what
    /// `text` says, as it comes from a form or a URL: the string `text`, or the number, Boolean or
    /// null that `text` is in JSON ("8080", "true"). For a null text, members of any value. A new
    /// handle on an array of their paths from this node, in document order, deleted by the caller;
    /// empty when there is none. Null when out of memory. What no path can name is not searched.
    ///
    /// \code{.cpp}
    /// std::unique_ptr<TreeMapObject> const found(document->findPaths("port", "8080"));
    /// found->get<char const*>("[0]");  // "rules.[3].port"; its object: JsonData::parentPath
    /// \endcode
    TreeMapObject* findPaths(char const* name, char const* text);

    /// \}
    /// \name Arrays
    /// All of these fail, with -1 or null, when the node is not an array.
    /// \{

    /// A new handle that borrows element `index`, without a value for JSON null; null past the end.
    TreeMapObject* at(unsigned int index);

    /// Replaces element `index` by the node of `item`, or appends it when `index` is past the end.
    /// The index that it now has; -1 for a null `item` or one without a value. The array takes
    /// a reference of its own; `item` keeps its, and receives "[n]" in its key_obj.
    int setArrayItem(unsigned int index, TreeMapObject* item);

    /// Appends the node of `item`, as setArrayItem does. The index of the new element, or -1.
    int addArrayItem(TreeMapObject* item);

    /// Appends a value. The index of the new element, or -1, also for a null string.
    /// T: int, bool, double, char const*.
    template <typename T>
    int addArrayItem(T value);

    /// Removes element `index`; the new length, or -1. The array is replaced by a new one, which a
    /// handle that borrows stores in its parent under key_obj, so that must be a member name of at
    /// most 32 characters. An array that is itself an element of an array is refused, with -1.
    /// Handles on the elements, and other handles on the array, are stale afterwards.
    int delArrayItem(unsigned int index);

    /// Removes every element: 0, or -1. Replaces the array as delArrayItem does.
    int clearArrayItems();

    /// \}
    /// \name Search by value
    /// \{

    /// Searches the whole document for objects with a primitive member `key` equal to `value`.
    /// For char const* the result holds a new handle on each such object, in document order, each
    /// with a reference of its own; the caller deletes them. For the other types the result is
    /// always empty, deliberately: a search that finds something logs an error and leaks the
    /// handles.
    /// A null or empty key gives an empty list. T: int, unsigned int, double, bool, char const*.
    template <typename T>
    std::list<TreeMapObject*> find(char const* key, T value);

    /// One half of find: searches an object and everything inside it, appends the hits to `result`
    /// and returns their number; 0 for a null argument or a value of another type. `value` stays
    /// the caller's.
    int findInObject(std::list<TreeMapObject*>& result, char const* key, json_object* value,
                     json_object* object);

    /// The other half: the same for the elements of an array and everything inside them.
    int findInArray(std::list<TreeMapObject*>& result, char const* key, json_object* value,
                    json_object* array);
    /// \}

  private:
    // False, but only once a template is used with a type it has no body for.
    template <typename T>
    struct Supported {
        static bool const value = false;
    };
};

/// \cond

template <typename T>
void TreeMapObject::set(char const*, T) {
    static_assert(Supported<T>::value,
                  "set<T>: T is one of int, unsigned int, int64_t, char const*, double, bool");
}
template <>
void TreeMapObject::set<int>(char const* path, int value);
template <>
void TreeMapObject::set<unsigned int>(char const* path, unsigned int value);
template <>
void TreeMapObject::set<int64_t>(char const* path, int64_t value);
template <>
void TreeMapObject::set<char const*>(char const* path, char const* value);
template <>
void TreeMapObject::set<double>(char const* path, double value);
template <>
void TreeMapObject::set<bool>(char const* path, bool value);

template <typename T>
T TreeMapObject::get(char const*) {
    static_assert(Supported<T>::value,
                  "get<T>: T is one of int, int64_t, bool, double, char const*");
    return T();
}
template <>
int TreeMapObject::get<int>(char const* path);
template <>
int64_t TreeMapObject::get<int64_t>(char const* path);
template <>
bool TreeMapObject::get<bool>(char const* path);
template <>
double TreeMapObject::get<double>(char const* path);
template <>
char const* TreeMapObject::get<char const*>(char const* path);

template <typename T>
bool TreeMapObject::get_ex(char const*, T&) {
    static_assert(Supported<T>::value,
                  "get_ex<T>: T is one of int, int64_t, bool, double, char const*");
    return false;
}
template <>
bool TreeMapObject::get_ex<int>(char const* path, int& out);
template <>
bool TreeMapObject::get_ex<int64_t>(char const* path, int64_t& out);
template <>
bool TreeMapObject::get_ex<bool>(char const* path, bool& out);
template <>
bool TreeMapObject::get_ex<double>(char const* path, double& out);
template <>
bool TreeMapObject::get_ex<char const*>(char const* path, char const*& out);

template <typename T>
int TreeMapObject::addArrayItem(T) {
    static_assert(Supported<T>::value,
                  "addArrayItem<T>: T is one of int, bool, double, char const*");
    return -1;
}
template <>
int TreeMapObject::addArrayItem<int>(int value);
template <>
int TreeMapObject::addArrayItem<bool>(bool value);
template <>
int TreeMapObject::addArrayItem<double>(double value);
template <>
int TreeMapObject::addArrayItem<char const*>(char const* value);

template <typename T>
std::list<TreeMapObject*> TreeMapObject::find(char const*, T) {
    static_assert(Supported<T>::value,
                  "find<T>: T is one of int, unsigned int, double, bool, char const*");
    return std::list<TreeMapObject*>();
}
template <>
std::list<TreeMapObject*> TreeMapObject::find<int>(char const* key, int value);
template <>
std::list<TreeMapObject*> TreeMapObject::find<unsigned int>(char const* key, unsigned int value);
template <>
std::list<TreeMapObject*> TreeMapObject::find<double>(char const* key, double value);
template <>
std::list<TreeMapObject*> TreeMapObject::find<bool>(char const* key, bool value);
template <>
std::list<TreeMapObject*> TreeMapObject::find<char const*>(char const* key, char const* value);

/// \endcond

#pragma GCC visibility pop

#endif
