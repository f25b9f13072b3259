/// \file
/// The local databases: one for each API type, a JSON document kept in a data file, loaded into
/// controllers and guarded by lock / save / unlock.
///
/// Under the data directory, BEConfig::DATA_LOCATION, every API type has a folder (API_DATA_DIR)
/// with
/// - `FOLDER.ldb`: its data file, the whole document;
/// - `LABEL.ldb`: message files, named after the message (CommLabel.h);
/// - `LABEL_SCHEMA.ldb`: the JSON Schemas of messages.
///
/// A controller holds the nine databases of one view of the data. The "default" one is shared;
/// a session can have a controller of its own, loaded from the files (cloneNewDB). Lookup, lock,
/// save and unlock treat a session key that is null or not registered as the default controller,
/// and log an error.
///
/// A writer locks a database, changes the document that the lock returns, and ends with exactly one
/// save or unlock:
///
/// \code{.cpp}
/// TreeMapObject* lan = LocalDbCtrl::lockDbObject(API_NETWORK, "lan", key);
/// lan->set<int>("mtu", 1500);
/// delete lan;
/// LocalDbCtrl::saveDbObject(API_NETWORK, key);
/// \endcode
///
/// Results: 0 is success and 2 failure unless a function says otherwise.
///
/// Threads: lockDbObject, saveDbObject and unlockDbObject may be called from any thread, and so may
/// cloneNewDB, getDBByKey and removeDB. Operations on different databases, in one controller or in
/// two, never wait for each other, with one exception: two controllers that save the same API type
/// take turns writing its file. The thread that locked a database is the one that saves or unlocks
/// it. removeDB waits for the writers of the controller. init belongs to start-up. A program that
/// walks `controllers` itself does so while no other thread is in the library. A child process made
/// by fork calls nothing here before it calls exec: another thread may have held one of the
/// library's own mutexes at the fork.
#ifndef VOBIUTILS_LOCALDBCTRL_H
#define VOBIUTILS_LOCALDBCTRL_H

#include <pthread.h>

#include <map>
#include <string>

#pragma GCC visibility push(default)

class TreeMapObject;

/// The API types, in the order of API_DATA_DIR.
enum API_TYPE_T : unsigned int {
    API_GATEWAY = 0,     ///< folder "gateway"
    API_WIFI = 1,        ///< folder "wifi"
    API_NETWORK = 2,     ///< folder "network"
    API_SECURITY = 3,    ///< folder "security"
    API_SERVICE = 4,     ///< folder "service"
    API_MEDIASHARE = 5,  ///< folder "mediashare"
    API_QOS = 6,         ///< folder "qos"
    API_MISC = 7,        ///< folder "misc"
    API_FAC = 8,         ///< folder "fac"
    API_TYPE_COUNT = 9,  ///< how many there are
};

/// Folder of each API type: "gateway" to "fac". May be written at start-up; read at each use.
extern char const* API_DATA_DIR[API_TYPE_COUNT];

/// State of one database, that of an API type in a controller.
enum DB_STATE_T : int {
    DB_STATE_UNINITIALIZED = 0,  ///< not loaded; the next lock reads the data file
    DB_STATE_ACCESSIBLE = 1,     ///< loaded, and no thread is writing it
    DB_STATE_WRITING = 2,        ///< locked by a writer, or being saved
};

/// A controller: the databases of the nine API types, each with its document, state and lock,
/// indexed by API type. Made by LocalDbCtrl and owned by its registry; removeDB deletes it when no
/// call uses it any more. The destructor waits for each lock in turn and releases every document
/// except one whose state is "writing".
struct LOCALDB_HANDLER {
    TreeMapObject* dbObject[API_TYPE_COUNT];  ///< owned; valid only while the state is not 0
    int state[API_TYPE_COUNT];                ///< a DB_STATE_T; accessed atomically by the library
    pthread_mutex_t lock[API_TYPE_COUNT];     ///< held by the writer of a database

    /// All nine databases unloaded and unlocked.
    LOCALDB_HANDLER();
    /// Releases the documents, as described above.
    ~LOCALDB_HANDLER();
    /// \cond
    LOCALDB_HANDLER(LOCALDB_HANDLER const&) = delete;
    LOCALDB_HANDLER& operator=(LOCALDB_HANDLER const&) = delete;
    /// \endcond
};

/// \copydoc LocalDbCtrl.h
class LocalDbCtrl {
  public:
    /// \name Files
    /// A string returned as char* is in a buffer of the library, one for each function and thread:
    /// the caller does not free it. It is valid until the same thread calls the same function
    /// again, or ends. The result is null for a name of more than 255 characters. Files need not
    /// exist.
    /// \{

