// Values that are compressed in a record or in a long value.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace postmarker::ese {

// The value that `bytes` holds in compressed form: packed 7-bit characters (of one or two bytes
// each) or plain LZ77. At most 64 KiB. Nothing if the bytes are damaged, or compressed in one of
// the newer ways that this reader doesn't know.
std::optional<std::string> Decompress(std::string_view bytes);

}  // namespace postmarker::ese
