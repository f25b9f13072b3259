// A file that has been read, with what a reader needs in order to keep what it made of the bytes.
#pragma once

#include "jsondata/files/FileBytes.h"
#include "jsondata/files/FileDescriptor.h"
#include "jsondata/files/FileIdentity.h"

namespace vobiutils {

// A file, read and still open.
struct FileContent {
    // Opens the file and reads it. One that is being changed meanwhile is read again, a few times
    // at most. Returns 0, or the error of the system; called at most once.
    int read(char const* name);

    FileDescriptor file;
    FileIdentity identity;
    bool isSettled = false;  // a regular file that did not change while it was read
    bool isRecent = false;   // the identity alone does not show a further change
    FileBytes bytes;

  private:
    int readOnce();
};

}  // namespace vobiutils
