#include "analysis/TokenCountMap.h"

#include <algorithm>
#include <cstring>
#include <numeric>

namespace postmarker {
namespace {

constexpr int32_t kPairWeight = 4;
constexpr int32_t kTripleWeight = 16;
constexpr size_t kFirstSlots = 32;

uint32_t GappedShape(uint32_t gapped, size_t head, size_t gap, size_t tail) {
  return gapped | static_cast<uint32_t>(head << 16 | gap << 8 | tail);
}

// The first 8 bytes as a number that orders as the bytes do.
uint64_t SortPrefix(std::string_view key) {
  uint64_t prefix = 0;
  for (size_t i = 0; i < 8; ++i) {
    prefix = prefix << 8 | (i < key.size() ? static_cast<unsigned char>(key[i]) : 0U);
  }
  return prefix;
}

}  // namespace

// A word of a list, copied to the pool, where its neighbours stand beside it.
struct TokenCountMap::SequenceWord {
  uint32_t offset = 0;
  uint32_t length = 0;
  TextHash hash;
};

// A piece of the pool that takes words one behind the other.
class TokenCountMap::SequenceBlock {
 public:
  SequenceBlock(TextPool* pool, size_t textSize) : m_pool(pool), m_left(textSize) {}

  // Copies a word behind the two before it. Where there is no room, a new piece begins with these
  // two.
  SequenceWord Append(std::string_view word, SequenceWord* first, SequenceWord* second) {
    if (m_used + word.size() > m_capacity) {
      Begin(first, second);
    }
    m_left -= word.size();
    return Put(word);
  }

 private:
  static constexpr size_t kSize = 16384;

  void Begin(SequenceWord* first, SequenceWord* second) {
    const size_t kept = first->length + second->length;
    m_capacity = std::min(kSize, kept + m_left);
    std::string texts;
    if (kept > 0) {
      texts.append(m_pool->At(first->offset), first->length);
      texts.append(m_pool->At(second->offset), second->length);
    }
    m_offset = m_pool->Allocate(m_capacity);
    m_used = 0;
    const std::string_view both = texts;
    first->offset = Put(both.substr(0, first->length)).offset;
    second->offset = Put(both.substr(first->length)).offset;
  }

  SequenceWord Put(std::string_view word) {
    SequenceWord put;
    put.offset = m_offset + static_cast<uint32_t>(m_used);
    put.length = static_cast<uint32_t>(word.size());
    put.hash = TextHash(word);
    std::memcpy(m_pool->At(m_offset) + m_used, word.data(), word.size());
    m_used += word.size();
    return put;
  }

