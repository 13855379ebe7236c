// One page of a database: its header, its entries and their keys.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace postmarker::ese {

inline constexpr uint32_t kMinPageBytes = 2048;
inline constexpr uint32_t kMaxPageBytes = 32768;
inline constexpr uint32_t kMaxSmallPageBytes = 8192;  // larger ones have a longer header

// 2, 4, 8, 16 or 32 KiB.
constexpr bool IsPageSize(uint32_t size) {
  return size >= kMinPageBytes && size <= kMaxPageBytes && (size & (size - 1)) == 0;
}

// True if the page's checksum is right for a page of this number. `page` has one of the page sizes.
// A page of zeros has no checksum and is not right.
bool HasRightChecksum(std::string_view page, uint32_t number);

// An entry of a page. All parts point into the page.
struct PageEntry {
  std::string_view keyPrefix;  // the key's first bytes, which entries share
  std::string_view keySuffix;  // the rest of the key
  std::string_view data;
  bool isDeleted = false;

  [[nodiscard]] size_t KeySize() const { return keyPrefix.size() + keySuffix.size(); }
};

// Compares the key of `entry` with `key` as bytes: negative, 0 or positive. If one begins the
// other, the shorter one is less.
int CompareKey(const PageEntry& entry, std::string_view key);

// A view of a page; the page's bytes must outlive it. Nothing but the header is believed: each
// entry is checked when it is read.
class Page {
 public:
  // `bytes` is a whole page. Nothing if its header can't be that of a page: an array of tags that
  // does not fit.
  static std::optional<Page> Parse(std::string_view bytes);

  [[nodiscard]] uint32_t ObjectId() const { return m_objectId; }
  [[nodiscard]] bool IsLeaf() const;
  // A page that was given back, or belongs to the tree of a table's free space.
  [[nodiscard]] bool IsOutOfUse() const;
  // Which of the two layouts the tagged columns of its records have.
  [[nodiscard]] bool HasNewRecords() const;
  [[nodiscard]] bool IsLarge() const { return m_bytes.size() > kMaxSmallPageBytes; }

  // Entries are numbered from FirstEntry to EndEntry - 1, in the order of their keys.
  [[nodiscard]] uint32_t FirstEntry() const { return m_firstEntry; }
  [[nodiscard]] uint32_t EndEntry() const { return m_endEntry; }

  // Nothing if the entry or its key does not lie within the page. REQUIRES: a number of an entry.
  [[nodiscard]] std::optional<PageEntry> EntryAt(uint32_t number) const;

 private:
  struct Tag {
    std::string_view bytes;
    uint32_t flags;
  };

  explicit Page(std::string_view bytes) : m_bytes(bytes) {}
  [[nodiscard]] std::optional<Tag> TagAt(uint32_t number) const;
  [[nodiscard]] size_t HeaderSize() const;

  std::string_view m_bytes;
  std::string_view m_commonPrefix;
  uint32_t m_objectId = 0;
  uint32_t m_flags = 0;
  uint32_t m_firstEntry = 1;
  uint32_t m_endEntry = 1;
};

}  // namespace postmarker::ese
