#include "analysis/TextHash.h"

#include <chrono>

namespace postmarker::detail {
namespace {

uint64_t MakeBase() {
  // The clock and, where the system lays programs out at random, addresses of code and stack.
  const auto ticks = std::chrono::high_resolution_clock::now().time_since_epoch().count();
  uint64_t seed = static_cast<uint64_t>(ticks) * 0xD1342543DE82EF95U;
  seed ^= reinterpret_cast<uintptr_t>(&seed) * 0x9E3779B97F4A7C15U;
  seed ^= reinterpret_cast<uintptr_t>(&kHashPowers);
  seed ^= seed >> 29;
  seed *= 0xBF58476D1CE4E5B9U;
  seed ^= seed >> 32;
  return (seed & ~uint64_t{7}) |
         5;  // 5 modulo 8: the powers then run through a quarter of all numbers
}

}  // namespace

HashPowers::HashPowers() {
  const uint64_t base = MakeBase();
  uint64_t value = 1;
  for (uint64_t& entry : power) {
    entry = value;
    value *= base;
  }
}

const HashPowers kHashPowers;

}  // namespace postmarker::detail
