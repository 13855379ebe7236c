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

  // All texts in the order of their bytes. The views live as long as the set.
  [[nodiscard]] std::vector<std::string_view> Sorted() const;

 private:
  struct Slot {
    const char* text = nullptr;  // null where the place is free
    uint32_t length = 0;
    uint32_t hash = 0;
  };

  void Grow();

  std::pmr::monotonic_buffer_resource m_memory;
  std::vector<Slot> m_slots;  // a power of two
  size_t m_count = 0;
};

}  // namespace postmarker
