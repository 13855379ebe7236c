// A bounded stretch of a map of texts and counts that is too large to be held whole.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "analysis/SortPrefix.h"
#include "analysis/TagIndex.h"
#include "analysis/TextHash.h"

namespace postmarker {

// Takes everything that is counted for a map and keeps as much as its memory allows: the smallest
// keys behind a lower bound, with their whole counts. Whoever counts everything again for each
// window, and moves the bound on behind the last key of the window before, sees the whole map in
// its order. About half of the memory or more is filled in each pass, so the number of passes
// is the size of the map through that of the window. One thread at a time.
class KeyWindow {
 public:
  // How a count follows from what is added with Add.
  enum class Rule : uint8_t {
    kSum,   // all of it
    kOnce,  // 1, however often the key came
  };

  struct Item {
    std::string_view key;
    int32_t count;
  };

  // About `memory` bytes are taken, from the first key on. A key that takes more makes it grow.
  KeyWindow(Rule rule, size_t memory);

  // Begins the stretch behind `lower`, or at the start of the map where that is empty. What the
  // window held is gone.
  void BeginBehind(std::string_view lower);

  // Begins the stretch behind the one that was filled. False where that was the last.
  bool BeginNext();

  // Begins the stretch of one key alone.
  void BeginAt(std::string_view key);

  // Counts a key, which is not empty.
  void Add(std::string_view key, int32_t count) {
    if (Holds(key)) {
      AddHeld(key, TextHash(key), count, m_rule == Rule::kOnce);
    }
  }

  // Adds to the count of a key, whatever the rule. REQUIRES: `hash` is the key's, and `weight` a
  // multiple of 4.
  void AddWeight(std::string_view key, TextHash hash, int32_t weight) {
    if (Holds(key)) {
      AddHeld(key, hash, weight, false);
    }
  }

  // False where no key that begins with `prefix` can belong to the stretch.
  [[nodiscard]] bool MayHold(std::string_view prefix) const {
    return (!m_hasUpper || prefix < m_upper) &&
           (std::string_view(m_lower).substr(0, prefix.size()) <= prefix);
  }

  // What may stand behind `prefix` in a key of the stretch, told by the SortPrefix of that rest:
  // from `low` to `high`. Another rest may still not belong, as may one within. None does where
  // `low` is above `high`. Valid while Bounds() stays the same.
  struct RestRange {
    uint64_t low = 0;
    uint64_t high = ~uint64_t{0};
  };
  [[nodiscard]] RestRange RestsBehind(std::string_view prefix) const;

  // Another number each time that the stretch begins anew or ends earlier.
  [[nodiscard]] uint32_t Bounds() const { return m_bounds; }

  // Counts a key if it has not come so far.
  void AddMissing(std::string_view key, int32_t count);

  // What comes from here on for the first time is counted by NewKeys(). For the rule kOnce.
  void BeginNew() { m_markNew = true; }
  // Keys of the window that came first behind BeginNew.
  [[nodiscard]] size_t NewKeys() const;

  // Puts the keys in order; nothing may be added afterwards.
  void Sort();

  [[nodiscard]] size_t Size() const { return m_count; }

  // Keys of the sorted window. Views live until the window begins anew.
  [[nodiscard]] Item At(size_t index) const;

 private:
  struct Record;

  [[nodiscard]] bool Holds(std::string_view key) const {
    const uint64_t prefix = SortPrefix(key);
    if (prefix < m_lowerPrefix || (m_hasUpper && prefix > m_upperPrefix)) {
      return false;
    }
    return (prefix > m_lowerPrefix || m_lower.empty() || IsBehindLower(key)) &&
           (!m_hasUpper || prefix < m_upperPrefix || key < m_upper);
  }
  [[nodiscard]] bool IsBehindLower(std::string_view key) const {
    return m_lowerBelongs ? key >= m_lower : key > m_lower;
  }

  void AddHeld(std::string_view key, TextHash textHash, int32_t count, bool once);
  void Begin(std::string_view lower, bool lowerBelongs);
  [[nodiscard]] Record ReadRecord(uint32_t offset) const;
  [[nodiscard]] std::string_view KeyAt(uint32_t offset) const {
    const char* const length = m_bytes.data() + offset + sizeof(uint32_t);
    if (static_cast<unsigned char>(*length) < 0x80) {
      return {length + 1, static_cast<size_t>(static_cast<unsigned char>(*length))};
    }
    return LongKeyAt(offset);
  }
  [[nodiscard]] std::string_view LongKeyAt(uint32_t offset) const;
  [[nodiscard]] bool IsInFront(uint32_t a, uint32_t b, size_t shared) const;
  [[nodiscard]] size_t SharedPrefix() const;
  void MakeIndex();
  [[nodiscard]] size_t Find(std::string_view key, uint32_t hash) const {
    return m_index.Find(hash, [&](uint32_t offset) { return KeyAt(offset) == key; });
  }
  void Append(std::string_view key, uint32_t hash, size_t place, uint32_t value);
  bool MakeRoom(size_t recordSize, std::string_view key);
  void Cut(std::string_view next);
  [[nodiscard]] std::vector<std::string_view> SortedSample(size_t step) const;
  void DropCut();
  void IndexAgain();
  void SetUpper(std::string_view upper);

  Rule m_rule;
  size_t m_memory;
  std::string m_lower;
  std::string m_upper;
  uint64_t m_lowerPrefix = 0;
  uint64_t m_upperPrefix = 0;
  bool m_lowerBelongs = false;
  bool m_hasUpper = false;
  bool m_markNew = false;
  uint32_t m_bounds = 0;
  TagIndex m_index;              // of offsets
  std::span<uint32_t> m_sorted;  // offsets in the order of the keys, once they are sorted
  std::vector<char> m_bytes;     // records
  size_t m_used = 0;             // of m_bytes
  size_t m_count = 0;
};

}  // namespace postmarker
