// An index of hashes that takes little memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace postmarker {

// Numbers of things that are found by the hash of their keys: 5 bytes for each place, and any
// number of places. It keeps 8 bits of each hash, so nearly all others are passed over without a
// look at their keys. A free place must be left. One thread at a time.
class TagIndex {
 public:
  static constexpr size_t kBytesPerPlace = sizeof(uint32_t) + 1;

  // Empties the index and gives it so many places.
  void Reset(size_t places) {
    m_numbers = std::vector<uint32_t>();
    m_tags = std::vector<uint8_t>();
    m_numbers.resize(places);
    m_tags.resize(places);
  }

  // Empties the index, and keeps its places.
  void Clear() { m_numbers.assign(m_numbers.size(), 0); }

  [[nodiscard]] size_t Places() const { return m_numbers.size(); }
  [[nodiscard]] bool Empty() const { return m_numbers.empty(); }

  // The place of a key of that hash for whose number matches(number) is true, or the free one where
  // it belongs.
  template <class Matches>
  [[nodiscard]] size_t Find(uint32_t hash, Matches matches) const {
    const auto tag = static_cast<uint8_t>(hash);
    auto place = static_cast<size_t>((uint64_t{hash} * m_numbers.size()) >> 32);
    while (m_numbers[place] != 0 && (m_tags[place] != tag || !matches(m_numbers[place] - 1))) {
      place = place + 1 == m_numbers.size() ? 0 : place + 1;
    }
    return place;
  }

  // The free place where a new key belongs.
  [[nodiscard]] size_t FindFree(uint32_t hash) const {
    return Find(hash, [](uint32_t /*number*/) { return false; });
  }

  [[nodiscard]] bool IsFree(size_t place) const { return m_numbers[place] == 0; }

  // REQUIRES: the place is not free.
  [[nodiscard]] uint32_t At(size_t place) const { return m_numbers[place] - 1; }

  void Set(size_t place, uint32_t hash, uint32_t number) {
    m_numbers[place] = number + 1;
    m_tags[place] = static_cast<uint8_t>(hash);
  }

  // Gives up the places and leaves the numbers, one behind the other, for the caller to order. They
  // live until Clear or Reset, which must follow.
  std::span<uint32_t> TakeNumbers();

 private:
  std::vector<uint32_t> m_numbers;  // plus 1; 0 where the place is free
  std::vector<uint8_t> m_tags;
};

}  // namespace postmarker