  TextPool* m_pool;
  size_t m_left;
  uint32_t m_offset = 0;
  size_t m_used = 0;
  size_t m_capacity = 0;
};

TokenCountMap::Item TokenCountMap::Iterator::operator*() {
  const Entry& entry = m_map->m_entries[m_order[m_position]];
  char buffer[kLongestGapped];
  const std::string_view key = m_map->KeyOf(entry, buffer);
  m_text.assign(key);
  return {m_text, entry.count};
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

bool TokenCountMap::Matches(const Entry& entry, std::string_view key) const {
  const char* const text = m_pool.At(entry.offset);
  if ((entry.shape & kGapped) == 0) {
    return entry.shape == key.size() && std::memcmp(text, key.data(), key.size()) == 0;
  }
  const size_t head = entry.shape >> 16 & 0xFF;
  const size_t gap = entry.shape >> 8 & 0xFF;
  const size_t tail = entry.shape & 0xFF;
  return head + tail == key.size() && std::memcmp(text, key.data(), head) == 0 &&
         std::memcmp(text + head + gap, key.data() + head, tail) == 0;
}

const TokenCountMap::Entry* TokenCountMap::Find(std::string_view key, uint32_t hash) const {
  if (m_slots.empty()) {
    for (const Entry& entry : m_entries) {
      if (entry.hash == hash && Matches(entry, key)) {
        return &entry;
      }
    }
    return nullptr;
  }
  const size_t mask = m_slots.size() - 1;
  for (size_t slot = hash & mask; m_slots[slot] != 0; slot = (slot + 1) & mask) {
    const Entry& entry = m_entries[m_slots[slot] - 1];
    if (entry.hash == hash && Matches(entry, key)) {
      return &entry;
    }
  }
  return nullptr;
}

void TokenCountMap::Rehash(size_t slotCount) {
  if (m_slots.capacity() < slotCount) {
    m_slots = std::vector<uint32_t>();  // the old index goes before the new one comes
  }
  m_slots.assign(slotCount, 0);
  const size_t mask = slotCount - 1;
  for (size_t i = 0; i < m_entries.size(); ++i) {
    size_t slot = m_entries[i].hash & mask;
    while (m_slots[slot] != 0) {
      slot = (slot + 1) & mask;
    }
    m_slots[slot] = static_cast<uint32_t>(i + 1);
  }
}

void TokenCountMap::Insert(uint32_t offset, uint32_t hash, uint32_t shape, int32_t count) {
  const size_t entries = m_entries.size() + 1;
  if (m_slots.empty() ? entries > kFewEntries : entries * 4 > m_slots.size() * 3) {
    Rehash(std::max(kFirstSlots, m_slots.size() * 2));
  }
  m_entries.push_back({offset, hash, shape, count});
  if (m_slots.empty()) {
    return;
  }
  const size_t mask = m_slots.size() - 1;
  size_t slot = hash & mask;
  while (m_slots[slot] != 0) {
    slot = (slot + 1) & mask;
  }
  m_slots[slot] = static_cast<uint32_t>(entries);
}

void TokenCountMap::Add(std::string_view key, TextHash hash, int32_t count) {
  const uint32_t bits = hash.Bits();
  if (Entry* const entry = Find(key, bits)) {
    entry->count += count;
    return;
  }
  if (key.size() >= kGapped) {
    throw std::bad_alloc();
  }
  Insert(m_pool.Add(key), bits, static_cast<uint32_t>(key.size()), count);
}

void TokenCountMap::Add(std::string_view prefix, std::string_view key, int32_t count) {
  std::string joined;
  joined.reserve(prefix.size() + key.size());
  joined.append(prefix).append(key);
  Add(joined, count);
}

void TokenCountMap::Insert(const TokenCountMap& other) {
  other.ForEach([this](std::string_view key, int32_t count) {
    if (!Contains(key)) {
      Add(key, count);
    }
  });
}

// Counts a key that already stands in the pool.
void TokenCountMap::AddPooled(std::string_view key, uint32_t hash, uint32_t offset, uint32_t shape,
                              int32_t count) {
  if (Entry* const entry = Find(key, hash)) {
    entry->count += count;
  } else {
    Insert(offset, hash, shape, count);
  }
}

void TokenCountMap::AddPlainSequences(const WordList& words) {
  SequenceBlock block(&m_pool, words.TextSize());
  SequenceWord a;
  SequenceWord b;
  char joined[kLongestGapped];
  for (const std::string_view word : words) {
    const SequenceWord c = block.Append(word, &a, &b);
    const char* const texts = m_pool.At(a.length != 0 ? a.offset : b.offset);
    const TextHash pair = b.hash.Joined(c.hash, c.length);
    if (b.length != 0) {
      const std::string_view key(texts + a.length, b.length + c.length);
      AddPooled(key, pair.Bits(), b.offset, b.length + c.length, kPairWeight);
    }
    if (a.length != 0) {
      std::memcpy(joined, texts, a.length);
      std::memcpy(joined + a.length, word.data(), c.length);
      AddPooled({joined, a.length + c.length}, a.hash.Joined(c.hash, c.length).Bits(), a.offset,
                GappedShape(kGapped, a.length, b.length, c.length), kPairWeight);
      const uint32_t length = a.length + b.length + c.length;
      AddPooled({texts, length}, a.hash.Joined(b.hash, b.length).Joined(c.hash, c.length).Bits(),
                a.offset, length, kTripleWeight);
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
  for (Entry& entry : m_entries) {
    entry.count = std::min(entry.count, 1);
  }
}

int32_t TokenCountMap::Count(std::string_view key) const {
  const Entry* const entry = Find(key, TextHash(key).Bits());
  return entry == nullptr ? 0 : entry->count;
}

bool TokenCountMap::Contains(std::string_view key) const {
  return Find(key, TextHash(key).Bits()) != nullptr;
}

void TokenCountMap::Clear() {
  if (m_entries.empty()) {
    return;
  }
  m_entries.clear();
  m_slots.clear();
  m_pool.Clear();
}

std::vector<uint32_t> TokenCountMap::SortedOrder() const {
  std::vector<std::pair<uint64_t, uint32_t>> prefixes;
  prefixes.reserve(m_entries.size());
  char left[kLongestGapped];
  char right[kLongestGapped];
  for (size_t i = 0; i < m_entries.size(); ++i) {
    prefixes.emplace_back(SortPrefix(KeyOf(m_entries[i], left)), static_cast<uint32_t>(i));
  }
  std::sort(prefixes.begin(), prefixes.end(), [&](const auto& a, const auto& b) {
    return a.first != b.first
               ? a.first < b.first
               : KeyOf(m_entries[a.second], left) < KeyOf(m_entries[b.second], right);
  });
  std::vector<uint32_t> order(prefixes.size());
  std::transform(prefixes.begin(), prefixes.end(), order.begin(),
                 [](const auto& entry) { return entry.second; });
  return order;
}

}  // namespace postmarker
