// Other mail libraries, for comparison.
#pragma once

#include <cstddef>
#include <string_view>

namespace postmarker::bench {

// What a library saw of a message, so that its work can be checked and is not left out.
struct PeerResult {
  size_t parts = 0;
  size_t decodedBytes = 0;
};

// Parses a message with GMime; with `decode`, decodes all parts as well.
PeerResult ReadWithGMime(std::string_view message, bool decode);

// The same with mimetic.
PeerResult ReadWithMimetic(std::string_view message, bool decode);

}  // namespace postmarker::bench
