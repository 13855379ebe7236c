// An open table of numbers that are found by hash.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace postmarker {

// Numbers of things that stand elsewhere, found by the hashes of the things' keys: 4 bytes a place,
// and one stretch of memory. There may be any number of places; one must stay free, and lookups are
// fast as long as a quarter is. One thread at a time.
class HashIndex {
 public:
  // True if `count` numbers leave a quarter of the places free.
  [[nodiscard]] bool HasRoomFor(size_t count) const { return count * 4 <= m_places.size() * 3; }

  [[nodiscard]] size_t Places() const { return m_places.size(); }

  // Empties the index and gives it so many places. The old ones are released first.
  void Reset(size_t places) {
    m_places = std::vector<uint32_t>();
    m_places.resize(places);
  }

  // Empties the index, and keeps its places.
  void Clear() { m_places.assign(m_places.size(), 0); }

  // The place of the number with that hash for which matches(number) is true, or the free place
  // where it belongs. REQUIRES: there is a free place.
  template <class Matches>
  [[nodiscard]] size_t Find(uint32_t hash, Matches matches) const {
    auto place = static_cast<size_t>((uint64_t{hash} * m_places.size()) >> 32);
    while (m_places[place] != 0 && !matches(m_places[place] - 1)) {
      place = place + 1 == m_places.size() ? 0 : place + 1;
    }
    return place;
  }

  [[nodiscard]] bool IsFree(size_t place) const { return m_places[place] == 0; }

  // REQUIRES: the place is not free.
  [[nodiscard]] uint32_t At(size_t place) const { return m_places[place] - 1; }

  // REQUIRES: `number` is below 2^32 - 1.
  void Set(size_t place, uint32_t number) { m_places[place] = number + 1; }

  // Sets a number that is known to be new.
  void Add(uint32_t hash, uint32_t number) {
    Set(Find(hash, [](uint32_t /*other*/) { return false; }), number);
  }

 private:
  std::vector<uint32_t> m_places;  // numbers plus 1; 0 in a free place
};

}  // namespace postmarker
