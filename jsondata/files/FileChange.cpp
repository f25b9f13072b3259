// Prepares a change, and takes back what was prepared.
#include "jsondata/files/FileChange.h"

#include <assert.h>

#include "jsondata/files/FileBytes.h"
#include "jsondata/files/FileReplacement.h"

namespace vobiutils {

FileChange::~FileChange() {
    if (!isRecorded_ && record_.count() > 0) {
        folder_.removeTexts();
    }
    if (!isRecorded_ && isMarked_) {
        folder_.removeMark();
    }
}

ChangeState FileChange::begin() {
    ChangeState const state = folder_.lock(true);
    return state == ChangeState::NONE ? folder_.finish() : state;
}

bool FileChange::mark() {
    isMarked_ = isMarked_ || folder_.mark();
    return isMarked_ || errno == EEXIST;
}

bool FileChange::add(char const* name, char const* bytes, size_t length) {
    assert(!isRecorded_);
    NameBelow const file(folder_.path(), name);
    uint64_t const gets = hashOf(bytes, length);
    uint64_t had = 0;
    SaveTarget target;
    return target.find(file) && readVersion(file, had) && had != gets &&
           record_.add(name, had, gets) && mark() &&
           prepareReplacement(target, bytes, length, folder_.text(record_.count() - 1));
}

bool FileChange::commit() {
    assert(!isRecorded_);
    if (record_.count() == 0) {
        return true;
    }
    isRecorded_ = folder_.store(record_);
    return isRecorded_ && folder_.carryOut() == ChangeState::NONE;
}

}  // namespace vobiutils
