#include "clients/incredimail/ImTextSet.h"

#include <algorithm>
#include <cstring>
#include <random>

namespace postmarker {
namespace {

constexpr size_t kFirstBlock = size_t{16} * 1024;
constexpr size_t kFirstSlots = 1024;

// Odd, and another one in each process.
uint64_t Multiplier() {
  static const uint64_t multiplier = [] {
    std::random_device random;
    return (uint64_t{random()} << 32 | random()) | 1;
  }();
  return multiplier;
}

// Eight bytes at once.
uint32_t HashOf(std::string_view text) {
  const uint64_t multiplier = Multiplier();
  uint64_t hash = text.size() * multiplier;
  while (!text.empty()) {
    uint64_t bytes = 0;
    const size_t count = std::min(text.size(), sizeof(bytes));
    std::memcpy(&bytes, text.data(), count);
    hash = (hash ^ bytes) * multiplier;
    hash ^= hash >> 32;
    text.remove_prefix(count);
  }
  return static_cast<uint32_t>(hash * multiplier >> 32);
}

// The first bytes as a number that orders as they do, and the text that they belong to.
struct SortKey {
  uint64_t prefix;
  std::string_view text;
};

SortKey KeyOf(std::string_view text) {
  uint64_t prefix = 0;
  for (size_t i = 0; i < sizeof(prefix); ++i) {
    prefix = prefix << 8 | (i < text.size() ? static_cast<unsigned char>(text[i]) : 0U);
  }
  return {prefix, text};
}

}  // namespace

ImTextSet::ImTextSet() : m_memory(kFirstBlock), m_slots(kFirstSlots) {}

bool ImTextSet::Add(std::string_view text) {
  const uint32_t hash = HashOf(text);
  const size_t mask = m_slots.size() - 1;
  size_t place = hash & mask;
  for (; m_slots[place].text != nullptr; place = (place + 1) & mask) {
    const Slot& slot = m_slots[place];
    if (slot.hash == hash && std::string_view(slot.text, slot.length) == text) {
      return false;
    }
  }
  char* const copy = static_cast<char*>(m_memory.allocate(text.size() + 1, 1));
  std::copy(text.begin(), text.end(), copy);
  m_slots[place] = {copy, static_cast<uint32_t>(text.size()), hash};
  if (++m_count * 2 > m_slots.size()) {
    Grow();
  }
  return true;
}

void ImTextSet::Grow() {
  std::vector<Slot> larger(m_slots.size() * 2);
  const size_t mask = larger.size() - 1;
  for (const Slot& slot : m_slots) {
    if (slot.text != nullptr) {
      size_t place = slot.hash & mask;
      while (larger[place].text != nullptr) {
        place = (place + 1) & mask;
      }
      larger[place] = slot;
    }
  }
  m_slots = std::move(larger);
}

std::vector<std::string_view> ImTextSet::Sorted() const {
  std::vector<SortKey> keys;
  keys.reserve(m_count);
  for (const Slot& slot : m_slots) {
    if (slot.text != nullptr) {
      keys.push_back(KeyOf({slot.text, slot.length}));
    }
  }
  std::sort(keys.begin(), keys.end(), [](const SortKey& a, const SortKey& b) {
    return a.prefix != b.prefix ? a.prefix < b.prefix : a.text < b.text;
  });
  std::vector<std::string_view> texts;
  texts.reserve(keys.size());
  for (const SortKey& key : keys) {
    texts.push_back(key.text);
  }
  return texts;
}

}  // namespace postmarker
