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

// Moves keys to another place, in the order of one byte of their prefixes; equal ones stay in
// theirs.
template <class Key>
void MoveByByte(std::span<const Key> from, std::span<Key> to, int shift) {
  std::array<uint32_t, 256> ends = {};
  for (const Key& key : from) {
    ++ends[key.prefix >> shift & 0xFF];
  }
  uint32_t begin = 0;
  for (uint32_t& end : ends) {
    begin += std::exchange(end, begin);
  }
  for (const Key& key : from) {
    to[ends[key.prefix >> shift & 0xFF]++] = key;
  }
}

}  // namespace detail

// Sorts keys by their member `prefix`, a uint64_t; the order of equal ones is left open. `spare` is
// room for at least as many keys. The time is linear, and bytes that are the same in all prefixes
// cost nothing: texts that come together often begin alike.
template <class Key>
void SortByPrefix(std::span<Key> keys, std::span<Key> spare) {
  // So few that comparing them is faster.
  constexpr size_t kFew = 200;
  if (keys.size() <= kFew) {
    std::sort(keys.begin(), keys.end(),
              [](const Key& a, const Key& b) { return a.prefix < b.prefix; });
    return;
  }
  uint64_t differing = 0;
  for (const Key& key : keys) {
    differing |= key.prefix ^ keys[0].prefix;
  }
  std::span<Key> from = keys;
  std::span<Key> to = spare.first(keys.size());
  for (int shift = 0; shift < 64; shift += 8) {
    if ((differing >> shift & 0xFF) != 0) {
      detail::MoveByByte(std::span<const Key>(from), to, shift);
      std::swap(from, to);
    }
  }
  if (from.data() != keys.data()) {
    std::copy(from.begin(), from.end(), keys.begin());
  }
}

}  // namespace postmarker
