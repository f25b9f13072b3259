/// \file
/// The document of an API type as it was last saved, for reading only.
///
/// \code{.cpp}
/// LocalDbSnapshot wifi(API_WIFI);
/// if (!wifi) {
///     return answerFor(wifi.status());
/// }
/// return wifi.get<int>("radios.[0].channel");
/// \endcode
///
/// A snapshot is what the data file held when the snapshot was made. It does not change, whatever
/// is saved later, and shows nothing that a controller holds unsaved. Snapshots of a type share one
/// parsed document for as long as the file is the same: making one then takes one stat() of the
/// file, reading a value a lookup, copying a snapshot a count. A file that was replaced or changed,
/// by a save, by another process or by hand, is read by the next snapshot. So is one that was
/// changed less than 20 ms ago, or 2 s where times are whole seconds: a second change may leave no
/// trace in them. A change that updates no time, through a mapping in memory, is noticed only
/// within this time.
///
/// Snapshots of several types that are made one after the other may be from before and after a
/// change that was saved as one; take() takes them at the same instant:
///
/// \code{.cpp}
/// unsigned int const types[] = {API_WIFI, API_SECURITY};
/// LocalDbSnapshot parts[2];
/// if (LocalDbSnapshot::take(types, 2, parts)) {
///     compare(parts[0].len("ssids"), parts[1].len("firewall.rules"));
/// }
/// \endcode
///
/// A snapshot needs no controller and no lock. It never waits for a writer, a save or another
/// reader, except in take(); only a data file that is a pipe makes the thread that reads it wait
/// for its writer. When it has to read the file, it first finishes a change of several databases
/// that a kill or a loss of power has interrupted.
///
/// Paths are those of JsonData.h. Nothing here throws.
///
/// Memory: the library keeps one document for each type, and the descriptor of its file, until the
/// next snapshot finds another file, or forget(). On disk, a file that was replaced occupies its
/// space until then. Documents of older files are released with the last snapshot of each.
///
/// Threads: any number of threads may make, copy and destroy snapshots at any time, and read one
/// snapshot at once. Only a snapshot that is being assigned to belongs to one thread.
#ifndef VOBIUTILS_LOCALDBSNAPSHOT_H
#define VOBIUTILS_LOCALDBSNAPSHOT_H

#include <stdint.h>

#include "LocalDbCtrl.h"
#include "TreeMapObject.h"

namespace vobiutils {
struct __attribute__((visibility("hidden"))) SharedDocument;
}

#pragma GCC visibility push(default)

/// \copydoc LocalDbSnapshot.h
class LocalDbSnapshot {
  public:
    /// Whether there is a document, or why not.
    enum Status {
        READ,           ///< there is a document
        NO_FILE,        ///< there is no data file, or its name is too long
        UNREADABLE,     ///< the data file cannot be read, is not JSON, or is JSON null
        BAD_ARGUMENTS,  ///< an API type of 9 or more
        NO_MEMORY,      ///< out of memory
    };

    /// Takes the document of an API type. What was read before does not matter: if the file is
    /// missing or cannot be read, the status says so.
    explicit LocalDbSnapshot(unsigned int apiType);

    /// Has no document, and the status BAD_ARGUMENTS, until it is assigned to, or taken.
    LocalDbSnapshot();

    /// Sets `out` to the documents of `count` API types, all as they were saved at one instant: none
    /// is from before and another from after a change that was saved as one. Waits for a change that
    /// is being written. True if all are READ. False otherwise, also for a null pointer, and when
    /// that instant could not be found, because a change that was interrupted cannot be finished, or
    /// further saves kept coming: each snapshot is then what the constructor would have given.
    static bool take(unsigned int const* types, int count, LocalDbSnapshot* out);

    LocalDbSnapshot(LocalDbSnapshot const& other);             ///< shares the document
    LocalDbSnapshot& operator=(LocalDbSnapshot const& other);  ///< shares the document
    ~LocalDbSnapshot();  ///< releases the document if no other snapshot has it and it is not kept

    Status status() const;           ///< READ, or why there is no document
    explicit operator bool() const;  ///< whether the status is READ

    /// The value at `path`, or 0, 0.0, false or null if there is none. Defaults, conversions and
    /// log lines are those of TreeMapObject::get, with one difference: a value that is not a string
    /// is not converted to one, but is null with the same warning. The string is valid as long as
    /// this snapshot, or a copy of it, exists. A snapshot that is not READ gives and logs the same
    /// as a handle without a value. T: int, bool, double, char const*.
    template <typename T>
    T get(char const* path) const;

    /// Like get, but true only if `path` names a value of the type, as TreeMapObject::get_ex. On
    /// failure `out` is left as it was, a string becomes null. T: int, int64_t, bool, double,
    /// char const*.
    template <typename T>
    bool get_ex(char const* path, T& out) const;

    /// Type of the value at `path`; json_type_null if there is none. Tells whether there is
    /// something to copy, without a copy.
    json_type type(char const* path) const;

    /// Number of elements of the array at `path`; -1 if there is no array.
    int len(char const* path) const;

    /// A new handle that owns a deep copy of the node at `path`, of the whole document for the
    /// empty path. The caller deletes it. Null if there is no such node, and when out of memory.
    TreeMapObject* copy(char const* path) const;

    /// Identifies the content of the file: equal for equal content, also after a restart and on
    /// another machine, and different for different content, unless that was made to be alike: it
    /// is a hash of 64 bits, and no secret. 0 only if not READ.
    uint64_t version() const;

    /// Releases what is kept for later snapshots, of every type, and for later validations, and
    /// closes the files. Existing snapshots are not affected; the next one of each type reads its
    /// file.
    static void forget();

  private:
    // False, but only once a template is used with a type it has no body for.
    template <typename T>
    struct Supported {
        static bool const value = false;
    };

    __attribute__((visibility("hidden"))) json_object* root() const;

    vobiutils::SharedDocument* document_;  // shared; null unless READ
    Status status_;
};

/// \cond

template <typename T>
T LocalDbSnapshot::get(char const*) const {
    static_assert(Supported<T>::value, "get<T>: T is one of int, bool, double, char const*");
    return T();
}
template <>
int LocalDbSnapshot::get<int>(char const* path) const;
template <>
bool LocalDbSnapshot::get<bool>(char const* path) const;
template <>
double LocalDbSnapshot::get<double>(char const* path) const;
template <>
char const* LocalDbSnapshot::get<char const*>(char const* path) const;

template <typename T>
bool LocalDbSnapshot::get_ex(char const*, T&) const {
    static_assert(Supported<T>::value,
                  "get_ex<T>: T is one of int, int64_t, bool, double, char const*");
    return false;
}
template <>
bool LocalDbSnapshot::get_ex<int>(char const* path, int& out) const;
template <>
bool LocalDbSnapshot::get_ex<int64_t>(char const* path, int64_t& out) const;
template <>
bool LocalDbSnapshot::get_ex<bool>(char const* path, bool& out) const;
template <>
bool LocalDbSnapshot::get_ex<double>(char const* path, double& out) const;
template <>
bool LocalDbSnapshot::get_ex<char const*>(char const* path, char const*& out) const;

/// \endcond

#pragma GCC visibility pop

#endif
