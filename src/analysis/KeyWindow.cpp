#include "analysis/KeyWindow.h"

#include <algorithm>
#include <cstring>

#include "analysis/PackedLength.h"
#include "analysis/TextHash.h"

namespace postmarker {
namespace {

constexpr size_t kValueSize = sizeof(uint32_t);
constexpr uint32_t kNewMark = 2;  // counts of the rule kOnce are 1 and multiples of 4
constexpr size_t kLeastPlaces = 64;
constexpr size_t kMostSamples = 64;
static_assert(kLeastPlaces >= kMostSamples);
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

// A record is the value, the key's length and the key.
struct KeyWindow::Record {
  std::string_view key;
  size_t size;
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
  ++m_bounds;
  m_markNew = false;
  m_used = 0;
  m_count = 0;
  m_index.Clear();
}

// A third of the memory is for the index, the rest for the records.
void KeyWindow::MakeIndex() {
  m_index.Reset(std::max(kLeastPlaces, m_memory / 3 / TagIndex::kBytesPerPlace));
}

void KeyWindow::SetUpper(std::string_view upper) {
  m_upper = upper;
  m_upperPrefix = SortPrefix(upper);
  m_hasUpper = true;
  ++m_bounds;
}

KeyWindow::RestRange KeyWindow::RestsBehind(std::string_view prefix) const {
  if (!MayHold(prefix)) {
    return {1, 0};
  }
  RestRange range;
  if (m_lower.starts_with(prefix)) {
    range.low = SortPrefix(std::string_view(m_lower).substr(prefix.size()));
  }
  if (m_hasUpper && m_upper.starts_with(prefix)) {
    range.high = SortPrefix(std::string_view(m_upper).substr(prefix.size()));
  }
  return range;
}

KeyWindow::Record KeyWindow::ReadRecord(uint32_t offset) const {
  const char* const start = m_bytes.data() + offset;
  size_t length = 0;
  const char* const text = TakePackedLength(start + kValueSize, &length);
  return {{text, length}, static_cast<size_t>(text - start) + length};
}

std::string_view KeyWindow::LongKeyAt(uint32_t offset) const {
  return ReadRecord(offset).key;
}

// Counts may run over; they do so as unsigned numbers.
void KeyWindow::AddHeld(std::string_view key, TextHash textHash, int32_t count, bool once) {
  if (m_index.Empty()) {
    MakeIndex();
  }
  const uint32_t hash = textHash.Bits();
  const size_t place = Find(key, hash);
  if (m_index.IsFree(place)) {
    const auto value = static_cast<uint32_t>(count);
    Append(key, hash, place, once ? (m_markNew ? 1 | kNewMark : 1) : value);
    return;
  }
  char* const record = m_bytes.data() + m_index.At(place);
  const uint32_t value = ReadValue(record);
  WriteValue(record, once ? value | 1 : value + static_cast<uint32_t>(count));
}

void KeyWindow::AddMissing(std::string_view key, int32_t count) {
  const TextHash hash(key);
  if (Holds(key) && (m_index.Empty() || m_index.IsFree(Find(key, hash.Bits())))) {
    AddHeld(key, hash, count, false);
  }
}

// `place` is where the key belongs in the index, as long as nothing is cut off.
void KeyWindow::Append(std::string_view key, uint32_t hash, size_t place, uint32_t value) {
  const size_t size = kValueSize + PackedLengthSize(key.size()) + key.size();
  if (MakeRoom(size, key)) {
    if (!Holds(key)) {
      return;  // what was cut off begins in front of it
    }
    place = Find(key, hash);
  }
  char* const record = m_bytes.data() + m_used;
  WriteValue(record, value);
  char* const text = PutPackedLength(record + kValueSize, key.size());
  std::memcpy(text, key.data(), key.size());
  m_index.Set(place, hash, static_cast<uint32_t>(m_used));
  m_used += size;
  ++m_count;
}

// True if keys were cut off for it.
bool KeyWindow::MakeRoom(size_t recordSize, std::string_view key) {
  const size_t most = m_memory - m_memory / 3;
  bool hasCut = false;
  while ((m_used + recordSize > most && m_count > 1) || (m_count + 1) * 4 > m_index.Places() * 3) {
    Cut(key);
    hasCut = true;
  }
  const size_t needed = m_used + recordSize;
  if (needed + kPadding > m_bytes.size()) {
    // The first growth takes all that is meant for records: it is not doubled step by step.
    m_bytes.resize(std::max(needed, most) + kPadding);
  }
  return hasCut;
}

// Gives up about the upper half of the keys, or an eighth where the key that comes next belongs
// there: keys that come in their order fill the memory. A sample is near enough to all keys, and
// costs next to nothing.
void KeyWindow::Cut(std::string_view next) {
  std::vector<std::string_view> sample = SortedSample(m_index.Places() / kMostSamples);
  if (sample.size() < 2) {
    // Few large keys that stand close together: at least one must stay, and one go.
    sample = SortedSample(1);
  }
  const size_t size = sample.size();
  std::string_view upper = sample[size - std::max<size_t>(1, size / 8)];
  if (next < upper) {
    upper = sample[size / 2];
  }
  SetUpper(upper);
  DropCut();
  IndexAgain();
}

// Keys that stand at least `step` places apart in the index, whose places are in no order of the
// keys.
std::vector<std::string_view> KeyWindow::SortedSample(size_t step) const {
  std::vector<std::string_view> sample;
  sample.reserve(kMostSamples);
  for (size_t place = 0; place < m_index.Places() && sample.size() < kMostSamples;) {
    const bool isFree = m_index.IsFree(place);
    if (!isFree) {
      sample.push_back(KeyAt(m_index.At(place)));
    }
    place += isFree ? 1 : step;
  }
  std::sort(sample.begin(), sample.end());
  return sample;
}

// Moves the records that stay together.
void KeyWindow::DropCut() {
  size_t kept = 0;
  m_count = 0;
  for (size_t offset = 0; offset < m_used;) {
    const Record record = ReadRecord(static_cast<uint32_t>(offset));
    const uint64_t prefix = SortPrefixOfPadded(record.key);
    if (prefix < m_upperPrefix || (prefix == m_upperPrefix && record.key < m_upper)) {
      std::memmove(m_bytes.data() + kept, m_bytes.data() + offset, record.size);
      kept += record.size;
      ++m_count;
    }
    offset += record.size;
  }
  m_used = kept;
}

void KeyWindow::IndexAgain() {
  m_index.Clear();
  for (size_t offset = 0; offset < m_used;) {
    const Record record = ReadRecord(static_cast<uint32_t>(offset));
    const uint32_t hash = TextHash(record.key).Bits();
    m_index.Set(m_index.FindFree(hash), hash, static_cast<uint32_t>(offset));
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

void KeyWindow::Sort() {
  const size_t shared = SharedPrefix();
  m_sorted = m_index.TakeNumbers();
  std::sort(m_sorted.begin(), m_sorted.end(),
            [this, shared](uint32_t a, uint32_t b) { return IsInFront(a, b, shared); });
}

KeyWindow::Item KeyWindow::At(size_t index) const {
  const uint32_t offset = m_sorted[index];
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
