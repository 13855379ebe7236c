// A set of narrow texts, made for hundreds of thousands of short ones.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory_resource>
#include <string_view>
#include <vector>

namespace postmarker {

// Texts are only added. They lie in few blocks of memory, behind a flat table of their hashes,
// which nobody can foresee: no choice of texts makes the set slow. From one thread at a time.
class ImTextSet {
 public:
  ImTextSet();
  ImTextSet(const ImTextSet&) = delete;
  ImTextSet& operator=(const ImTextSet&) = delete;

  // Adds a copy of the text; false if it is there already.
  bool Add(std::string_view text);

  [[nodiscard]] size_t Size() const { return m_texts.size(); }

  // All texts in the order of their bytes. The views live as long as the set.
  [[nodiscard]] std::vector<std::string_view> Sorted() const;

 private:
  struct Slot {
    uint32_t hash = 0;
    uint32_t number = 0;  // of the text, from 1; 0 where the place is free
  };

  void Grow();

  std::pmr::monotonic_buffer_resource m_memory;
  std::vector<std::string_view> m_texts;
  std::vector<Slot> m_slots;  // a power of two
};

}  // namespace postmarker
