// Whole blocks of base64, encoded many bytes at once.
#pragma once

#include <cstddef>
#include <string_view>

namespace postmarker {

// Encodes as many whole groups of three bytes from the front of `in` as it can, at most
// `groups`, and gives their number. `out` gets four bytes for each. Where the processor has no
// means for it, that is fewer at a time, by a table.
size_t EncodeBase64Groups(std::string_view in, size_t groups, char* out);

}  // namespace postmarker
