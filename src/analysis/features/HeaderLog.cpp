#include "analysis/features/HeaderLog.h"

#include <algorithm>

#include "analysis/message/PackedLength.h"

namespace postmarker {

// A record is the key's length with a bit for the begin of a group, the value's length, key and
// value.
void HeaderLog::Add(std::string_view key, std::string_view value) {
  const size_t first = key.size() << 1 | (m_groupBegins ? 1U : 0U);
  m_groupBegins = false;
  const size_t size =
      PackedLengthSize(first) + PackedLengthSize(value.size()) + key.size() + value.size();
  char* out = m_pool.At(m_pool.Allocate(size));
  out = PutPackedLength(PutPackedLength(out, first), value.size());
  out = std::copy(key.begin(), key.end(), out);
  std::copy(value.begin(), value.end(), out);
  ++m_count;
}

void HeaderLog::Clear() {
  m_pool.Clear();
  m_count = 0;
  m_groupBegins = true;
  m_order = std::vector<uint32_t>();
}

HeaderLog::Record HeaderLog::ReadRecord(uint32_t offset) const {
  const char* const start = m_pool.At(offset);
  size_t first = 0;
  size_t valueLength = 0;
  const char* const key = TakePackedLength(TakePackedLength(start, &first), &valueLength);
  const size_t keyLength = first >> 1;
  return {{key, keyLength},
          {key + keyLength, valueLength},
          static_cast<size_t>(key - start) + keyLength + valueLength,
          (first & 1) != 0};
}

void HeaderLog::Sort() {
  m_order.reserve(m_count);
  auto group = m_order.begin();
  const auto endGroup = [&] {
    std::sort(group, m_order.end(),
              [this](uint32_t a, uint32_t b) { return ReadRecord(a).key < ReadRecord(b).key; });
    group = m_order.end();
  };
  for (uint32_t offset = 0; offset < m_pool.End();) {
    const Record record = ReadRecord(offset);
    if (record.beginsGroup) {
      endGroup();
    }
    m_order.push_back(offset);
    offset = m_pool.After(offset, record.size);
  }
  endGroup();
}

}  // namespace postmarker
