// Keeps the document of each data file as long as the file is the same, for snapshots to share.
#pragma once

#include <stdint.h>

#include "LocalDbSnapshot.h"
#include "jsondata/FileCache.h"
#include "jsondata/JsonRef.h"

namespace vobiutils {

// The content of a data file. Many threads read it at once, so that nothing is ever written to it:
// no reference of json-c is taken on its nodes, and nothing in it is printed or converted to a
// string, because json-c stores the text in the node.
struct SharedDocument : Made {
    SharedDocument(json_object* owned, uint64_t contentVersion)
        : root(owned), version(contentVersion) {}

    JsonRef const root;
    uint64_t const version;
};

// Sets `document` to what the data file of an API type holds, kept or read by this thread, and
// returns READ; otherwise returns the reason why not.
LocalDbSnapshot::Status findDocument(unsigned int apiType, Shared<SharedDocument>& document);

// Drops every document that is kept.
void forgetDocuments();

}  // namespace vobiutils
