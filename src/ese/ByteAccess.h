// Numbers in bytes that nobody has checked.
#pragma once

#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string_view>

namespace postmarker::ese {

static_assert(std::endian::native == std::endian::little, "numbers are read as they are stored");

// The little-endian number at `offset`. REQUIRES: it lies within `bytes`.
template <std::integral Number>
Number LoadAt(std::string_view bytes, size_t offset) {
  Number number;
  std::memcpy(&number, bytes.data() + offset, sizeof(number));
  return number;
}

// The same; nothing if the number does not lie within `bytes`.
template <std::integral Number>
std::optional<Number> TryLoadAt(std::string_view bytes, size_t offset) {
  if (offset > bytes.size() || bytes.size() - offset < sizeof(Number)) {
    return std::nullopt;
  }
  return LoadAt<Number>(bytes, offset);
}

inline uint8_t ByteAt(std::string_view bytes, size_t offset) {
  return static_cast<uint8_t>(bytes[offset]);
}

// `size` bytes from `offset`; nothing if they do not lie within `bytes`.
inline std::optional<std::string_view> TrySlice(std::string_view bytes, size_t offset,
                                                size_t size) {
  if (offset > bytes.size() || size > bytes.size() - offset) {
    return std::nullopt;
  }
  return bytes.substr(offset, size);
}

}  // namespace postmarker::ese
