#include "analysis/TokenCountMap.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <numeric>
#include <utility>

#include "analysis/SortPrefix.h"

namespace postmarker {
namespace {

constexpr size_t kLeastWindow = 1024;
constexpr size_t kMostKeptBlocks = 16;   // of entries, by Clear
constexpr size_t kMostReserved = 16384;  // words for which room is made beforehand

uint32_t GappedShape(uint32_t gapped, size_t head, size_t gap, size_t tail) {
  return gapped | static_cast<uint32_t>(head << 16 | gap << 8 | tail);
}

}  // namespace

// A word of a list, copied to the pool, where its neighbours stand beside it.
struct TokenCountMap::SequenceWord {
  uint32_t offset = 0;
  uint32_t length = 0;
  TextHash hash;
};

// Copies the words of a list to the pool, many at a time. The two words before the one that was
// asked for stand in front of it.
class TokenCountMap::SequenceBlock {
 public:
  SequenceBlock(TextPool* pool, const WordList& words) : m_pool(pool), m_left(words.TextSize()) {}

  // The next word of the list. Where a new piece begins, the two before it move there.
  SequenceWord Take(std::string_view word, SequenceWord* first, SequenceWord* second) {
    if (word.size() > m_ready) {
      Begin(word.data(), first, second);
    }
    SequenceWord taken;
    taken.offset = m_next;
    taken.length = static_cast<uint32_t>(word.size());
    taken.hash = TextHash(word);
    m_next += taken.length;
    m_ready -= word.size();
    m_left -= word.size();
    return taken;
  }

 private:
  static constexpr size_t kSize = 16384;

  // `text` is the list's text from the next word on, which follows the two words before it.
  void Begin(const char* text, SequenceWord* first, SequenceWord* second) {
    const size_t kept = first->length + second->length;
    m_ready = std::min(kSize, m_left);
    const uint32_t offset = m_pool->Allocate(kept + m_ready);
    std::memcpy(m_pool->At(offset), text - kept, kept + m_ready);
    first->offset = offset;
    second->offset = offset + first->length;
    m_next = offset + static_cast<uint32_t>(kept);
  }

