// Texts with counts, in the order of the texts.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "analysis/TextHash.h"
#include "analysis/TextPool.h"
#include "analysis/WordList.h"

namespace postmarker {

// A map from narrow text to int32 that is made for counting: a flat table, and one pool for the
// texts. The order of the keys is made when somebody walks the map, not while counting. Keys
// compare byte by byte. One thread at a time.
class TokenCountMap {
 public:
  // One key and its count. The view lives until the iterator moves on.
  struct Item {
    std::string_view key;
    int32_t count;
  };

  // Walks the map in the order of its keys. Valid until the map is changed.
  class Iterator {
   public:
    Iterator(const TokenCountMap* map, std::vector<uint32_t> order)
        : m_map(map), m_order(std::move(order)) {}
    Item operator*();
    Iterator& operator++() {
      ++m_position;
      return *this;
    }
    // True while there is an item to read.
    [[nodiscard]] bool HasItem() const { return m_position < m_order.size(); }

   private:
    const TokenCountMap* m_map;
    std::vector<uint32_t> m_order;
    size_t m_position = 0;
    std::string m_text;
  };

  struct End {};
  friend bool operator==(const Iterator& iterator, End) { return !iterator.HasItem(); }

  // AddCount: an empty key is ignored, a new one gets `count`, one that is there gets it added.
  void Add(std::string_view key, int32_t count) {
    if (!key.empty()) {
      Add(key, TextHash(key), count);
    }
  }

  // The same for a key whose hash is known. REQUIRES: the key is not empty, and `hash` is its own.
  void Add(std::string_view key, TextHash hash, int32_t count);

  // The same for two texts put together, the first of which may be empty.
  void Add(std::string_view prefix, std::string_view key, int32_t count);

  // Adds all of `other`'s keys that are missing here with their counts; keys that are there keep
  // theirs.
  void Insert(const TokenCountMap& other);

  // Adds what follows from neighbours in a list of words: each pair of words and each pair with one
  // word between them with 4, each three in a row with 16, put together without anything between
  // them. `prefix` stands in front of each key.
  void AddWordSequences(const WordList& words, std::string_view prefix = {});

  // Makes 1 of every count above it.
  void CapCounts();

  // The count of a key, 0 where it is missing.
  [[nodiscard]] int32_t Count(std::string_view key) const;
  [[nodiscard]] bool Contains(std::string_view key) const;
  [[nodiscard]] size_t Size() const { return m_entries.Size(); }
  [[nodiscard]] bool Empty() const { return m_entries.Size() == 0; }
  void Clear();

  [[nodiscard]] Iterator begin() const { return {this, SortedOrder()}; }
  [[nodiscard]] End end() const { return {}; }

  // Calls visit(key, count) for each key, in no particular order. The view lives during the call.
  template <class Visit>
  void ForEach(Visit visit) const {
    char buffer[kLongestGapped];
    for (size_t i = 0; i < m_entries.Size(); ++i) {
      visit(KeyOf(m_entries[i], buffer), m_entries[i].count);
    }
  }

 private:
  // A key is one text in the pool or, where `shape` says so, two pieces of one with a gap between
  // them.
  struct Entry {
    uint32_t offset;
    uint32_t shape;  // a length, or kGapped and the lengths of head, gap and tail
    int32_t count;
  };

  // Entries in blocks that stay where they are: a map that grows is never copied.
  class EntryList {
   public:
    [[nodiscard]] size_t Size() const { return m_size; }
    Entry& operator[](size_t index) { return m_blocks[index / kBlock][index % kBlock]; }
    const Entry& operator[](size_t index) const { return m_blocks[index / kBlock][index % kBlock]; }
    void Append(const Entry& entry) {
      if (m_size == m_blocks.size() * kBlock) {
        m_blocks.emplace_back(new Entry[kBlock]);
      }
      (*this)[m_size++] = entry;
    }
    void Clear() { m_size = 0; }

   private:
    static constexpr size_t kBlock = 512;

    std::vector<std::unique_ptr<Entry[]>> m_blocks;
    size_t m_size = 0;
  };

  // A place of the index. Keys of another hash are passed over without a look at their entries.
  struct Slot {
    uint32_t number;  // of the entry, plus 1; 0 where the place is free
    uint32_t hash;
  };

  // A key to look for: two pieces, the second of which may be empty.
  struct Wanted {
    std::string_view head;
    std::string_view tail;
    uint32_t hash;
  };

  static constexpr uint32_t kGapped = 0x80000000U;
  static constexpr size_t kLongestPiece = 127;
  static constexpr size_t kLongestGapped = 2 * kLongestPiece;
  static constexpr size_t kFewEntries = 8;  // up to so many are found by walking them

  struct SequenceWord;
  class SequenceBlock;

  [[nodiscard]] std::string_view KeyOf(const Entry& entry, char* buffer) const;
  [[nodiscard]] bool Matches(const Entry& entry, const Wanted& wanted) const;
  [[nodiscard]] const Entry* Find(std::string_view key) const;
  [[nodiscard]] Entry* FindEntry(const Wanted& wanted, size_t* freeSlot);
  void Insert(const Entry& entry, uint32_t hash, size_t freeSlot);
  void InsertAndGrow(uint32_t hash);
  void Reserve(size_t entries);
  void Rehash(size_t slotCount);
  void AddPooled(const Wanted& wanted, const Entry& entry);
  void AddPlainSequences(const WordList& words);
  void AddPrefixedSequences(const WordList& words, std::string_view prefix);
  [[nodiscard]] std::vector<uint32_t> SortedOrder() const;

  EntryList m_entries;
  std::vector<Slot> m_slots;  // a power of two, empty while there are few entries
  TextPool m_pool;
};

// AddCount under the name that callers know.
inline void AddCount(std::string_view key, TokenCountMap* map, int32_t count) {
  map->Add(key, count);
}

// The sequences of `words` added to `map`.
inline void AddWordSequences(TokenCountMap* map, const WordList& words) {
  map->AddWordSequences(words);
}

}  // namespace postmarker
