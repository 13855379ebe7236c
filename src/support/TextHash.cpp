#include "support/TextHash.h"

#include <chrono>

namespace postmarker {
namespace {

// The clock and, if the system loads programs at random places, addresses of code and stack.
uint64_t MakeSeed(const void* code) {
  const auto ticks = std::chrono::high_resolution_clock::now().time_since_epoch().count();
  uint64_t seed = static_cast<uint64_t>(ticks) * 0xD1342543DE82EF95U;
  seed ^= reinterpret_cast<uintptr_t>(&seed) * 0x9E3779B97F4A7C15U;
  seed ^= reinterpret_cast<uintptr_t>(code);
  seed ^= seed >> 29;
  seed *= 0xBF58476D1CE4E5B9U;
  return seed ^ (seed >> 32);
}

}  // namespace

TextHash::Powers::Powers() {
  // A small base would leave the hashes of short texts close together.
  constexpr uint32_t kMinBase = 1U << 16;
  const uint64_t base = kMinBase + MakeSeed(&kPowers) % (kPrime - kMinBase);
  uint64_t value = 1;
  for (uint32_t& entry : power) {
    entry = static_cast<uint32_t>(value);
    value = Reduced(value * base);
  }
}

const TextHash::Powers TextHash::kPowers;

}  // namespace postmarker
