#include "analysis/words/TokenCountMap.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <initializer_list>
#include <numeric>
#include <optional>
#include <string>

#include "support/TextSort.h"

namespace postmarker {
namespace {

constexpr size_t kFirstPlaces = 64;
constexpr size_t kKeptPlaces = 8192;         // a larger index is released by Clear
constexpr size_t kMaxReservedWords = 16384;  // words

}  // namespace

// The last three words of a list, one after the other.
class TokenCountMap::SequenceText {
 public:
  struct Word {
    const char* text = nullptr;
    size_t length = 0;
    TextHash hash;
  };

  // Puts the next word after the other two, which become the first and the second.
  void Append(std::string_view word) {
    if (word.size() > static_cast<size_t>(m_bytes.end() - m_end)) {
      MoveToBegin();
    }
    first = second;
    second = third;
    third = {m_end, word.size(), TextHash(word)};
    m_end = std::copy(word.begin(), word.end(), m_end);
  }

  // The first word and the third, without the second.
  std::string_view Outer() {
    char* const end = std::copy_n(first.text, first.length, m_outer.data());
    std::copy_n(third.text, third.length, end);
    return {m_outer.data(), first.length + third.length};
  }

  Word first;
  Word second;
  Word third;

 private:
  void MoveToBegin() {
    const size_t kept = second.length + third.length;
    std::memmove(m_bytes.data(), m_end - kept, kept);
    second.text = m_bytes.data();
    third.text = second.text + second.length;
    m_end = m_bytes.data() + kept;
  }

  std::array<char, 4096> m_bytes;
  char* m_end = m_bytes.data();
  std::array<char, 2 * WordList::kMaxWordBytes> m_outer;
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
  if (IsEmpty()) {
    return nullptr;
  }
  const size_t place = PlaceOf(key, TextHash(key).Bits());
  return m_index.IsFree(place) ? nullptr : &m_entries[m_index.At(place)];
}

// Makes the index large enough for so many entries.
void TokenCountMap::Reserve(size_t entries) {
  if (m_index.HasRoomFor(entries)) {
    return;
  }
  size_t places = std::max(kFirstPlaces, m_index.Places() * 2);
  while (entries * 4 > places * 3) {
    places *= 2;
  }
  m_index.Reset(places);
  for (size_t i = 0; i < m_entries.Size(); ++i) {
    m_index.Add(m_entries[i].hash, static_cast<uint32_t>(i));
  }
}

// Gives the offset of the key in the pool if it is new. putText() is called then, and puts it
// there.
template <class PutText>
std::optional<uint32_t> TokenCountMap::AddKey(std::string_view key, TextHash hash, int32_t count,
                                              PutText putText) {
  Reserve(m_entries.Size() + 1);
  const size_t place = PlaceOf(key, hash.Bits());
  if (!m_index.IsFree(place)) {
    m_entries[m_index.At(place)].count += count;
    return std::nullopt;
  }
  if (m_limit != nullptr) {
    m_limit->TakeKey(key.size());
  }
  const auto number = static_cast<uint32_t>(m_entries.Size());
  const uint32_t offset = putText();
  m_entries.Append({offset, static_cast<uint32_t>(key.size()), count, hash.Bits()});
  m_index.Set(place, number);
  return offset;
}

std::optional<uint32_t> TokenCountMap::AddKey(std::string_view key, TextHash hash, int32_t count) {
  return AddKey(key, hash, count, [&] { return m_pool.Add(key); });
}

void TokenCountMap::Add(std::string_view key, TextHash hash, int32_t count) {
  AddKey(key, hash, count);
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
  // Most sequences are new.
  Reserve(Size() + 3 * std::min(words.Size(), kMaxReservedWords));
  SequenceText text;
  for (const std::string_view word : words) {
    text.Append(word);
    const SequenceText::Word& first = text.first;
    const SequenceText::Word& second = text.second;
    const SequenceText::Word& third = text.third;
    if (second.length == 0) {
      continue;
    }
    const std::string_view pair(second.text, second.length + third.length);
    const TextHash pairHash = second.hash.Joined(third.hash, third.length);
    if (first.length == 0) {
      AddKey(pair, pairHash, kPairWeight);
      continue;
    }
    const auto triple = AddKey({first.text, first.length + pair.size()},
                               first.hash.Joined(pairHash, pair.size()), kTripleWeight);
    AddKey(pair, pairHash, kPairWeight, [&] {
      // The text of a new triple ends with that of the pair.
      return triple ? *triple + static_cast<uint32_t>(first.length) : m_pool.Add(pair);
    });
    AddKey(text.Outer(), first.hash.Joined(third.hash, third.length), kPairWeight);
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
  if (IsEmpty()) {
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
