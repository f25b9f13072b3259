/// \file
/// The local database: one JSON document per API type, kept in a data file, loaded into controllers
/// and guarded by lock / save / unlock.
///
/// Below the data directory, BEConfig::DATA_LOCATION, every API type has a folder (API_DATA_DIR)
/// with
/// - `FOLDER.ldb`: its data file, the whole document of the type;
/// - `LABEL.ldb`: message files, named by the message (CommLabel.h);
/// - `LABEL_SCHEMA.ldb`: the JSON Schemas of messages.
///
/// A controller holds the nine documents of one view on the data. The "default" one is shared;
/// a session can have one of its own, loaded from the files (cloneNewDB). To find, lock, save and
/// unlock, a session key that is null or not registered stands for the default controller, and an
/// error is logged.
///
/// A writer locks a type, changes the document it is given, and ends with exactly one save or
/// unlock:
///
/// \code{.cpp}
/// TreeMapObject* lan = LocalDbCtrl::lockDbObject(API_NETWORK, "lan", key);
/// lan->set<int>("mtu", 1500);
/// delete lan;
/// LocalDbCtrl::saveDbObject(API_NETWORK, key);
/// \endcode
///
/// Results: 0 is success and 2 failure where nothing else is said.
///
/// Threads: lockDbObject, saveDbObject and unlockDbObject may be called from any thread, and so may
/// cloneNewDB, getDBByKey and removeDB. Types and controllers never wait for each other, but that
/// two controllers take turns in writing the file of the same type. The thread that locked a type
/// is the one that saves or unlocks it. removeDB waits for the writers of the controller. init belongs
/// to start-up. A program that walks `controllers` itself does so while no other thread is in the
/// library. A child process made by fork calls nothing here before it calls exec: another thread may
/// have held one of the library's own mutexes at the fork.
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

/// Folder of each API type: "gateway" to "fac". Writable, at start-up; read at each use.
extern char const* API_DATA_DIR[API_TYPE_COUNT];

/// State of one API type in one controller.
enum DB_STATE_T : int {
    DB_STATE_UNINITIALIZED = 0,  ///< not loaded; the next lock reads the data file
    DB_STATE_ACCESSIBLE = 1,     ///< loaded, and no writer holds it
    DB_STATE_WRITING = 2,        ///< a writer holds it, or is saving it
};

/// A controller: the documents of the nine API types with their states and locks, indexed by API
/// type. Made by LocalDbCtrl and owned by its registry, from which it is deleted (removeDB) when
/// no call uses it any more. Its destructor waits for each lock in turn, and releases every document but one
/// whose state is "writing".
struct LOCALDB_HANDLER {
    TreeMapObject* dbObject[API_TYPE_COUNT];  ///< owned; of meaning only while the state is not 0
    int state[API_TYPE_COUNT];                ///< a DB_STATE_T; accessed atomically by the library
    pthread_mutex_t lock[API_TYPE_COUNT];     ///< held by a type's writer

    /// Nine types that are not loaded, and nobody's lock.
    LOCALDB_HANDLER();
    /// Releases the documents, as said above.
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
    /// A text returned as char* stands in a buffer of the library's that each function has
    /// once per thread: the caller does not free it. It holds until the same thread calls the same
    /// function again, or ends. A name of more than 255 characters cannot be formed. Files need not exist.
    /// \{

    /// The folder of an API type, an entry of API_DATA_DIR; null for a type of 9 or more.
    static char const* getApiDir(unsigned int apiType);

    /// Name of the data file of an API type; null for a type of 9 or more. When the entry of
    /// API_DATA_DIR is null, the name formed last in this thread, or null if there was none.
    static char* getFileName(unsigned int apiType);

    /// Name of a message file. Null for an API type without messages (7 and above), a communication
    /// type past the end of its labels, and where the folder or the label is null.
    static char* getFileName(unsigned int apiType, unsigned int commType);

    /// Name of the schema file of a message. Null as for the message file.
    static char* getSchemaFile(unsigned int apiType, unsigned int commType);

    /// Validates the value of `obj` against the schema file of a message. 0 when it is valid or the
    /// message has no schema file; 2 otherwise, also for a null `obj`, one without a value, and a
    /// pair that is no message.
    static int validateObject(TreeMapObject* obj, unsigned int apiType, unsigned int commType);

    /// \}
    /// \name Controllers
    /// A key is copied; allocating it, its entry or the controller may throw std::bad_alloc.
    /// \{

    /// Empties the registry and registers a new "default" controller. Call once at start-up, after
    /// BEConfig::init and Logger::init; reads no file. Controllers registered before are dropped
    /// without being deleted.
    static void init();

    /// Makes a controller for a session and loads it from the data files, not from what the default
    /// controller holds unsaved. Types whose file is missing are read again by their first lock.
    /// 1 when it was made; 0 for a null key, and for one that is registered already.
    static int cloneNewDB(char const* sessionKey);

    /// The controller registered under the key, owned by the registry, else the default one. Null
    /// when there is no default controller (before init); "default" is then registered without one.
    static LOCALDB_HANDLER* getDBByKey(char const* sessionKey);

    /// Deletes the controller registered under the key, "default" included; nothing for a null or
    /// unknown key. Always 1.
    ///
    /// Waits until no thread holds a type of the controller, or is locking, saving or unlocking one; the key
    /// stays registered until then, and other writers of it are still served: while they come without a
    /// pause, removeDB does not return. A thread that removes a controller of which it holds a type waits
    /// for ever. Of two threads that remove the same controller the second one removes nothing. A pointer
    /// from getDBByKey is invalid from then on.
    ///
    /// A key that is registered between a lock that fell back to the default controller and its save or
    /// unlock directs the latter to the new controller; transactions keep the one that they have locked.
    static int removeDB(char const* sessionKey);

    /// The registry. Changed only by the functions above, under a guard of the library's.
    static std::map<std::string, LOCALDB_HANDLER*> controllers;

    /// \}
    /// \name Lock, save and unlock
    /// \{

    /// Locks an API type for writing and returns its document (empty path) or a node inside it.
    ///
    /// Returns null at once, having locked nothing, when a writer holds the type or is saving it,
    /// and for an API type of 9 or more, a null path, or a controller that does not exist. Every
    /// other null result (no data file, no such node, no memory) leaves the type locked, to be
    /// ended with unlockDbObject; until then every other caller waits, this thread for ever. The
    /// result does not tell the two apart, and unlocking after the first kind ends another writer's
    /// lock: lock the whole document ("") of a type whose file exists, and null means busy. A
    /// caller that comes just before another writer takes the type waits for it.
    ///
    /// The document belongs to the controller: the caller does not delete it, and it dies with the
    /// save. The handle on a node belongs to the caller, who deletes it and does not use it after
    /// the save.
    static TreeMapObject* lockDbObject(unsigned int apiType, char const* path,
                                       char const* sessionKey);

    /// Writes the document of a locked type to its data file, as JsonData::saveObjectToFile does,
    /// drops it from memory and ends the lock. 0 when written; 2 when not, and when the type was
    /// not locked. After a failed write the changes are lost: the next lock reads the file as it
    /// was.
    static int saveDbObject(API_TYPE_T apiType, char const* sessionKey);

    /// Ends the lock and keeps the document in memory as it is now, unsaved; the next writer of
    /// this controller sees the changes. 0; 2 when the type was not locked by a lock that gave a
    /// handle.
    static int unlockDbObject(unsigned int apiType, char const* sessionKey);
    /// \}
};

#pragma GCC visibility pop

#endif
