// Texts as numbers, for quick comparisons.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace postmarker {

// The first 8 bytes as a number that orders as the bytes do. REQUIRES: 8 bytes may be read there,
// however long the text is.
inline uint64_t SortPrefixOfPadded(std::string_view text) {
  uint64_t prefix = 0;
  std::memcpy(&prefix, text.data(), sizeof(prefix));
  prefix = std::endian::native == std::endian::little ? __builtin_bswap64(prefix) : prefix;
  if (text.size() >= sizeof(prefix)) {
    return prefix;
  }
  return text.empty() ? 0 : prefix & ~uint64_t{0} << (8 * (sizeof(prefix) - text.size()));
}

// The same for any text.
inline uint64_t SortPrefix(std::string_view text) {
  uint64_t prefix = 0;
  if (text.size() >= sizeof(prefix)) {
    return SortPrefixOfPadded(text);
  }
  for (size_t i = 0; i < sizeof(prefix); ++i) {
    prefix = prefix << 8 | (i < text.size() ? static_cast<unsigned char>(text[i]) : 0U);
  }
  return prefix;
}

}  // namespace postmarker
