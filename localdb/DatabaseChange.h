// Saves the documents of several databases as one change, and finishes what was interrupted.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "jsondata/files/FileChange.h"
#include "localdb/Database.h"
#include "localdb/FileName.h"

namespace vobiutils {

// Called before a data file is read or saved: finishes a change that is left in the data directory,
// after it has waited for one that is under way, or, if it is not to wait, beside that. Takes one
// system call if there is none. The states but NONE and BUSY come with a line in the log. After
// UNFINISHED some files may be old and some new: nothing is read then, nor saved.
ChangeState finishChange(char const* function, bool waits = true);

// Whether a change counts, and may not have come to all files yet. Takes one system call if none is
// left or under way.
bool isChangeRecorded();

// Writes the data files of several databases: all of them, or none. One whose file would stay the
// same is left out. A single one that is left is replaced without the steps of a change.
class DatabaseChange {
  public:
    // Adds a database, whose document must not change until save(). False if it cannot be saved.
    bool add(Database const& database);

    // 0 if every file holds its document; else 2, and none does, or not yet (FileChange.h).
    int save();

    // The version of the first document as it is saved.
    uint64_t version() const;

  private:
    struct File {
        FileName name = FileName::ofData(API_TYPE_COUNT);
        char const* text;
        size_t length;
        bool isChanged = false;
    };

    bool findChanged();
    bool saveEach() const;
    bool saveTogether(FileChange& change) const;

    int count_ = 0;
    int changedCount_ = 0;
    File files_[API_TYPE_COUNT];
};

}  // namespace vobiutils
