// Numbers in the order of the texts that they stand for.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

namespace postmarker {

// The first 8 bytes of a text as a number that orders as they do.
inline uint64_t SortPrefix(std::string_view text) {
  uint64_t prefix = 0;
  if (text.size() >= sizeof(prefix)) {
    std::memcpy(&prefix, text.data(), sizeof(prefix));
    return std::endian::native == std::endian::little ? __builtin_bswap64(prefix) : prefix;
  }
  for (const char c : text) {
    prefix = prefix << 8 | static_cast<unsigned char>(c);
  }
  return text.empty() ? 0 : prefix << (8 * (sizeof(prefix) - text.size()));
}

// Sorts numbers by the bytes of textOf(number). Most texts differ in their first 8 bytes, so these
// are compared beside the number.
template <class TextOf>
void SortByText(std::vector<uint32_t>* numbers, TextOf textOf) {
  constexpr size_t kMaxPlaces = 32768;
  if (numbers->size() > kMaxPlaces) {
    // The places of so many would take more memory than what is sorted.
    std::sort(numbers->begin(), numbers->end(),
              [&](uint32_t a, uint32_t b) { return textOf(a) < textOf(b); });
    return;
  }
  struct Place {
    uint64_t prefix;
    uint32_t number;
  };
  std::vector<Place> places;
  places.reserve(numbers->size());
  for (const uint32_t number : *numbers) {
    places.push_back({SortPrefix(textOf(number)), number});
  }
  std::sort(places.begin(), places.end(), [&](const Place& a, const Place& b) {
    return a.prefix != b.prefix ? a.prefix < b.prefix : textOf(a.number) < textOf(b.number);
  });
  std::transform(places.begin(), places.end(), numbers->begin(),
                 [](const Place& place) { return place.number; });
}

}  // namespace postmarker
