// The hash of the tables of texts. The hash of two texts joined follows from the hashes of both, so
// that pairs and triples of words are hashed without looking at their bytes again.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace postmarker {

// A polynomial over the bytes, modulo the prime 2^31 - 1, at a base that differs from process to
// process. Whatever texts somebody chooses who does not know the base: two different ones of at
// most n bytes have the same hash for at most n of the 2^31 bases. (Modulo 2^64 this takes as long,
// but there are texts of 1,024 bytes that collide at every base.) The base is made of the clock and
// of addresses: it is no secret for programs of the same machine.
class TextHash {
 public:
  static constexpr size_t kMaxTailBytes = 1023;

  TextHash() = default;
  explicit TextHash(std::string_view text) {
    for (; text.size() > kBlock; text.remove_prefix(kBlock)) {
      Append(text.substr(0, kBlock));
    }
    Append(text);
  }

  // The hash of this text followed by another. REQUIRES: `tailLength` is the length of that text,
  // and at most kMaxTailBytes.
  [[nodiscard]] TextHash Joined(TextHash tail, size_t tailLength) const {
    TextHash joined;
    joined.m_value = Reduced(uint64_t{m_value} * kPowers.power[tailLength] + tail.m_value);
    return joined;
  }

  // 32 bits, of which the upper ones are mixed best.
  [[nodiscard]] uint32_t Bits() const { return m_value * 0x9E3779B1U; }

 private:
  static constexpr uint32_t kPrime = 0x7FFFFFFF;
  static constexpr size_t kBlock = 64;  // bytes whose products are added up before they are reduced

  struct Powers {
    Powers();
    std::array<uint32_t, kMaxTailBytes + 1> power;
  };
  static const Powers kPowers;

  // REQUIRES: `value` is below 2^63.
  static uint32_t Reduced(uint64_t value) {
    value = (value & kPrime) + (value >> 31);
    value = (value & kPrime) + (value >> 31);
    return static_cast<uint32_t>(value >= kPrime ? value - kPrime : value);
  }

  // REQUIRES: `block` has at most kBlock bytes.
  void Append(std::string_view block) {
    size_t power = block.size();
    uint64_t sum = uint64_t{m_value} * kPowers.power[power];
    for (const char c : block) {
      sum += (uint64_t{static_cast<unsigned char>(c)} + 1) * kPowers.power[--power];
    }
    m_value = Reduced(sum);
  }

  uint32_t m_value = 0;
};

}  // namespace postmarker
