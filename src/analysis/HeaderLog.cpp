#include "analysis/HeaderLog.h"

#include <algorithm>

#include "analysis/PackedLength.h"

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
}

void HeaderLog::Clear() {
  m_pool.Clear();
  m_groupBegins = true;
}

uint32_t HeaderLog::ReadGroup(uint32_t offset, std::vector<Item>* group) const {
  group->clear();
  while (offset < m_pool.End()) {
    const char* const start = m_pool.At(offset);
    size_t first = 0;
    size_t valueLength = 0;
    const char* in = TakePackedLength(TakePackedLength(start, &first), &valueLength);
    if ((first & 1) != 0 && !group->empty()) {
      break;
    }
    const size_t keyLength = first >> 1;
    group->emplace_back(std::string_view(in, keyLength),
                        std::string_view(in + keyLength, valueLength));
    offset = m_pool.After(offset, static_cast<size_t>(in - start) + keyLength + valueLength);
  }
  std::sort(group->begin(), group->end());
  return offset;
}

}  // namespace postmarker
