#include "analysis/KeyWindow.h"

#include <algorithm>
#include <cstring>

#include "analysis/PackedLength.h"
#include "analysis/TextHash.h"

namespace postmarker {
namespace {

constexpr size_t kValueSize = sizeof(uint32_t);
constexpr uint32_t kNewMark = 2;  // counts of the rule kOnce are 1 and multiples of 4
constexpr size_t kLeastSlots = 64;
constexpr size_t kPadding = sizeof(uint64_t);  // behind the records, for SortPrefixOfPadded

uint32_t ReadValue(const char* record) {
  uint32_t value = 0;
  std::memcpy(&value, record, kValueSize);
  return value;
}

void WriteValue(char* record, uint32_t value) {
  std::memcpy(record, &value, kValueSize);
}

}  // namespace

// A record is the value, the key's length with a bit for one that is to be dropped, and the key.
struct KeyWindow::Record {
  std::string_view key;
  size_t size;
  bool dropped;
};

KeyWindow::KeyWindow(Rule rule, size_t memory) : m_rule(rule), m_memory(memory) {}

void KeyWindow::BeginBehind(std::string_view lower) {
  Begin(lower, false);
}

// What was cut off begins with the upper bound.
bool KeyWindow::BeginNext() {
  if (!m_hasUpper) {
    return false;
  }
  Begin(m_upper, true);
  return true;
}

void KeyWindow::BeginAt(std::string_view key) {
  Begin(key, true);
  SetUpper(std::string(key) + '\0');
}

void KeyWindow::Begin(std::string_view lower, bool lowerBelongs) {
  m_lower = std::string(lower);
  m_lowerPrefix = SortPrefix(m_lower);
  m_lowerBelongs = lowerBelongs;
  m_hasUpper = false;
  m_markNew = false;
  m_used = 0;
  m_count = 0;
  std::fill(m_slots.begin(), m_slots.end(), 0);
}

// A third of the memory is for the index, the rest for the records.
void KeyWindow::MakeIndex() {
  const size_t slots = std::max(kLeastSlots, m_memory / 3 / (sizeof(uint32_t) + 1));
  m_slots.assign(slots, 0);
  m_tags.assign(slots, 0);
}

void KeyWindow::SetUpper(std::string_view upper) {
  m_upper = upper;
  m_upperPrefix = SortPrefix(upper);
  m_hasUpper = true;
}

KeyWindow::Record KeyWindow::ReadRecord(uint32_t offset) const {
  const char* const start = m_bytes.data() + offset;
  size_t length = 0;
  const char* const text = TakePackedLength(start + kValueSize, &length);
  const bool dropped = (length & 1) != 0;
  length >>= 1;
  return {{text, length}, static_cast<size_t>(text - start) + length, dropped};
}

std::string_view KeyWindow::LongKeyAt(uint32_t offset) const {
  return ReadRecord(offset).key;
}

// The slot of a key, or the free one where it belongs.
size_t KeyWindow::FindSlot(std::string_view key, uint32_t hash) const {
  const auto tag = static_cast<uint8_t>(hash);
  auto slot = static_cast<size_t>((uint64_t{hash} * m_slots.size()) >> 32);
  while (m_slots[slot] != 0 && (m_tags[slot] != tag || KeyAt(m_slots[slot] - 1) != key)) {
    slot = slot + 1 == m_slots.size() ? 0 : slot + 1;
  }
  return slot;
}

void KeyWindow::SetSlot(size_t slot, uint32_t hash, size_t offset) {
  m_slots[slot] = static_cast<uint32_t>(offset + 1);
  m_tags[slot] = static_cast<uint8_t>(hash);
}

// Counts may run over; they do so as unsigned numbers.
void KeyWindow::AddHeld(std::string_view key, int32_t count, bool once) {
  if (m_slots.empty()) {
    MakeIndex();
  }
  const uint32_t hash = TextHash(key).Bits();
  const uint32_t found = m_slots[FindSlot(key, hash)];
  if (found == 0) {
    const auto value = static_cast<uint32_t>(count);
    Append(key, hash, once ? (m_markNew ? 1 | kNewMark : 1) : value);
    return;
  }
  char* const record = m_bytes.data() + found - 1;
  const uint32_t value = ReadValue(record);
  WriteValue(record, once ? value | 1 : value + static_cast<uint32_t>(count));
}

void KeyWindow::AddMissing(std::string_view key, int32_t count) {
  if (Holds(key) && (m_slots.empty() || m_slots[FindSlot(key, TextHash(key).Bits())] == 0)) {
    AddHeld(key, count, false);
  }
}

void KeyWindow::Append(std::string_view key, uint32_t hash, uint32_t value) {
  const size_t size = kValueSize + PackedLengthSize(key.size() << 1) + key.size();
  MakeRoom(size);
  if (!Holds(key)) {
    return;  // what was cut off begins in front of it
  }
  char* const record = m_bytes.data() + m_used;
  WriteValue(record, value);
  char* const text = PutPackedLength(record + kValueSize, key.size() << 1);
  std::memcpy(text, key.data(), key.size());
  SetSlot(FindSlot(key, hash), hash, m_used);
  m_used += size;
  ++m_count;
}

void KeyWindow::MakeRoom(size_t recordSize) {
  const size_t most = m_memory - m_memory / 3;
  while ((m_used + recordSize > most && m_count > 1) || (m_count + 1) * 4 > m_slots.size() * 3) {
    Cut();
  }
  const size_t needed = m_used + recordSize;
  if (needed + kPadding > m_bytes.size()) {
    // The first growth takes all that is meant for records: it is not doubled step by step.
    m_bytes.resize(std::max(needed, most) + kPadding);
  }
}

// Gives up the upper half of the keys.
void KeyWindow::Cut() {
  const size_t shared = SharedPrefix();
  CollectOffsets();
  const auto middle = m_slots.begin() + static_cast<ptrdiff_t>(m_count / 2);
  const auto end = m_slots.begin() + static_cast<ptrdiff_t>(m_count);
  std::nth_element(m_slots.begin(), middle, end,
                   [this, shared](uint32_t a, uint32_t b) { return IsInFront(a, b, shared); });
  SetUpper(KeyAt(*middle));
  for (auto offset = middle; offset != end; ++offset) {
    char* const length = m_bytes.data() + *offset + kValueSize;
    *length = static_cast<char>(*length | 1);
  }
  DropCut();
  IndexAgain();
}

// Moves the records that stay together.
void KeyWindow::DropCut() {
  size_t kept = 0;
  m_count = 0;
  for (size_t offset = 0; offset < m_used;) {
    const Record record = ReadRecord(static_cast<uint32_t>(offset));
    if (!record.dropped) {
      std::memmove(m_bytes.data() + kept, m_bytes.data() + offset, record.size);
      kept += record.size;
      ++m_count;
    }
    offset += record.size;
  }
  m_used = kept;
}

void KeyWindow::IndexAgain() {
  std::fill(m_slots.begin(), m_slots.end(), 0);
  for (size_t offset = 0; offset < m_used;) {
    const Record record = ReadRecord(static_cast<uint32_t>(offset));
    const uint32_t hash = TextHash(record.key).Bits();
    SetSlot(FindSlot(record.key, hash), hash, offset);
    offset += record.size;
  }
}

// How many bytes all keys of the stretch begin with in common.
size_t KeyWindow::SharedPrefix() const {
  if (!m_hasUpper) {
    return 0;
  }
  const auto end = std::mismatch(m_lower.begin(), m_lower.end(), m_upper.begin(), m_upper.end());
  return static_cast<size_t>(end.first - m_lower.begin());
}

bool KeyWindow::IsInFront(uint32_t a, uint32_t b, size_t shared) const {
  const std::string_view left = KeyAt(a).substr(shared);
  const std::string_view right = KeyAt(b).substr(shared);
  const uint64_t leftPrefix = SortPrefixOfPadded(left);
  const uint64_t rightPrefix = SortPrefixOfPadded(right);
  return leftPrefix != rightPrefix ? leftPrefix < rightPrefix : left < right;
}

// Makes a list of the records' offsets of the index.
void KeyWindow::CollectOffsets() {
  const auto end = std::remove(m_slots.begin(), m_slots.end(), 0U);
  std::for_each(m_slots.begin(), end, [](uint32_t& offset) { --offset; });
}

void KeyWindow::Sort() {
  const size_t shared = SharedPrefix();
  CollectOffsets();
  std::sort(m_slots.begin(), m_slots.begin() + static_cast<ptrdiff_t>(m_count),
            [this, shared](uint32_t a, uint32_t b) { return IsInFront(a, b, shared); });
}

KeyWindow::Item KeyWindow::At(size_t index) const {
  const uint32_t offset = m_slots[index];
  const uint32_t value = ReadValue(m_bytes.data() + offset);
  const uint32_t count = m_rule == Rule::kOnce ? value & ~kNewMark : value;
  return {KeyAt(offset), static_cast<int32_t>(count)};
}

size_t KeyWindow::NewKeys() const {
  size_t found = 0;
  for (size_t offset = 0; offset < m_used;) {
    found += (ReadValue(m_bytes.data() + offset) & kNewMark) != 0 ? 1U : 0U;
    offset += ReadRecord(static_cast<uint32_t>(offset)).size;
  }
  return found;
}

}  // namespace postmarker
