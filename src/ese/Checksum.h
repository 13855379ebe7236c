// The checksum that headers and pages share.
#pragma once

#include <cstdint>
#include <string_view>

#include "ese/ByteAccess.h"

namespace postmarker::ese {

inline constexpr uint32_t kXorSeed = 0x89ABCDEF;

// The XOR of all 32-bit words of `bytes`, beginning with `seed`. Bytes that fill no word are left
// out.
inline uint32_t XorWords(std::string_view bytes, uint32_t seed) {
  // Two words at a time: a query checks each page that it reads.
  uint64_t pairs = 0;
  size_t place = 0;
  for (; place + sizeof(uint64_t) <= bytes.size(); place += sizeof(uint64_t)) {
    pairs ^= LoadAt<uint64_t>(bytes, place);
  }
  if (place + sizeof(uint32_t) <= bytes.size()) {
    pairs ^= LoadAt<uint32_t>(bytes, place);
  }
  return seed ^ static_cast<uint32_t>(pairs) ^ static_cast<uint32_t>(pairs >> 32U);
}

}  // namespace postmarker::ese
