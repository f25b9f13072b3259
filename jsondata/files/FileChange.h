// Changes several files below one folder: all of them, or none.
//
//   1. Take the lock of the folder, and finish an earlier change (begin).
//   2. Mark that one has begun. For each file: make what is to replace it in the folder, synced (add).
//   3. Write the record, sync it, and put it in the place of the mark (commit).
//   4. Finish what the record says (ChangeFolder.cpp): sync the folder, whereupon the change counts,
//      rename, sync the folders of the files, empty the record.
//
// That makes 2n + 2 syncs for n files; the next lock, read or save syncs the empty record and removes
// it. A failure, kill or loss of power before the change counts leaves every file old; after it, the
// next caller finishes the change.
#pragma once

#include "jsondata/files/ChangeFolder.h"

namespace vobiutils {

// In this order: begin(), add() for each file, commit(). After an add() or commit() that returns
// false only the destructor is called.
class FileChange {
  public:
    // `folder` must outlive the object.
    explicit FileChange(char const* folder) : folder_(folder) {}
    ~FileChange();  // removes what was made, unless there is a record
    FileChange(FileChange const&) = delete;
    FileChange& operator=(FileChange const&) = delete;

    // Waits for a change that is under way, and keeps others away until the destructor. Files may be
    // added after NONE, and after DAMAGED: what is there in the place of the record stays until
    // commit(). After NOT_PERMITTED others are not kept away.
    ChangeState begin();

    // Adds a file, by its name below the folder, that gets these bytes, which it does not
    // hold. False if it could only be written in place.
    bool add(char const* name, char const* bytes, size_t length);

    // True when every file holds its bytes, synced. False if none does, or if the record stays.
    bool commit();

  private:
    bool mark();

    ChangeFolder folder_;
    ChangeRecord record_;
    bool isMarked_ = false;    // by this change
    bool isRecorded_ = false;  // the record is in its place
};

}  // namespace vobiutils
