// Knows the data directory, and tells the log how changes end.
#include "localdb/DatabaseChange.h"

#include <assert.h>
#include <string.h>

#include "BEConfig.h"
#include "TreeMapObject.h"
#include "jsondata/files/FileBytes.h"
#include "jsondata/files/FileReplacement.h"
#include "jsondata/files/JsonSave.h"
#include "logging/Log.h"

namespace vobiutils {

namespace {

ChangeState finishIn(char const* directory, bool waits) {
    ChangeFolder folder(directory);
    if (!folder.isMarked()) {
        return ChangeState::NONE;
    }
    ChangeState const state = folder.lock(waits);
    if (state == ChangeState::NOT_PERMITTED && folder.isEmpty()) {
        return ChangeState::NONE;
    }
    return state == ChangeState::NONE ? folder.finish() : state;
}

}  // namespace

ChangeState finishChange(char const* function, bool waits) {
    char const* const directory = BEConfig::DATA_LOCATION.c_str();
    ChangeState const state = finishIn(directory, waits);
    if (state == ChangeState::DAMAGED) {
        UTIL_ERROR("%s: the record of a change in %s is damaged and does not count\n", function,
                   directory);
    } else if (state == ChangeState::NOT_PERMITTED) {
        UTIL_WARN("%s: no permission to finish a change in %s\n", function, directory);
    } else if (state == ChangeState::UNFINISHED) {
        UTIL_ERROR("%s: a change in %s cannot be finished yet\n", function, directory);
    }
    return state;
}

bool isChangeRecorded() { return ChangeFolder(BEConfig::DATA_LOCATION.c_str()).isRecorded(); }

bool DatabaseChange::add(Database const& database) {
    assert(count_ < static_cast<int>(API_TYPE_COUNT));
    File& file = files_[count_++];
    file.name = FileName::ofData(database.apiType);
    file.text = database.hasValue() ? savedText(database.document()->jobj, file.length) : nullptr;
    return file.name.get() != nullptr && file.text != nullptr;
}

bool DatabaseChange::findChanged() {
    assert(changedCount_ == 0);
    for (int i = 0; i < count_; ++i) {
        File& file = files_[i];
        SaveTarget target;
        FileDescriptor unchanged;
        if (!target.find(file.name.get())) {
            return false;
        }
        file.isChanged = !target.holds(file.text, file.length, unchanged);
        changedCount_ += file.isChanged;
    }
    return true;
}

// Also a single file is saved under the lock of changes: if another process changed the files that
// are left out meanwhile, they would be of its change, and the single one of this.
int DatabaseChange::save() {
    FileChange change(BEConfig::DATA_LOCATION.c_str());
    ChangeState const state = change.begin();
    bool isSaved = state != ChangeState::UNFINISHED && findChanged();
    if (changedCount_ <= 1) {
        isSaved = isSaved && saveEach();
    } else {
        isSaved = isSaved && state != ChangeState::NOT_PERMITTED && saveTogether(change);
    }
    return isSaved ? 0 : 2;
}

// If nothing is to be changed, the files are synced.
bool DatabaseChange::saveEach() const {
    bool const isChange = changedCount_ > 0;
    bool areSaved = true;
    for (int i = 0; i < count_; ++i) {
        File const& file = files_[i];
        areSaved =
            areSaved && (file.isChanged != isChange ||
                         replaceFile(file.name.get(), file.text, file.length, Durability::SYNCED));
    }
    return areSaved;
}

bool DatabaseChange::saveTogether(FileChange& change) const {
    size_t const directory = BEConfig::DATA_LOCATION.size();
    bool isComplete = true;
    for (int i = 0; i < count_; ++i) {
        File const& file = files_[i];
        isComplete = isComplete && (!file.isChanged || change.add(file.name.get() + directory + 1,
                                                                  file.text, file.length));
    }
    return isComplete && change.commit();
}

uint64_t DatabaseChange::version() const {
    assert(count_ > 0);
    return hashOf(files_[0].text, files_[0].length);
}

}  // namespace vobiutils
