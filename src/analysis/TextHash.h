// The hash of the containers of this folder. It is made so that the hash of two texts joined
// follows from the hashes of both: pairs and triples of words are hashed without being put
// together.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace postmarker {

namespace detail {
// Powers of the base, which is an odd number that differs from process to process, so that nobody
// can write a message whose words all collide.
struct HashPowers {
  HashPowers();
  std::array<uint64_t, 256> power;
};
extern const HashPowers kHashPowers;
}  // namespace detail

// A polynomial over the bytes, modulo 2 to the 64th.
class TextHash {
 public:
  TextHash() = default;
  explicit TextHash(std::string_view text) {
    const uint64_t base = detail::kHashPowers.power[1];
    for (const char c : text) {
      m_value = m_value * base + static_cast<unsigned char>(c) + 1;
    }
  }

  // The hash of this text and `tail` behind it. REQUIRES: `tailLength`, the length of that text, is
  // below 256.
  [[nodiscard]] TextHash Joined(TextHash tail, size_t tailLength) const {
    TextHash joined;
    joined.m_value = m_value * detail::kHashPowers.power[tailLength] + tail.m_value;
    return joined;
  }

  // 32 well mixed bits.
  [[nodiscard]] uint32_t Bits() const {
    const uint64_t mixed = (m_value ^ (m_value >> 32)) * 0x9E3779B97F4A7C15U;
    return static_cast<uint32_t>(mixed >> 32);
  }

 private:
  uint64_t m_value = 0;
};

}  // namespace postmarker