  TextPool* m_pool;
  size_t m_left;       // bytes of words that were not taken
  size_t m_ready = 0;  // those of them that stand in the pool
  uint32_t m_next = 0;
};

TokenCountMap::Iterator::Iterator(const TokenCountMap* map) : m_map(map) {
  if (map->m_diverted) {
    m_window = std::make_unique<KeyWindow>(map->m_rule, map->m_memory);
    m_window->BeginBehind({});
    FillWindow();
    return;
  }
  m_size = map->m_entries.Size();
  if (m_size <= kMostPlaces && !map->m_isTight) {
    SortPlaces();
  } else {
    SortNumbers();
  }
}

void TokenCountMap::Iterator::SortPlaces() {
  const EntryList& entries = m_map->m_entries;
  char left[kLongestGapped];
  char right[kLongestGapped];
  m_places.reserve(m_size);
  for (size_t i = 0; i < m_size; ++i) {
    const uint64_t prefix = SortPrefix(m_map->KeyOf(entries[i], left));
    m_places.push_back({static_cast<uint32_t>(prefix >> 32), static_cast<uint32_t>(prefix),
                        static_cast<uint32_t>(i)});
  }
  std::sort(m_places.begin(), m_places.end(), [&](const Place& a, const Place& b) {
    if (a.high != b.high) {
      return a.high < b.high;
    }
    return a.low != b.low
               ? a.low < b.low
               : m_map->KeyOf(entries[a.entry], left) < m_map->KeyOf(entries[b.entry], right);
  });
}

// Slower, and with a third of the memory.
void TokenCountMap::Iterator::SortNumbers() {
  const EntryList& entries = m_map->m_entries;
  char left[kLongestGapped];
  char right[kLongestGapped];
  m_numbers.resize(m_size);
  std::iota(m_numbers.begin(), m_numbers.end(), 0U);
  std::sort(m_numbers.begin(), m_numbers.end(), [&](uint32_t a, uint32_t b) {
    return m_map->KeyOf(entries[a], left) < m_map->KeyOf(entries[b], right);
  });
}

void TokenCountMap::Iterator::FillWindow() {
  m_map->m_recount(m_window.get());
  m_window->Sort();
  m_size = m_window->Size();
  m_position = 0;
}

void TokenCountMap::Iterator::NextWindow() {
  if (m_window->BeginNext()) {
    FillWindow();
  }
}

TokenCountMap::Item TokenCountMap::Iterator::operator*() {
  if (m_window != nullptr) {
    return m_window->At(m_position);
  }
  const uint32_t number = m_numbers.empty() ? m_places[m_position].entry : m_numbers[m_position];
  const Entry& entry = m_map->m_entries[number];
  char buffer[kLongestGapped];
  const std::string_view key = m_map->KeyOf(entry, buffer);
  m_text.assign(key);
  return {m_text, entry.count};
}

TokenCountMap::~TokenCountMap() {
  if (m_budget != nullptr) {
    m_budget->Refund(m_charged);
  }
}

std::string_view TokenCountMap::KeyOf(const Entry& entry, char* buffer) const {
  const char* const text = m_pool.At(entry.offset);
  if ((entry.shape & kGapped) == 0) {
    return {text, entry.shape};
  }
  const size_t head = entry.shape >> 16 & 0xFF;
  const size_t gap = entry.shape >> 8 & 0xFF;
  const size_t tail = entry.shape & 0xFF;
  std::memcpy(buffer, text, head);
  std::memcpy(buffer + head, text + head + gap, tail);
  return {buffer, head + tail};
}

bool TokenCountMap::Matches(const Entry& entry, const Wanted& wanted) const {
  const std::string_view head = wanted.head;
  if ((entry.shape & kGapped) == 0 && wanted.tail.empty()) {
    return entry.shape == head.size() &&
           std::memcmp(m_pool.At(entry.offset), head.data(), head.size()) == 0;
  }
  char buffer[kLongestGapped];
  const std::string_view key = KeyOf(entry, buffer);
  return key.size() == head.size() + wanted.tail.size() && key.starts_with(head) &&
         key.ends_with(wanted.tail);
}

// The entry of a key. Where it is missing, null, and *freeSlot is where it belongs in the index, if
// that is not tight.
TokenCountMap::Entry* TokenCountMap::FindEntry(const Wanted& wanted, size_t* freeSlot) {
  *freeSlot = 0;
  if (!m_tight.Empty()) {
    const size_t place = m_tight.Find(
        wanted.hash, [&](uint32_t number) { return Matches(m_entries[number], wanted); });
    return m_tight.IsFree(place) ? nullptr : &m_entries[m_tight.At(place)];
  }
  if (m_slots.empty()) {
    for (size_t i = 0; i < m_entries.Size(); ++i) {
      if (Matches(m_entries[i], wanted)) {
        return &m_entries[i];
      }
    }
    return nullptr;
  }
  const size_t mask = m_slots.size() - 1;
  size_t slot = wanted.hash & mask;
  for (; m_slots[slot].number != 0; slot = (slot + 1) & mask) {
    if (m_slots[slot].hash == wanted.hash) {
      Entry& entry = m_entries[m_slots[slot].number - 1];
      if (Matches(entry, wanted)) {
        return &entry;
      }
    }
  }
  *freeSlot = slot;
  return nullptr;
}

const TokenCountMap::Entry* TokenCountMap::Find(std::string_view key) const {
  size_t freeSlot = 0;
  return const_cast<TokenCountMap*>(this)->FindEntry({key, {}, TextHash(key).Bits()}, &freeSlot);
}

void TokenCountMap::Insert(const Entry& entry, uint32_t hash, size_t freeSlot) {
  const size_t entries = m_entries.Size() + 1;
  AddEntry(entry);
  if (m_isTight) {
    PutTight(hash);
  } else if (entries * 4 <= m_slots.size() * 3) {
    m_slots[freeSlot] = {static_cast<uint32_t>(entries), hash};
  } else if (entries > kFewEntries) {
    InsertAndGrow(hash);
  }
}

void TokenCountMap::AddEntry(const Entry& entry) {
  if (m_entries.Full()) {
    Charge(BlocksMemory(m_entries.Blocks() + 1) - BlocksMemory(m_entries.Blocks()));
    m_entries.AddBlock();
  }
  m_entries.Append(entry);
}

void TokenCountMap::Add(std::string_view key, TextHash hash, int32_t count) {
  if (m_diverted) {
    if (m_window != nullptr) {
      m_window->Add(key, count);
    }
    return;
  }
  const Wanted wanted = {key, {}, hash.Bits()};
  size_t freeSlot = 0;
  if (Entry* const entry = FindEntry(wanted, &freeSlot)) {
    entry->count += count;
    return;
  }
  if (key.size() >= kGapped) {
    throw std::bad_alloc();
  }
  const size_t reserved = m_pool.Reserved();
  const uint32_t offset = m_pool.Add(key);
  if (m_pool.Reserved() != reserved) {
    ChargeHeld();
  }
  Insert({offset, static_cast<uint32_t>(key.size()), count}, wanted.hash, freeSlot);
}

void TokenCountMap::Add(std::string_view prefix, std::string_view key, int32_t count) {
  if (m_diverted && m_window == nullptr) {
    return;
  }
  std::string joined;
  joined.reserve(prefix.size() + key.size());
  joined.append(prefix).append(key);
  Add(joined, count);
}

void TokenCountMap::Insert(const TokenCountMap& other) {
  if (m_diverted && m_window == nullptr) {
    return;
  }
  other.ForEach([this](std::string_view key, int32_t count) {
    if (m_window != nullptr) {
      m_window->AddMissing(key, count);
    } else if (!Contains(key)) {
      Add(key, count);
    }
  });
}

// Counts a key that already stands in the pool.
void TokenCountMap::AddPooled(const Wanted& wanted, const Entry& entry) {
  size_t freeSlot = 0;
  if (Entry* const found = FindEntry(wanted, &freeSlot)) {
    found->count += entry.count;
  } else {
    Insert(entry, wanted.hash, freeSlot);
  }
}

void TokenCountMap::AddPlainSequences(const WordList& words) {
  CheckSequencesFit(words);
  // Most sequences are new.
  Reserve(m_entries.Size() + 3 * std::min(words.Size(), kMostReserved));
  SequenceBlock block(&m_pool, words);
  SequenceWord a;
  SequenceWord b;
  for (const std::string_view word : words) {
    const size_t reserved = m_pool.Reserved();
    const SequenceWord c = block.Take(word, &a, &b);
    if (m_pool.Reserved() != reserved) {
      ChargeHeld();
    }
    const char* const texts = m_pool.At(a.length != 0 ? a.offset : b.offset);
    const TextHash pair = b.hash.Joined(c.hash, c.length);
    if (b.length != 0) {
      const uint32_t length = b.length + c.length;
      AddPooled({{texts + a.length, length}, {}, pair.Bits()}, {b.offset, length, kPairWeight});
    }
    if (a.length != 0) {
      const uint32_t outer = a.hash.Joined(c.hash, c.length).Bits();
      AddPooled({{texts, a.length}, word, outer},
                {a.offset, GappedShape(kGapped, a.length, b.length, c.length), kPairWeight});
      const uint32_t length = a.length + b.length + c.length;
      const uint32_t triple = a.hash.Joined(pair, b.length + c.length).Bits();
      AddPooled({{texts, length}, {}, triple}, {a.offset, length, kTripleWeight});
    }
    a = b;
    b = c;
  }
}

void TokenCountMap::AddPrefixedSequences(const WordList& words, std::string_view prefix) {
  std::string_view a;
  std::string_view b;
  std::string key(prefix);
  const auto add = [&](std::initializer_list<std::string_view> texts, int32_t weight) {
    key.resize(prefix.size());
    for (const std::string_view text : texts) {
      key.append(text);
    }
    Add(key, weight);
  };
  for (const std::string_view c : words) {
    if (!b.empty()) {
      add({b, c}, kPairWeight);
    }
    if (!a.empty()) {
      add({a, c}, kPairWeight);
      add({a, b, c}, kTripleWeight);
    }
    a = b;
    b = c;
  }
}

void TokenCountMap::AddWordSequences(const WordList& words, std::string_view prefix) {
  if (prefix.empty() && words.LongestLength() <= kLongestPiece) {
    AddPlainSequences(words);
  } else {
    AddPrefixedSequences(words, prefix);
  }
}

void TokenCountMap::CapCounts() {
  for (size_t i = 0; i < m_entries.Size(); ++i) {
    m_entries[i].count = std::min(m_entries[i].count, 1);
  }
}

std::optional<int32_t> TokenCountMap::FindCount(std::string_view key) const {
  if (m_diverted) {
    KeyWindow window(m_rule, key.size() + kLeastWindow);
    window.BeginAt(key);
    m_recount(&window);
    window.Sort();
    return window.Size() == 0 ? std::nullopt : std::optional(window.At(0).count);
  }
  const Entry* const entry = Find(key);
  return entry == nullptr ? std::nullopt : std::optional(entry->count);
}

int32_t TokenCountMap::Count(std::string_view key) const {
  return FindCount(key).value_or(0);
}

bool TokenCountMap::Contains(std::string_view key) const {
  return FindCount(key).has_value();
}

size_t TokenCountMap::CountKeys() const {
  size_t count = 0;
  KeyWindow window(m_rule, m_memory);
  window.BeginBehind({});
  do {
    m_recount(&window);
    count += window.Size();
  } while (window.BeginNext());
  return count;
}

void TokenCountMap::Clear() {
  m_diverted = false;
  m_window = nullptr;
  m_recount = nullptr;
  if (m_entries.Size() == 0 && !m_isTight) {
    return;
  }
  m_entries.Clear(kMostKeptBlocks);
  if (m_slots.size() > kMostKeptSlots) {
    m_slots = std::vector<Slot>();
  }
  m_isTight = false;
  m_tight.Reset(0);
  std::fill(m_slots.begin(), m_slots.end(), Slot{0, 0});
  m_pool.Clear();
  ChargeHeld();
}

void TokenCountMap::Drop() {
  Clear();
  m_diverted = true;
}

void TokenCountMap::ReadThrough(Recount recount, KeyWindow::Rule rule, size_t memory) {
  m_entries.Clear(0);
  m_slots = std::vector<Slot>();
  m_isTight = false;
  m_tight.Reset(0);
  m_pool = TextPool();
  ChargeHeld();
  m_diverted = true;
  m_window = nullptr;
  m_recount = std::move(recount);
  m_rule = rule;
  m_memory = memory;
}

}  // namespace postmarker
