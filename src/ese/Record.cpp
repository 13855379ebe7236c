#include "ese/Record.h"

#include <algorithm>

#include "ese/ByteAccess.h"

namespace postmarker::ese {
namespace {

using State = StoredValue::State;

constexpr size_t kHeaderSize = 4;
constexpr uint32_t kVariableNull = 0x8000;  // in the end of a variable column
constexpr uint32_t kVariableEnd = 0x7FFF;

constexpr size_t kTaggedEntry = 4;
constexpr uint32_t kTemplateId = 0x8000;

// In the word after the id, newer layout.
constexpr uint32_t kSmallOffset = 0x1FFF;
constexpr uint32_t kLargeOffset = 0x7FFF;
constexpr uint32_t kSmallHasInfo = 0x4000;
constexpr uint32_t kSmallNull = 0x2000;

// In the word after the id, older layout.
constexpr uint32_t kOldSize = 0x0FFF;
constexpr uint32_t kOldTemplate = 0x2000;
constexpr uint32_t kOldNull = 0x4000;
constexpr uint32_t kOldLong = 0x8000;

// The byte before a value.
constexpr uint8_t kInfoCompressed = 0x02;
constexpr uint8_t kInfoSeparated = 0x04;
constexpr uint8_t kInfoSeveral = 0x08;
constexpr uint8_t kInfoTwo = 0x10;
constexpr uint8_t kInfoNull = 0x20;
constexpr uint8_t kInfoEncrypted = 0x40;

// By id, template columns first: as the records themselves have them.
uint32_t OrderOf(uint32_t id, bool isFromTemplate) {
  return isFromTemplate ? id : id + 0x10000U;
}

StoredValue Damaged() {
  return {State::kDamaged, {}, false, false};
}

// One of exactly two values: a byte tells the size of the first.
StoredValue FindOfTwo(std::string_view bytes, uint8_t info, size_t number) {
  if (number > 1) {
    return {};
  }
  const auto size = TryLoadAt<uint8_t>(bytes, 0);
  const auto first = size ? TrySlice(bytes, 1, *size) : std::nullopt;
  if (!first) {
    return Damaged();
  }
  if (number == 0) {
    return {State::kPresent, *first, (info & kInfoCompressed) != 0, false};
  }
  return {State::kPresent, bytes.substr(1 + first->size()), false, false};
}

// One of several values: a table of offsets comes first, the first of which tells their number.
StoredValue FindOfSeveral(std::string_view bytes, uint8_t info, size_t number) {
  constexpr uint32_t kSeparated = 0x8000;
  constexpr uint32_t kOffset = 0x7FFF;
  const auto offsetAt = [bytes](size_t index) {
    return TryLoadAt<uint16_t>(bytes, index * sizeof(uint16_t));
  };
  const auto first = offsetAt(0);
  if (!first || (*first & kOffset) < sizeof(uint16_t)) {
    return Damaged();
  }
  const size_t count = (*first & kOffset) / sizeof(uint16_t);
  if (number >= count) {
    return {};
  }
  const auto start = offsetAt(number);
  const auto next = number + 1 < count ? offsetAt(number + 1) : std::nullopt;
  const size_t end = next ? *next & kOffset : bytes.size();
  if (!start || end < (*start & kOffset)) {
    return Damaged();
  }
  const auto value = TrySlice(bytes, *start & kOffset, end - (*start & kOffset));
  if (!value) {
    return Damaged();
  }
  // Only the first of several values is ever compressed.
  return {State::kPresent, *value, number == 0 && (info & kInfoCompressed) != 0,
          (*start & kSeparated) != 0};
}

}  // namespace

bool Record::Assign(const Page& leaf, std::string_view data) {
  m_hasReadTagged = false;
  m_isLarge = leaf.IsLarge();
  m_isNew = leaf.HasNewRecords();
  m_data = data;
  const auto endOfFixed = TryLoadAt<uint16_t>(data, 2);
  if (!endOfFixed) {
    return false;
  }
  m_fixedCount = ByteAt(data, 0);
  const uint32_t lastVariable = ByteAt(data, 1);
  m_variableCount = lastVariable > kLastFixedId ? lastVariable - kLastFixedId : 0;
  m_variableTable = *endOfFixed;
  const size_t nullBits = (m_fixedCount + 7) / 8;
  const size_t variableData = m_variableTable + m_variableCount * sizeof(uint16_t);
  if (m_fixedCount > kLastFixedId || m_variableTable < kHeaderSize + nullBits ||
      variableData > data.size()) {
    return false;
  }
  m_fixed = data.substr(0, m_variableTable - nullBits);
  m_nullBits = data.substr(m_variableTable - nullBits, nullBits);
  m_variable = data.substr(variableData);
  return true;
}

StoredValue Record::Find(const Column& column, size_t number) const {
  if (column.id > kLastVariableId) {
    return FindTagged(column, number);
  }
  if (number > 0) {
    return {};
  }
  return column.id > kLastFixedId ? FindVariable(column) : FindFixed(column);
}

StoredValue Record::FindFixed(const Column& column) const {
  if (column.id > m_fixedCount) {
    return {State::kDefault, {}, false, false};
  }
  const size_t bit = column.id - 1;
  // The bytes of a null column are whatever was left there.
  if ((ByteAt(m_nullBits, bit / 8) >> (bit % 8) & 1U) != 0) {
    return {};
  }
  const auto bytes = TrySlice(m_fixed, column.offset, column.size);
  return bytes && column.offset >= kHeaderSize && column.size > 0
             ? StoredValue{State::kPresent, *bytes, false, false}
             : Damaged();
}

std::optional<uint16_t> Record::VariableEnd(size_t index) const {
  return TryLoadAt<uint16_t>(m_data, m_variableTable + index * sizeof(uint16_t));
}

StoredValue Record::FindVariable(const Column& column) const {
  const size_t index = column.id - kLastFixedId - 1;
  if (index >= m_variableCount) {
    return {State::kDefault, {}, false, false};
  }
  const uint32_t end = VariableEnd(index).value_or(0);
  if ((end & kVariableNull) != 0) {
    return {};
  }
  const uint32_t start = index == 0 ? 0 : VariableEnd(index - 1).value_or(0) & kVariableEnd;
  const auto bytes = start <= end ? TrySlice(m_variable, start, end - start) : std::nullopt;
  return bytes ? StoredValue{State::kPresent, *bytes, false, false} : Damaged();
}

StoredValue Record::FindTagged(const Column& column, size_t number) const {
  ReadTagged();
  if (m_isTaggedDamaged) {
    return Damaged();
  }
  const uint32_t order = OrderOf(column.id, column.isFromTemplate);
  auto found = std::lower_bound(
      m_tagged.begin(), m_tagged.end(), order,
      [](const TaggedColumn& tagged, uint32_t wanted) { return tagged.order < wanted; });
  if (found == m_tagged.end() || found->order != order) {
    return {number == 0 ? State::kDefault : State::kNull, {}, false, false};
  }
  if (!m_isNew) {
    // Each value has an entry of its own.
    if (static_cast<size_t>(m_tagged.end() - found) <= number || found[number].order != order) {
      return {};
    }
    found += static_cast<ptrdiff_t>(number);
    number = 0;
  }
  const uint8_t info = found->info;
  if ((info & kInfoNull) != 0) {
    return {};
  }
  if ((info & kInfoEncrypted) != 0) {
    return Damaged();
  }
  if ((info & kInfoTwo) != 0) {
    return FindOfTwo(found->bytes, info, number);
  }
  if ((info & kInfoSeveral) != 0) {
    return FindOfSeveral(found->bytes, info, number);
  }
  if (number > 0) {
    return {};
  }
  return {State::kPresent, found->bytes, (info & kInfoCompressed) != 0,
          (info & kInfoSeparated) != 0};
}

void Record::ReadTagged() const {
  if (m_hasReadTagged) {
    return;
  }
  m_hasReadTagged = true;
  m_isTaggedDamaged = false;
  m_tagged.clear();
  if (m_isNew) {
    ReadNewTagged();
  } else {
    ReadOldTagged();
  }
  const auto isBefore = [](const TaggedColumn& a, const TaggedColumn& b) {
    return a.order < b.order;
  };
  if (!std::is_sorted(m_tagged.begin(), m_tagged.end(), isBefore)) {
    std::stable_sort(m_tagged.begin(), m_tagged.end(), isBefore);
  }
}

void Record::ReadNewTagged() const {
  const uint32_t lastEnd =
      m_variableCount == 0 ? 0 : VariableEnd(m_variableCount - 1).value_or(0) & kVariableEnd;
  m_isTaggedDamaged = lastEnd > m_variable.size();
  if (m_isTaggedDamaged || lastEnd == m_variable.size()) {
    return;
  }
  const std::string_view tagged = m_variable.substr(lastEnd);
  const uint32_t mask = m_isLarge ? kLargeOffset : kSmallOffset;
  const auto wordAt = [tagged](size_t index) {
    return TryLoadAt<uint16_t>(tagged, index * kTaggedEntry + 2).value_or(0);
  };
  const size_t count = (wordAt(0) & mask) / kTaggedEntry;
  m_isTaggedDamaged = count == 0 || count * kTaggedEntry > tagged.size();
  for (size_t i = 0; i < count && !m_isTaggedDamaged; ++i) {
    const auto id = LoadAt<uint16_t>(tagged, i * kTaggedEntry);
    const uint32_t word = wordAt(i);
    const size_t start = word & mask;
    const size_t end = i + 1 < count ? wordAt(i + 1) & mask : tagged.size();
    if (start > end || end > tagged.size()) {
      m_isTaggedDamaged = true;
      return;
    }
    std::string_view bytes = tagged.substr(start, end - start);
    uint8_t info = 0;
    if (!m_isLarge && (word & kSmallNull) != 0) {
      info = kInfoNull;
    } else if (m_isLarge || (word & kSmallHasInfo) != 0) {
      m_isTaggedDamaged = bytes.empty();
      info = bytes.empty() ? uint8_t{0} : ByteAt(bytes, 0);
      bytes.remove_prefix(bytes.empty() ? 0 : 1);
    }
    m_tagged.push_back({OrderOf(id & (kTemplateId - 1), (id & kTemplateId) != 0), bytes, info});
  }
}

void Record::ReadOldTagged() const {
  const uint32_t lastEnd =
      m_variableCount == 0 ? 0 : VariableEnd(m_variableCount - 1).value_or(0) & kVariableEnd;
  m_isTaggedDamaged = lastEnd > m_variable.size();
  std::string_view rest = m_variable.substr(std::min<size_t>(lastEnd, m_variable.size()));
  while (!rest.empty() && !m_isTaggedDamaged) {
    const auto id = TryLoadAt<uint16_t>(rest, 0);
    const uint32_t word = TryLoadAt<uint16_t>(rest, 2).value_or(0);
    auto bytes = TrySlice(rest, kTaggedEntry, word & kOldSize);
    if (!id || !bytes) {
      m_isTaggedDamaged = true;
      return;
    }
    rest.remove_prefix(kTaggedEntry + bytes->size());
    uint8_t info = (word & kOldNull) != 0 ? kInfoNull : uint8_t{0};
    if ((word & kOldLong) != 0 && !bytes->empty()) {
      info |= (ByteAt(*bytes, 0) & 1U) != 0 ? kInfoSeparated : uint8_t{0};
      bytes->remove_prefix(1);
    }
    m_tagged.push_back({OrderOf(*id, (word & kOldTemplate) != 0), *bytes, info});
  }
}

}  // namespace postmarker::ese