    /// The folder of an API type, an entry of API_DATA_DIR; null for a type of 9 or more.
    static char const* getApiDir(unsigned int apiType);

    /// The reverse: the API type whose folder is `folder`; API_TYPE_COUNT, which every function
    /// here refuses, when there is none and for a null folder.
    static unsigned int getApiType(char const* folder);

    /// Name of the data file of an API type; null for a type of 9 or more. If the entry of
    /// API_DATA_DIR is null, the name that this thread formed last, or null if there was none.
    static char* getFileName(unsigned int apiType);

    /// Name of a message file. Null for an API type without messages (7 and above), for a
    /// communication type past the end of its labels, and if the folder or the label is null.
    static char* getFileName(unsigned int apiType, unsigned int commType);

    /// Name of the schema file of a message. Null in the same cases as the message file.
    static char* getSchemaFile(unsigned int apiType, unsigned int commType);

    /// Validates the value of `obj` against the schema file of a message. 0 when it is valid or the
    /// message has no schema file; 2 otherwise, also for a null `obj`, one without a value, and
    /// types that are not those of a message.
    static int validateObject(TreeMapObject* obj, unsigned int apiType, unsigned int commType);

    /// \}
    /// \name Controllers
    /// Keys are copied. Allocating the copy, its entry or the controller may throw std::bad_alloc.
    /// \{

    /// Empties the registry and registers a new "default" controller. Call it once at start-up,
    /// after BEConfig::init and Logger::init. It reads no file. Controllers registered before are
    /// not deleted.
    static void init();

    /// Makes a controller for a session and loads it from the data files, without what the default
    /// controller holds unsaved. A database whose file is missing is loaded by its first lock.
    /// Returns 1 if the controller was made; 0 for a null key, and for one that is registered
    /// already.
    static int cloneNewDB(char const* sessionKey);

    /// The controller registered under the key, else the default one; the registry owns it. Null if
    /// there is no default controller (before init); "default" is then registered without one.
    static LOCALDB_HANDLER* getDBByKey(char const* sessionKey);

    /// Deletes the controller registered under the key, "default" included; does nothing for a null
    /// or unknown key. Always returns 1.
    ///
    /// Waits until no thread holds the lock of a database in the controller, or is locking, saving
    /// or unlocking one. Until then the key stays registered, and other writers are still served: as
    /// long as they come without a pause, removeDB does not return. A thread that itself holds a
    /// lock in the controller waits forever. If two threads remove the same controller, the second
    /// one removes nothing. Pointers from getDBByKey are invalid afterwards.
    ///
    /// If a key is registered after a lock has fallen back to the default controller, the save or
    /// unlock that follows finds the new controller instead. A transaction keeps the controller that
    /// it has locked.
    static int removeDB(char const* sessionKey);

    /// The registry. Only the functions above change it, under a mutex of the library.
    static std::map<std::string, LOCALDB_HANDLER*> controllers;

    /// \}
    /// \name Lock, save and unlock
    /// \{

    /// Locks the database of an API type for writing, and returns its document (empty path) or a
    /// node inside it.
    ///
    /// Returns null at once, having locked nothing, if another writer has locked the database or is
    /// saving it, and for an API type of 9 or more, a null path, or a controller that does not
    /// exist. Every other null result (no data file, no such node, no memory) leaves the database
    /// locked, and the caller ends the lock with unlockDbObject; until then every other caller
    /// waits, and this thread would wait forever. The result does not tell the two kinds apart, and
    /// unlocking after the first kind ends another writer's lock: lock the whole document ("") of a
    /// database whose file exists, and null means busy. A caller that comes just before another
    /// writer gets the database waits for that writer. Other processes are not waited for, nor kept
    /// waiting: where they write, too, use LocalDbTransaction.
    ///
    /// The document belongs to the controller: the caller does not delete it, and the save destroys
    /// it. The handle on a node belongs to the caller, which deletes it and does not use it after
    /// the save.
    static TreeMapObject* lockDbObject(unsigned int apiType, char const* path,
                                       char const* sessionKey);

    /// Writes the document of a locked database to its data file, as JsonData::saveObjectToFile
    /// does, drops it from memory and ends the lock. Returns 0 if it was written; 2 if not, and if
    /// the database was not locked. After a failed write the changes are lost: the next lock reads
    /// the file as it was.
    static int saveDbObject(API_TYPE_T apiType, char const* sessionKey);

    /// Ends the lock and keeps the document in memory as it is, unsaved; the next writer in this
    /// controller sees the changes. Returns 0; 2 if the database was not locked, or by a lock that
    /// returned null.
    static int unlockDbObject(unsigned int apiType, char const* sessionKey);
    /// \}
};

#pragma GCC visibility pop

#endif
