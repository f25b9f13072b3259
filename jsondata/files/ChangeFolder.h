// The folder in which changes of several files leave their traces, and how they are finished.
//
//     .change.lock   empty; a process that works on the others holds its flock. Never removed
//     .change        empty: a change has begun, and does not count; else its record (ChangeRecord.h)
//     .change.new    the record before it counts
//     .change.N      the new content of the N-th file of the record, until the file gets it
//
// FileChange.h has the steps of a change.
#pragma once

#include "jsondata/files/ChangeRecord.h"
#include "jsondata/files/FileDescriptor.h"

namespace vobiutils {

// A name below a folder; empty, which names no file, if it is too long.
class NameBelow {
  public:
    NameBelow(char const* folder, char const* name, int number = 0);
    operator char const*() const { return text_; }

  private:
    char text_[1024];
};

enum class ChangeState {
    NONE,           // nothing is under way, and every file is as the last change has left it
    BUSY,           // a change is under way
    DAMAGED,        // what is in the place of the record is none: nothing was touched
    NOT_PERMITTED,  // the process may not write in the folder: nothing was touched
    UNFINISHED,     // a step has failed: the record stays, and the next call goes on with it
};

class ChangeFolder {
  public:
    // `path` must outlive the object.
    explicit ChangeFolder(char const* path) : path_(path) {}
    ~ChangeFolder();  // frees the lock
    ChangeFolder(ChangeFolder const&) = delete;
    ChangeFolder& operator=(ChangeFolder const&) = delete;

    // Whether there may be something to finish. Takes one system call, and no lock.
    bool isMarked() const;

    // Whether there is a record: of a change that counts, as long as not all files are known to be
    // new, or is about to. Takes one system call if there is none, and no lock.
    bool isRecorded() const;

    // Whether what is marked needs nothing but to be removed.
    bool isEmpty() const;

    // Takes the lock, and returns NONE; waits for it, or returns BUSY.
    ChangeState lock(bool waits);

    // The caller of what follows holds the lock.

    // Does what the record says, and empties it; or removes what never got one. NONE, DAMAGED or
    // UNFINISHED.
    ChangeState carryOut() const;

    // Does the same, and removes the record. As long as that is not done, no file may be saved.
    ChangeState finish() const;

    // Marks that a change has begun. False with errno.
    bool mark() const;

    // Puts the record in its place. False if that fails.
    bool store(ChangeRecord const& change) const;

    // Removes all but the record; and the mark.
    void removeTexts() const;
    void removeMark() const;

    char const* path() const { return path_; }
    NameBelow text(int i) const { return NameBelow(path_, ".change.", i + 1); }

  private:
    struct Finish;

    NameBelow record() const;
    bool removeEmptied() const;

    char const* const path_;
    FileDescriptor lock_;
};

}  // namespace vobiutils
