// Lengths in as few bytes as they need: groups of 7 bits, the lowest first.
#pragma once

#include <cstddef>

namespace postmarker {

constexpr size_t PackedLengthSize(size_t length) {
  size_t size = 1;
  for (; length >= 0x80; length >>= 7) {
    ++size;
  }
  return size;
}

// Writes a length and returns the place after it.
inline char* PutPackedLength(char* out, size_t length) {
  for (; length >= 0x80; length >>= 7) {
    *out++ = static_cast<char>(length | 0x80);
  }
  *out++ = static_cast<char>(length);
  return out;
}

// Reads a length that PutPackedLength wrote and returns the place after it.
inline const char* TakePackedLength(const char* in, size_t* length) {
  size_t value = 0;
  for (unsigned shift = 0;; shift += 7) {
    const auto byte = static_cast<unsigned char>(*in++);
    value |= static_cast<size_t>(byte & 0x7F) << shift;
    if (byte < 0x80) {
      *length = value;
      return in;
    }
  }
}

}  // namespace postmarker
