// Label lookup for the names of message files, where a message without a label has no file.
#pragma once

namespace vobiutils {

// The entry of a message; null for an API type without messages, an index past the end of its
// table, and an entry that a program has set to null.
char const* labelAt(unsigned int apiType, unsigned int commType);

}  // namespace vobiutils
