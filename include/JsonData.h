/// \file
/// JSON documents over json-c: reading and writing values by path, documents from and to text and
/// files, validation and comparison.
///
/// A path names a value inside a document: "net.lan.list.[2].name". It consists of tokens separated
/// by dots. A token that begins with "[" is an index into an array, any other one a member name,
/// matched exactly. There is no escape: a member whose name holds a dot cannot be named. The empty
/// path is the root. A dot at the end adds no token; other empty tokens ("a..b", ".") name the
/// member "". The number of an index token is what is between its first and its last character,
/// read as an input stream reads an unsigned number ("[ 1 ]" is 1, "[-1]" is 4294967295).
/// Characters that are not a number, or follow one, are reported on standard output and ignored:
/// "[x]" is index 0. An index token of fewer than 3 characters names nothing.
///
/// Ownership: json_object pointers returned or put into `parent` are borrowed from the document. A
/// value must not be stored inside itself.
///
/// Limits: recursion (by json-c, when it writes, copies or releases) is as deep as the document, no
/// deeper. A stack of 128 KiB is enough for 256 levels, whatever is done with them; documents
/// nested deeper than that are the caller's responsibility. Texts and files are read, and files
/// written, to json-c's own depth: 31 containers above a value. What follows the first value of a
/// text is ignored.
///
/// Memory: when the library itself is out of memory, a function returns its failure value. json-c
/// does not always: a text, a file or a copy that is parsed while memory runs out may lack members,
/// or json-c may crash. When a document is saved, the text is checked, and the save fails if it is
/// not whole.
///
/// Threads: every function may be called from any thread at once; nothing is kept between calls but
/// schemas of files. A document belongs to one thread at a time, for reading too, because json-c
/// stores the text of a value inside it. Different documents are independent.
#ifndef VOBIUTILS_JSONDATA_H
#define VOBIUTILS_JSONDATA_H

#include <json-c/json.h>
#include <stddef.h>

#include <string>

#pragma GCC visibility push(default)

class TreeMapObject;

/// What is wrong with a text, and where. Lines and columns count from 1, columns in characters.
struct JsonFault {
    size_t line;         ///< 0 when out of memory: then nothing is wrong with the text
    size_t column;       ///< of the first character that cannot be right
    char const* reason;  ///< in English, without a full stop; a string that the library owns
};

/// \copydoc JsonData.h
class JsonData {
  public:
    /// Looks up the value at `path` inside `jobj`. Null when there is none, or when the value is
    /// JSON null. Nothing is ever created.
    static json_object* getJObj(json_object* jobj, char const* path);

    /// The same, and reports where the walk ended: `parent` receives the container of the value,
    /// and `key` a copy of the last token, which the caller releases with delete[] (null when that
    /// token is empty, and when out of memory). Both become null for the empty path and when a
    /// token before the last leads nowhere. When only the last token leads nowhere, `key` is still
    /// given and has to be released; `parent` is then the container one level above the one
    /// searched (or `jobj`), and is then of no use. A null `jobj` or `path` gives null and leaves
    /// both untouched: set them to null before.
    static json_object* getJObj(json_object* jobj, char const* path, json_object*& parent,
                                char const*& key);

    /// Stores `jval` (null for JSON null) at `path` inside `jobj`, replacing an existing value and
    /// creating the objects and arrays that are missing on the way. An index at or past the end of
    /// an array appends, without gaps. A member name on a root array appends an object and stores
    /// inside it (the path is then cut after 255 characters, "[n]." included). 0 when stored; 2 for
    /// a null `jobj`, a null or empty path, an index of fewer than 3 characters, or a step into an
    /// existing value of the wrong type. What was created on the way then stays. The document takes
    /// a reference of its own on `jval` when it is stored; the caller's reference remains the
    /// caller's, on success and failure alike.
    static int setJObj(json_object* jobj, char const* path, json_object* jval);

    /// The same. On success `parent` receives the container that `jval` is stored in, and `key` a
    /// copy of the last token, which the caller releases with free (not delete[], unlike getJObj;
    /// null when out of memory). On failure both are left untouched.
    static int setJObj(json_object* jobj, char const* path, json_object* jval, json_object*& parent,
                       char const*& key);

    /// Parses `text`. A new handle that owns the document, deleted by the caller; null for a null
    /// text, text that is not JSON, and the text "null".
    static TreeMapObject* createObject(char const* text);

    /// Parses exactly one JSON value, `length` bytes with white space around it, as strictly as JSON
    /// is defined, and more strictly where readers of JSON differ. A new handle that owns the
    /// value, deleted by the caller; a handle without a value for JSON null. Null when the text is
    /// anything else, and when out of memory; `fault` then receives the reason. It is left alone on
    /// success. A null text is an empty one.
    ///
    /// \code{.cpp}
    /// JsonFault fault;
    /// std::unique_ptr<TreeMapObject> const body(JsonData::parse(data, size, &fault));
    /// if (!body) {
    ///     return refuse(fault.line != 0 ? 400 : 503, fault.reason);
    /// }
    /// \endcode
    ///
    /// Refused are: anything but white space after the value; more than 31 containers above a
    /// value; bytes that are not UTF-8; a lone surrogate or the character 0 as an escape; a member
    /// name that an object has twice; an integer beyond 64 bits and a number beyond a double
    /// (which are never clamped); comments, NaN, and whatever else json-c tolerates. The time taken
    /// is proportional to `length`.
    static TreeMapObject* parse(char const* text, size_t length, JsonFault* fault = nullptr);

    /// The text of a handle's value, pretty and spaced. It belongs to the value and is valid until
    /// the value is serialized again, changed or released. Null for a null handle, one whose
    /// `error` is set, and one without a value.
    static char const* getJson(TreeMapObject* obj);

