// Texts with counts, in the order of the texts.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "analysis/KeyWindow.h"
#include "analysis/MemoryBudget.h"
#include "analysis/TagIndex.h"
#include "analysis/TextHash.h"
#include "analysis/TextPool.h"
#include "analysis/WordList.h"

namespace postmarker {

// What a pair of neighbouring words counts, and three in a row.
inline constexpr int32_t kPairWeight = 4;
inline constexpr int32_t kTripleWeight = 16;

// A map from narrow text to int32 that is made for counting: a flat table, and one pool for the
// texts. The order of the keys is made when somebody walks the map, not while counting. Keys
// compare byte by byte. A map that is too large for the memory it may take is not held at all: it
// is counted anew, stretch by stretch, while somebody walks it. One thread at a time.
class TokenCountMap {
 public:
  // One key and its count. The view lives until the iterator moves on.
  using Item = KeyWindow::Item;

  // Counts everything anew into a window of the map.
  using Recount = std::function<void(KeyWindow* window)>;

  // Walks the map in the order of its keys. Valid until the map is changed.
  class Iterator {
   public:
    Item operator*();
    Iterator& operator++() {
      if (++m_position == m_size && m_window != nullptr) {
        NextWindow();
      }
      return *this;
    }
    // True while there is an item to read.
    [[nodiscard]] bool HasItem() const { return m_position < m_size; }

   private:
    friend class TokenCountMap;

    // An entry and the first bytes of its key as a number that orders as they do.
    struct Place {
      uint32_t high;
      uint32_t low;
      uint32_t entry;
    };

    explicit Iterator(const TokenCountMap* map);
    void SortPlaces();
    void SortNumbers();
    void FillWindow();
    void NextWindow();

    const TokenCountMap* m_map;
    std::vector<Place> m_places;          // of a map of moderate size
    std::vector<uint32_t> m_numbers;      // of entries, in order, of a large one
    std::unique_ptr<KeyWindow> m_window;  // of a map that is not held
    size_t m_size = 0;
    size_t m_position = 0;
    std::string m_text;
  };

  struct End {};
  friend bool operator==(const Iterator& iterator, End) { return !iterator.HasItem(); }

  TokenCountMap() = default;
  TokenCountMap(const TokenCountMap&) = delete;
  TokenCountMap& operator=(const TokenCountMap&) = delete;
  ~TokenCountMap();

  // What the map takes from now on, with what walking it takes, is charged to `budget`, which must
  // outlive it.
  void ChargeTo(MemoryBudget* budget) { m_budget = budget; }

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
  [[nodiscard]] size_t Size() const { return m_diverted ? CountKeys() : m_entries.Size(); }
  // The keys that the map holds itself.
  [[nodiscard]] size_t Held() const { return m_entries.Size(); }
  [[nodiscard]] bool Empty() const { return m_diverted ? !begin().HasItem() : Size() == 0; }

  // The map is empty and holds its own keys.
  void Clear();

  // From now on, up to the next Clear, the map finds its keys through an index that takes a third
  // of the memory, and twice the time when it grows. A map that does so already gives up what it
  // has to spare. Small maps stay as they are. Made to be called by the relief of the budget.
  void Tighten();

  // The map holds nothing any more: whoever reads it has everything counted anew, and what is added
  // is passed over. Reading it takes about `memory` bytes. REQUIRES: `recount` lives as long as the
  // map is read.
  void ReadThrough(Recount recount, KeyWindow::Rule rule, size_t memory);

  // The map is empty, and what is added is passed over, up to the next Clear.
  void Drop();

  // What is added to a map that is read through goes to `window`, or nowhere where it is null.
  void DivertTo(KeyWindow* window) { m_window = window; }

  // False where keys that begin with `prefix` go nowhere, however many are added.
  [[nodiscard]] bool Takes(std::string_view prefix) const {
    return !m_diverted || (m_window != nullptr && m_window->MayHold(prefix));
  }

  [[nodiscard]] Iterator begin() const { return Iterator(this); }
  [[nodiscard]] End end() const { return {}; }

  // Calls visit(key, count) for each key, in no particular order. The view lives during the call.
  template <class Visit>
  void ForEach(Visit visit) const {
    if (m_diverted) {
      for (const Item& item : *this) {
        visit(item.key, item.count);
      }
      return;
    }
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
    [[nodiscard]] bool Full() const { return m_size == m_blocks.size() * kBlock; }
    void AddBlock() { m_blocks.emplace_back(new Entry[kBlock]); }
    // REQUIRES: the list is not full.
    void Append(const Entry& entry) { (*this)[m_size++] = entry; }
    // Keeps some blocks for what comes next.
    void Clear(size_t blocks) {
      m_size = 0;
      m_blocks.resize(blocks < m_blocks.size() ? blocks : m_blocks.size());
    }
    [[nodiscard]] size_t Blocks() const { return m_blocks.size(); }

    static constexpr size_t kBlock = 512;

   private:
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
  static constexpr size_t kMostPlaces = 32768;
  static constexpr size_t kFewEntries = 8;        // up to so many are found by walking them
  static constexpr size_t kMostKeptSlots = 4096;  // a larger index grows slower, and Clear frees it

  // What an entry without a text of its own takes, with its place in a tight index, and in a walk.
  static constexpr size_t kTightEntry =
      sizeof(Entry) + TagIndex::kBytesPerPlace * 8 / 7 + 1 + sizeof(uint32_t);

  struct SequenceWord;
  class SequenceBlock;

  [[nodiscard]] std::string_view KeyOf(const Entry& entry, char* buffer) const;
  [[nodiscard]] bool Matches(const Entry& entry, const Wanted& wanted) const;
  [[nodiscard]] std::optional<int32_t> FindCount(std::string_view key) const;
  [[nodiscard]] const Entry* Find(std::string_view key) const;
  [[nodiscard]] Entry* FindEntry(const Wanted& wanted, size_t* freeSlot);
  void Insert(const Entry& entry, uint32_t hash, size_t freeSlot);
  void InsertAndGrow(uint32_t hash);
  void Reserve(size_t entries);
  void Rehash(size_t slotCount);
  void Tighten(size_t entries);
  void MakeTightIndex(size_t entries);
  [[nodiscard]] size_t MostEntries() const;
  void PutTight(uint32_t hash);
  void AddPooled(const Wanted& wanted, const Entry& entry);
  void CheckSequencesFit(const WordList& words) const;
  void AddPlainSequences(const WordList& words);
  void AddPrefixedSequences(const WordList& words, std::string_view prefix);
  [[nodiscard]] size_t CountKeys() const;
  void AddEntry(const Entry& entry);
  void Charge(size_t bytes);
  void ChargeHeld();
  [[nodiscard]] size_t HeldMemory() const;
  [[nodiscard]] size_t BlocksMemory(size_t blocks) const;

  EntryList m_entries;
  std::vector<Slot> m_slots;  // a power of two, empty while there are few entries
  bool m_isTight = false;
  TagIndex m_tight;  // takes their place where there is no room for them
  TextPool m_pool;
  MemoryBudget* m_budget = nullptr;
  size_t m_charged = 0;
  bool m_diverted = false;
  KeyWindow* m_window = nullptr;
  Recount m_recount;
  KeyWindow::Rule m_rule = KeyWindow::Rule::kSum;
  size_t m_memory = 0;
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
