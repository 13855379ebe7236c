#include "clients/incredimail/ImTextSet.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <random>
#include <span>

#include "clients/incredimail/ImPrefixSort.h"

namespace postmarker {
namespace {

constexpr size_t kFirstBlock = size_t{16} * 1024;
constexpr size_t kFirstSlots = 1024;
constexpr size_t kWord = sizeof(uint64_t);

static_assert(std::endian::native == std::endian::little);

uint64_t WordAt(const char* bytes) {
  uint64_t word = 0;
  std::memcpy(&word, bytes, sizeof(word));
  return word;
}

// Hashes a text as the value of the polynomial that has seven of its bytes in each coefficient, at
// a random point, modulo the prime 2^61 - 1. Two texts have one value at no more points than they
// have coefficients: whoever does not know the point can't make texts that meet.
class PolynomialHash {
 public:
  // Of this process.
  static const PolynomialHash& Instance() {
    static const PolynomialHash hash;
    return hash;
  }

  [[nodiscard]] uint32_t Of(std::string_view text) const {
    uint64_t value = text.size();
    const char* at = text.data();
    size_t left = text.size();
    for (; left >= kWord; left -= kCoefficient, at += kCoefficient) {
      value = Next(value, WordAt(at) << 8 >> 8);
    }
    uint64_t last = 0;
    if (text.size() >= kWord) {
      // The bytes in front of them were taken before and are shifted out.
      last = WordAt(at + left - kWord) >> (8 * (kWord - left));
    } else {
      std::copy(at, at + left, reinterpret_cast<char*>(&last));
    }
    return static_cast<uint32_t>(Next(value, last) * m_multiplier >> 32);
  }

 private:
  static constexpr size_t kCoefficient = 7;
  static constexpr int kPrimeBits = 61;
  static constexpr int kPointBits = kPrimeBits - 32;
  static constexpr uint64_t kPrime = (uint64_t{1} << kPrimeBits) - 1;
  static constexpr uint64_t kPointMask = (uint64_t{1} << kPointBits) - 1;

  PolynomialHash() {
    std::random_device random;
    m_point = random() & kPointMask;
    m_multiplier = (uint64_t{random()} << 32 | random()) | 1;
  }

  // value * point + coefficient. The point has so few bits that two products of 32 do; what stands
  // from bit 61 on counts from bit 0. The result is below 2^61 + 4, as the value must be.
  [[nodiscard]] uint64_t Next(uint64_t value, uint64_t coefficient) const {
    const uint64_t high = (value >> 32) * m_point;
    const uint64_t low = (value & 0xFFFFFFFF) * m_point;
    const uint64_t sum = (high >> kPointBits) + ((high & kPointMask) << 32) + low + coefficient;
    return (sum & kPrime) + (sum >> kPrimeBits);
  }

  uint64_t m_point = 0;
  uint64_t m_multiplier = 0;
};

// A text and the eight bytes of it that are compared now.
struct SortKey {
  uint64_t prefix;
  std::string_view text;
};

// Texts that are equal up to a depth.
struct Group {
  std::span<SortKey> keys;
  size_t depth;
};

// A number that orders as the bytes from the depth on do. Behind the text's end they count as 0.
uint64_t PrefixAt(std::string_view text, size_t depth) {
  uint64_t prefix = 0;
  const size_t count = std::min(text.size() - depth, kWord);
  for (size_t i = 0; i < count; ++i) {
    prefix |= uint64_t{static_cast<unsigned char>(text[depth + i])} << (8 * (kWord - 1 - i));
  }
  return prefix;
}

// Puts those in front that end within the next eight bytes, which are equal but for zeros: the
// order is that of their lengths. Gives the others.
std::span<SortKey> SortEnding(const Group& group) {
  const auto ends = [end = group.depth + kWord](const SortKey& key) {
    return key.text.size() <= end;
  };
  const auto longer = std::partition(group.keys.begin(), group.keys.end(), ends);
  std::sort(group.keys.begin(), longer,
            [](const SortKey& a, const SortKey& b) { return a.text.size() < b.text.size(); });
  return group.keys.subspan(static_cast<size_t>(longer - group.keys.begin()));
}

// Sorts a group and adds the groups in it that go on alike. Each byte of a text is looked at in one
// group at most.
void SortGroup(const Group& group, std::span<SortKey> spare, std::vector<Group>* groups) {
  for (SortKey& key : group.keys) {
    key.prefix = PrefixAt(key.text, group.depth);
  }
  SortByPrefix(group.keys, spare);
  for (auto first = group.keys.begin(); first != group.keys.end();) {
    const auto last = std::find_if(first + 1, group.keys.end(), [first](const SortKey& key) {
      return key.prefix != first->prefix;
    });
    if (last - first > 1) {
      const std::span<SortKey> longer = SortEnding({{first, last}, group.depth});
      if (longer.size() > 1) {
        groups->push_back({longer, group.depth + kWord});
      }
    }
    first = last;
  }
}

}  // namespace

ImTextSet::ImTextSet() : m_memory(kFirstBlock), m_slots(kFirstSlots) {}

bool ImTextSet::Add(std::string_view text) {
  const uint32_t hash = PolynomialHash::Instance().Of(text);
  const size_t mask = m_slots.size() - 1;
  size_t place = hash & mask;
  for (; m_slots[place].number != 0; place = (place + 1) & mask) {
    const Slot& slot = m_slots[place];
    if (slot.hash == hash && m_texts[slot.number - 1] == text) {
      return false;
    }
  }
  char* const copy = static_cast<char*>(m_memory.allocate(text.size() + 1, 1));
  std::copy(text.begin(), text.end(), copy);
  m_texts.emplace_back(copy, text.size());
  m_slots[place] = {hash, static_cast<uint32_t>(m_texts.size())};
  if (m_texts.size() * 2 > m_slots.size()) {
    Grow();
  }
  return true;
}

void ImTextSet::Grow() {
  std::vector<Slot> larger(m_slots.size() * 2);
  const size_t mask = larger.size() - 1;
  for (const Slot& slot : m_slots) {
    if (slot.number != 0) {
      size_t place = slot.hash & mask;
      while (larger[place].number != 0) {
        place = (place + 1) & mask;
      }
      larger[place] = slot;
    }
  }
  m_slots = std::move(larger);
}

std::vector<std::string_view> ImTextSet::Sorted() const {
  std::vector<SortKey> keys(m_texts.size());
  std::transform(m_texts.begin(), m_texts.end(), keys.begin(), [](std::string_view text) {
    return SortKey{0, text};
  });
  std::vector<SortKey> spare(keys.size());
  std::vector<Group> groups = {{keys, 0}};
  while (!groups.empty()) {
    const Group group = groups.back();
    groups.pop_back();
    SortGroup(group, spare, &groups);
  }
  std::vector<std::string_view> texts(keys.size());
  std::transform(keys.begin(), keys.end(), texts.begin(),
                 [](const SortKey& key) { return key.text; });
  return texts;
}

}  // namespace postmarker
