// Values that stand outside of their records, in a tree of their own.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "ese/PageFile.h"
#include "ese/TreeCursor.h"

namespace postmarker::ese {

// Reads the long value whose id is in a record (`storedId`, 4 or 8 bytes). Not more than `limit`
// bytes of it are put into *value, so that the caller decides on the memory; *fullSize is what the
// database tells of its size. False if the value is missing or damaged within these bytes.
bool ReadLongValue(const PageFile& file, TreeRoot longValues, std::string_view storedId,
                   size_t limit, std::string* value, size_t* fullSize);

}  // namespace postmarker::ese
