// Splits one header block into names and values.
#pragma once

#include <cstddef>
#include <string_view>

#include "analysis/message/HeaderMap.h"

namespace postmarker {

// The most bytes that are kept of a name and of a value; the rest of the line is passed over.
inline constexpr size_t kMaxHeaderTextBytes = 1022;

// Reads the header block at the start of `bytes` and returns the length of what belongs to it, its
// empty line included; all bytes where there is none. A header that is cut off by the end of the
// bytes is lost. Names become lower-case; a second header of a name gets the key "name-1", a third
// "name-2". A "Received" line is kept a second time under its key and "-comment", with the comments
// that the first lacks. Where `headers` holds keys, only these are filled; where it is empty, all
// headers are kept; where it is null, none. Time is linear in the block's length.
size_t ReadHeaderBlock(std::string_view bytes, HeaderMap* headers);

}  // namespace postmarker
