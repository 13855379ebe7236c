// Sorting of many texts by their first bytes.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>

namespace postmarker {
namespace detail {

constexpr size_t kPrefixBytes = sizeof(uint64_t);

// How often each byte stands at each place of the prefixes.
using ByteCounts = std::array<std::array<uint32_t, 256>, kPrefixBytes>;

inline uint8_t PrefixByte(uint64_t prefix, size_t place) {
  return static_cast<uint8_t>(prefix >> (8 * place));
}

template <class Key>
ByteCounts CountBytes(std::span<const Key> keys) {
  ByteCounts counts = {};
  for (const Key& key : keys) {
    for (size_t place = 0; place < kPrefixBytes; ++place) {
      ++counts[place][PrefixByte(key.prefix, place)];
    }
  }
  return counts;
}

}  // namespace detail

// Sorts keys by their member `prefix`, a uint64_t; the order of equal ones is left open. `spare` is
// room for at least as many keys. The time is linear, and places where all keys have one byte cost
// nothing: texts that come together often begin alike.
template <class Key>
void SortByPrefix(std::span<Key> keys, std::span<Key> spare) {
  // So few that comparing them is faster.
  constexpr size_t kFew = 200;
  if (keys.size() <= kFew) {
    std::sort(keys.begin(), keys.end(),
              [](const Key& a, const Key& b) { return a.prefix < b.prefix; });
    return;
  }
  detail::ByteCounts counts = detail::CountBytes(std::span<const Key>(keys));
  std::span<Key> from = keys;
  std::span<Key> to = spare.first(keys.size());
  for (size_t place = 0; place < detail::kPrefixBytes; ++place) {
    std::array<uint32_t, 256>& begins = counts[place];
    if (begins[detail::PrefixByte(keys[0].prefix, place)] == keys.size()) {
      continue;
    }
    uint32_t begin = 0;
    for (uint32_t& count : begins) {
      begin += std::exchange(count, begin);
    }
    for (const Key& key : from) {
      to[begins[detail::PrefixByte(key.prefix, place)]++] = key;
    }
    std::swap(from, to);
  }
  if (from.data() != keys.data()) {
    std::copy(from.begin(), from.end(), keys.begin());
  }
}

}  // namespace postmarker
