#include "analysis/words/TokenCountMap.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <initializer_list>
#include <numeric>
#include <string>

#include "support/TextSort.h"

namespace postmarker {
namespace {

constexpr size_t kFirstPlaces = 64;
constexpr size_t kKeptPlaces = 8192;  // a larger index is released by Clear

}  // namespace

// The last two words of a list and the one that was read, one after the other in the pool, so that
// keys made of them need no text of their own.
class TokenCountMap::SequenceText {
 public:
  SequenceText(TextPool* pool, size_t textSize) : m_pool(pool), m_left(textSize) {}

  struct Word {
    uint32_t offset = 0;
    uint32_t length = 0;
    TextHash hash;
  };

  // Puts the next word after the other two, which become the first and the second.
  void Append(std::string_view text) {
    first = second;
    second = third;
    if (text.size() > m_room) {
      BeginPiece();
    }
    third = {m_next, static_cast<uint32_t>(text.size()), TextHash(text)};
    std::copy(text.begin(), text.end(), m_pool->At(m_next));
    m_next += third.length;
    m_room -= text.size();
    m_left -= text.size();
  }

  Word first;
  Word second;
  Word third;

 private:
  static constexpr size_t kPiece = 16384;

  // Moves the two words to a new piece of the pool, with room for those that come.
  void BeginPiece() {
    const size_t kept = first.length + second.length;
    const uint32_t from = first.length != 0 ? first.offset : second.offset;
    m_room = std::min(kPiece, m_left);
    const uint32_t offset = m_pool->Allocate(kept + m_room);
    std::copy_n(m_pool->At(from), kept, m_pool->At(offset));
    first.offset = offset;
    second.offset = offset + first.length;
    m_next = second.offset + second.length;
  }

  TextPool* m_pool;
  size_t m_left;      // bytes of the words to come
  size_t m_room = 0;  // bytes left in the piece
  uint32_t m_next = 0;
};

TokenCountMap::Iterator::Iterator(const TokenCountMap* map) : m_map(map), m_order(map->Size()) {
  std::iota(m_order.begin(), m_order.end(), 0U);
  SortByText(&m_order, [map](uint32_t number) { return map->ItemAt(number).key; });
}

// REQUIRES: the index is not empty.
inline size_t TokenCountMap::PlaceOf(std::string_view key, uint32_t hash) const {
  return m_index.Find(hash, [&](uint32_t number) {
    const Entry& entry = m_entries[number];
    return entry.hash == hash && entry.length == key.size() &&
           std::memcmp(m_pool.At(entry.offset), key.data(), key.size()) == 0;
  });
}

const TokenCountMap::Entry* TokenCountMap::Find(std::string_view key) const {
  if (Empty()) {
    return nullptr;
  }
  const size_t place = PlaceOf(key, TextHash(key).Bits());
  return m_index.IsFree(place) ? nullptr : &m_entries[m_index.At(place)];
}

void TokenCountMap::Grow() {
  const size_t places = m_index.Places();
  m_index.Reset(std::max(kFirstPlaces, places < kKeptPlaces ? places * 4 : places * 2));
  for (size_t i = 0; i < m_entries.Size(); ++i) {
    m_index.Add(m_entries[i].hash, static_cast<uint32_t>(i));
  }
}

// `text` gives the offset of the key in the pool; it is called for a new key alone.
template <class Text>
void TokenCountMap::AddKey(std::string_view key, TextHash hash, int32_t count, Text text) {
  if (!m_index.HasRoomFor(m_entries.Size() + 1)) {
    Grow();
  }
  const size_t place = PlaceOf(key, hash.Bits());
  if (!m_index.IsFree(place)) {
    m_entries[m_index.At(place)].count += count;
    return;
  }
  if (m_limit != nullptr) {
    m_limit->TakeKey(key.size());
  }
  const auto number = static_cast<uint32_t>(m_entries.Size());
  m_entries.Append({text(), static_cast<uint32_t>(key.size()), count, hash.Bits()});
  m_index.Set(place, number);
}

void TokenCountMap::Add(std::string_view key, TextHash hash, int32_t count) {
  AddKey(key, hash, count, [&] { return m_pool.Add(key); });
}

void TokenCountMap::Add(std::string_view prefix, std::string_view key, int32_t count) {
  m_joined.assign(prefix).append(key);
  Add(m_joined, count);
}

void TokenCountMap::Insert(const TokenCountMap& other) {
  other.ForEach([this](std::string_view key, int32_t count) {
    if (!Contains(key)) {
      Add(key, count);
    }
  });
}

void TokenCountMap::AddWordSequences(const WordList& words) {
  SequenceText text(&m_pool, words.TextSize());
  std::array<char, 2 * WordList::kLongestWord> outer;
  for (const std::string_view word : words) {
    text.Append(word);
    const auto& first = text.first;
    const auto& second = text.second;
    const auto& third = text.third;
    const uint32_t pairLength = second.length + third.length;
    const TextHash pair = second.hash.Joined(third.hash, third.length);
    if (second.length != 0) {
      AddKey({m_pool.At(second.offset), pairLength}, pair, kPairWeight,
             [&] { return second.offset; });
    }
    if (first.length != 0) {
      const std::string_view triple(m_pool.At(first.offset), first.length + pairLength);
      AddKey(triple, first.hash.Joined(pair, pairLength), kTripleWeight,
             [&] { return first.offset; });
      std::copy(word.begin(), word.end(), std::copy_n(triple.data(), first.length, outer.data()));
      Add({outer.data(), first.length + third.length}, first.hash.Joined(third.hash, third.length),
          kPairWeight);
    }
  }
}

void TokenCountMap::AddWordSequences(const WordList& words, std::string_view prefix) {
  std::string_view first;
  std::string_view second;
  std::string key(prefix);
  const auto add = [&](std::initializer_list<std::string_view> texts, int32_t weight) {
    key.resize(prefix.size());
    for (const std::string_view text : texts) {
      key.append(text);
    }
    Add(key, weight);
  };
  for (const std::string_view third : words) {
    if (!second.empty()) {
      add({second, third}, kPairWeight);
    }
    if (!first.empty()) {
      add({first, third}, kPairWeight);
      add({first, second, third}, kTripleWeight);
    }
    first = second;
    second = third;
  }
}

void TokenCountMap::CapCounts() {
  for (size_t i = 0; i < m_entries.Size(); ++i) {
    m_entries[i].count = std::min(m_entries[i].count, 1);
  }
}

int32_t TokenCountMap::Count(std::string_view key) const {
  const Entry* const entry = Find(key);
  return entry == nullptr ? 0 : entry->count;
}

void TokenCountMap::Clear() {
  if (Empty()) {
    return;
  }
  m_entries.Clear();
  m_pool.Clear();
  if (m_index.Places() > kKeptPlaces) {
    m_index.Reset(0);
  } else {
    m_index.Clear();
  }
}

}  // namespace postmarker
