// Reads in a document that many threads share: only with functions that write nothing to it.
#include "LocalDbSnapshot.h"

#include <assert.h>
#include <sys/stat.h>

#include <new>

#include "jsondata/JsonElement.h"
#include "jsondata/JsonLookup.h"
#include "jsondata/SchemaFile.h"
#include "jsondata/SharedSchema.h"
#include "localdb/DatabaseChange.h"
#include "localdb/FileName.h"
#include "localdb/SnapshotStore.h"
#include "logging/Log.h"
#include "treemap/TypedValues.h"

using namespace vobiutils;

namespace {

// The data files of some types. As they are open, no file that is made later gets the inode of one.
struct HeldFiles {
    bool hold(unsigned int type) {
        FileName const name = FileName::ofData(type);
        return name.get() == nullptr || files[type].open(name.get(), O_PATH) || errno == ENOENT ||
               errno == ENOTDIR;
    }

    bool isReplaced(unsigned int type) const {
        FileName const name = FileName::ofData(type);
        struct stat held;
        struct stat now;
        return name.get() != nullptr && files[type] &&
               (fstat(files[type].get(), &held) != 0 || stat(name.get(), &now) != 0 ||
                held.st_ino != now.st_ino || held.st_dev != now.st_dev);
    }

    FileDescriptor files[API_TYPE_COUNT];
};

bool hold(HeldFiles& files, unsigned int const* types, int count) {
    bool areHeld = true;
    for (int i = 0; i < count; ++i) {
        areHeld = files.hold(types[i]) && areHeld;
    }
    return areHeld;
}

bool areCurrent(HeldFiles const& files, unsigned int const* types, int count,
                LocalDbSnapshot const* taken) {
    for (int i = 0; i < count; ++i) {
        LocalDbSnapshot const now(types[i]);
        if (now.status() != taken[i].status() || now.version() != taken[i].version() ||
            files.isReplaced(types[i])) {
            return false;
        }
    }
    return true;
}

}  // namespace

LocalDbSnapshot::LocalDbSnapshot(unsigned int apiType)
    : document_(nullptr), status_(BAD_ARGUMENTS) {
    Shared<SharedDocument> document;
    status_ = findDocument(apiType, document);
    document_ = document.release();
    assert((document_ != nullptr) == (status_ == READ));
}

LocalDbSnapshot::LocalDbSnapshot() : document_(nullptr), status_(BAD_ARGUMENTS) {}

// Ordinarily the first attempt succeeds. What was taken is still current when it is looked at again,
// in the same files, which have not been replaced back and forth: so it was current, all of it, at
// the moment between; and at that moment no change was recorded, so that none had come to a part of
// the files.
bool LocalDbSnapshot::take(unsigned int const* types, int count, LocalDbSnapshot* out) {
    int const attempts = 100;
    bool canSucceed = types != nullptr && out != nullptr;
    for (int i = 0; canSucceed && i < attempts; ++i) {
        if (isChangeRecorded()) {
            ChangeState const state = finishChange("LocalDbSnapshot");
            canSucceed = state == ChangeState::NONE || state == ChangeState::DAMAGED;
        }
        HeldFiles files;
        bool const areHeld = canSucceed && hold(files, types, count);
        bool areRead = true;
        for (int j = 0; j < count; ++j) {
            out[j] = LocalDbSnapshot(types[j]);
            areRead = areRead && out[j];
        }
        if (areHeld && !isChangeRecorded() && areCurrent(files, types, count, out)) {
            return areRead;
        }
    }
    return false;
}

LocalDbSnapshot::LocalDbSnapshot(LocalDbSnapshot const& other)
    : document_(addOwner(other.document_)), status_(other.status_) {}

LocalDbSnapshot& LocalDbSnapshot::operator=(LocalDbSnapshot const& other) {
    if (this != &other) {
        removeOwner(document_);
        document_ = addOwner(other.document_);
        status_ = other.status_;
    }
    return *this;
}

LocalDbSnapshot::~LocalDbSnapshot() { removeOwner(document_); }

LocalDbSnapshot::Status LocalDbSnapshot::status() const { return status_; }

LocalDbSnapshot::operator bool() const { return status_ == READ; }

json_object* LocalDbSnapshot::root() const {
    return document_ != nullptr ? document_->root.get() : nullptr;
}

template <>
int LocalDbSnapshot::get<int>(char const* path) const {
    return getValue<int>(root(), path);
}
template <>
bool LocalDbSnapshot::get<bool>(char const* path) const {
    return getValue<bool>(root(), path);
}
template <>
double LocalDbSnapshot::get<double>(char const* path) const {
    return getValue<double>(root(), path);
}
// json-c would store the text of another value in its node.
template <>
char const* LocalDbSnapshot::get<char const*>(char const* path) const {
    json_object* const node = getNode(root(), path, ValueTraits<char const*>::WORDS);
    return json_object_is_type(node, json_type_string) ? json_object_get_string(node) : nullptr;
}

template <>
bool LocalDbSnapshot::get_ex<int>(char const* path, int& out) const {
    return getChecked(root(), path, out);
}
template <>
bool LocalDbSnapshot::get_ex<int64_t>(char const* path, int64_t& out) const {
    return getChecked(root(), path, out);
}
template <>
bool LocalDbSnapshot::get_ex<bool>(char const* path, bool& out) const {
    return getChecked(root(), path, out);
}
template <>
bool LocalDbSnapshot::get_ex<double>(char const* path, double& out) const {
    return getChecked(root(), path, out);
}
template <>
bool LocalDbSnapshot::get_ex<char const*>(char const* path, char const*& out) const {
    return getChecked(root(), path, out);
}

json_type LocalDbSnapshot::type(char const* path) const {
    return json_object_get_type(lookUp(root(), path).value);
}

int LocalDbSnapshot::len(char const* path) const {
    std::optional<size_t> const count = elementCount(lookUp(root(), path).value);
    return count ? static_cast<int>(*count) : -1;
}

// Not by JsonData::cloneObject, which prints the node.
TreeMapObject* LocalDbSnapshot::copy(char const* path) const {
    json_object* const node = lookUp(root(), path).value;
    if (node == nullptr) {
        UTIL_ERROR("%s: fail to get object by path\n", "copy");
        return nullptr;
    }
    json_object* copied = nullptr;
    TreeMapObject* const handle = json_object_deep_copy(node, &copied, nullptr) == 0
                                      ? new (std::nothrow) TreeMapObject(copied)
                                      : nullptr;
    if (handle == nullptr) {
        json_object_put(copied);
        UTIL_ERROR("%s: fail to clone object\n", "copy");
    }
    return handle;
}

uint64_t LocalDbSnapshot::version() const { return document_ != nullptr ? document_->version : 0; }

void LocalDbSnapshot::forget() {
    forgetDocuments();
    forgetSchemas();
}
