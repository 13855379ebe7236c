#include "ese/LongValue.h"

#include <algorithm>
#include <optional>

#include "ese/ByteAccess.h"
#include "ese/Compression.h"

namespace postmarker::ese {
namespace {

constexpr size_t kShortId = 4;
constexpr size_t kLongId = 8;
constexpr size_t kSizePlace = 4;  // in the root
constexpr size_t kEncryptedPlace = 8;

// The segments of one value, in their order.
class SegmentReader {
 public:
  SegmentReader(const PageFile& file, TreeRoot root, std::string id)
      : m_cursor(file, root, AtDamage::kStop), m_id(std::move(id)), m_file(&file) {}

  // The size of the value.
  std::optional<uint32_t> ReadRoot() {
    if (!m_cursor.Find(m_id)) {
      return std::nullopt;
    }
    const std::string_view root = m_cursor.Entry().data;
    const bool isEncrypted = root.size() > kEncryptedPlace && (ByteAt(root, kEncryptedPlace) & 1U);
    return isEncrypted ? std::nullopt : TryLoadAt<uint32_t>(root, kSizePlace);
  }

  // Appends the segments up to `wanted` bytes of a value of `size`.
  bool Append(size_t wanted, uint32_t size, std::string* value) {
    std::optional<uint32_t> offset = NextOffset();
    while (value->size() < wanted) {
      if (!offset || *offset != value->size()) {
        return false;
      }
      const std::string_view data = m_cursor.Entry().data;
      offset = NextOffset();
      const uint64_t end = offset.value_or(size);
      if (end <= value->size() || end > size ||
          !AppendSegment(data, static_cast<size_t>(end - value->size()), value)) {
        return false;
      }
    }
    value->resize(wanted);
    return true;
  }

 private:
  // Moves to the next segment of this value: its offset, or nothing after the last one.
  std::optional<uint32_t> NextOffset() {
    if (!m_cursor.MoveNext()) {
      return std::nullopt;
    }
    const PageEntry& entry = m_cursor.Entry();
    std::string key(entry.keyPrefix);
    key.append(entry.keySuffix);
    if (key.size() != m_id.size() + sizeof(uint32_t) || !key.starts_with(m_id)) {
      return std::nullopt;
    }
    std::reverse(key.begin() + static_cast<std::ptrdiff_t>(m_id.size()), key.end());
    return LoadAt<uint32_t>(key, m_id.size());
  }

  // A segment whose data is shorter than the segment is compressed.
  bool AppendSegment(std::string_view data, size_t length, std::string* value) const {
    if (length > m_file->Header().pageSize || data.size() > length) {
      return false;
    }
    if (data.size() == length) {
      value->append(data);
      return true;
    }
    const std::optional<std::string> whole = Decompress(data);
    if (!whole || whole->size() != length) {
      return false;
    }
    value->append(*whole);
    return true;
  }

  TreeCursor m_cursor;
  std::string m_id;  // as keys begin with it
  const PageFile* m_file;
};

}  // namespace

bool ReadLongValue(const PageFile& file, TreeRoot longValues, std::string_view storedId,
                   size_t limit, std::string* value, size_t* fullSize) {
  value->clear();
  if (storedId.size() != kShortId && storedId.size() != kLongId) {
    return false;
  }
  SegmentReader segments(file, longValues, {storedId.rbegin(), storedId.rend()});
  const std::optional<uint32_t> size = segments.ReadRoot();
  if (!size) {
    return false;
  }
  *fullSize = *size;
  return segments.Append(std::min<size_t>(limit, *size), *size, value);
}

}  // namespace postmarker::ese