    /// An independent copy of `jobj`, made by serializing it and parsing that text, with the limits
    /// of both; the caller holds its one reference. Null for a null `jobj` and for what cannot be
    /// parsed back.
    static json_object* cloneObject(json_object* jobj);

    /// Reads the file. A new handle that owns the document, deleted by the caller; its `jobj` is
    /// null when the file exists but cannot be read or parsed. Null when there is no such file, or
    /// for a null name.
    static TreeMapObject* createObjectFromFile(char const* file);

    /// Writes the handle's value to the file, pretty-printed. 0 when written; 2 when that fails,
    /// for a null handle or name, for a handle without a value, for a document that is nested
    /// deeper than files are read, and for an existing file that the effective user may not write,
    /// even if it holds the same text already.
    ///
    /// The file is replaced as a whole: the new one is written beside it under the name
    /// `.NAME.saving`, synced, and renamed over it. At any instant, and after a loss of power at
    /// any instant, the file holds the old document or the new one; after a result of 2 it holds
    /// the old one, and nothing is left beside it. A process that is killed may leave the ".saving"
    /// file; the next save removes it. A file that holds the same text already is not written
    /// again.
    ///
    /// The permission bits, the owner (where the process may set it), the access control list and
    /// symbolic links are kept, and so are the other extended attributes, except any that cannot be
    /// copied and those that vouch for the old content (security.ima, .evm, .capability). A new
    /// file gets mode 0644 less the umask. Other names of the file (hard links) keep the old
    /// document. An existing file that is not a regular file (a device, a pipe) is written in
    /// place, as is one reached through a link below /proc. So is a file that cannot be replaced,
    /// because its directory does not permit a new file, or the system refuses the rename or does
    /// not let a new file have its mode or access control list. There a killed process may leave
    /// part of the new content; a full disk does not.
    ///
    /// Threads and processes that save the same file at once wait for one another: the last one
    /// wins, whole. If something at the temporary name can be neither locked nor removed (a
    /// directory, another user's file), it is left alone, and a digit is appended to the name.
    static int saveObjectToFile(char const* file, TreeMapObject* obj);

    /// What differs between two documents: a new handle on an array, deleted by the caller, and
    /// empty when nothing differs. Null for a null handle and when out of memory.
    ///
    /// \code{.json}
    /// [{"path": "lan.mtu", "before": 1500, "after": 1492},
    ///  {"path": "rules.[2]", "after": {"port": 80}}]
    /// \endcode
    ///
    /// "before" or "after" is missing where there was or is nothing. Objects are compared by member
    /// names, in the order of `before` and then of what is new; arrays element by element. A value
    /// of another type is another value, 1 and 1.0 included. A member that no path can name (an
    /// empty name, one with a dot or with a "[" in front) is reported with the object around it.
    /// The values are copies. A handle without a value is JSON null.
    static TreeMapObject* difference(TreeMapObject* before, TreeMapObject* after);

    /// \name Paths as text
    /// \{

    /// Whether `path` can be read in one way only, as a path that comes from outside should be: at
    /// most 31 steps, separated by one dot each; an index is "[", a number below 2147483648 without
    /// a sign, spaces or leading zeros, and "]"; a member name is UTF-8 without control characters.
    /// The empty path is one, a null path is not.
    static bool isPath(char const* path);

    /// The path of the container: "lan.ports" for "lan.ports.[2]", empty for one step and for none.
    static std::string parentPath(std::string const& path) {
        size_t const dot = path.rfind('.');
        return dot != std::string::npos ? path.substr(0, dot) : std::string();
    }

    /// The last step: "[2]" of "lan.ports.[2]", "lan" of "lan", empty for the empty path.
    static std::string lastStep(std::string const& path) {
        size_t const dot = path.rfind('.');
        return dot != std::string::npos ? path.substr(dot + 1) : path;
    }

    /// \}

    /// Prints the value at `path` on standard error; the whole value for a null or empty path, and
    /// for the path "(null)". A null handle, or one without a value, prints a line that says so.
    /// The number of characters printed; 0 when there is no value at the path.
    static int dumpObject(TreeMapObject* obj, char const* path);

    /// Validates the handle's value against a JSON Schema given as text. 0 when it is valid, and
    /// also when the text is not JSON (with a warning); 2 when it is not valid, and for a null
    /// handle, one without a value or with `error` set.
    static int validateObject(TreeMapObject* obj, char const* schemaText);

    /// Validates a file against a schema file. 0 when valid, and also when there is no schema file
    /// (with a warning); 2 when not valid, or when there is no data file.
    static int validateFile(char const* dataFile, char const* schemaFile);

    /// Validates the handle's value against a schema file. 0 when valid, and also when there is no
    /// schema file (with a warning); 2 when not valid, for a schema file that cannot be parsed, and
    /// for a null handle. A handle without a value is validated as JSON null. The library keeps up
    /// to 16 parsed schemas, of at most 32 KB each, until their files change, and keeps the files
    /// open; see LocalDbSnapshot::forget.
    static int validateFile(TreeMapObject* obj, char const* schemaFile);

    /// Compares two values whose types the caller has read. True for equal doubles, integers,
    /// Booleans and strings (byte by byte, up to a NUL). Integers that do not fit in 32 bits count
    /// as the nearest one that does. Values of different types, null pointers and JSON nulls are
    /// never equal; two objects, or two arrays, always are, whatever they hold.
    static bool compareObjVal(json_object* src, json_type srcType, json_object* dst,
                              json_type dstType);
};

#pragma GCC visibility pop

#endif
