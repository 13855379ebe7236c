#include "ese/Page.h"

#include <algorithm>

#include "ese/ByteAccess.h"
#include "ese/Checksum.h"

namespace postmarker::ese {
namespace {

// Places in the header.
constexpr size_t kChecksum = 0;
constexpr size_t kOldPageNumber = 4;  // in pages with the older checksum
constexpr size_t kObjectId = 24;
constexpr size_t kTagCount = 34;
constexpr size_t kFlags = 36;
constexpr size_t kSmallHeader = 40;
constexpr size_t kLargeHeader = 80;
constexpr size_t kBlockChecksums = 40;  // of the blocks after the first, in large pages
constexpr size_t kChecksumSize = 8;
constexpr size_t kBlocks = 4;

constexpr uint32_t kRoot = 0x0001;
constexpr uint32_t kLeaf = 0x0002;
constexpr uint32_t kEmpty = 0x0008;
constexpr uint32_t kSpaceTree = 0x0020;
constexpr uint32_t kNewRecords = 0x0800;
constexpr uint32_t kNewChecksum = 0x2000;

constexpr size_t kTagSize = 4;
constexpr uint32_t kTagDeleted = 2;
constexpr uint32_t kTagHasPrefix = 4;
constexpr uint32_t kSmallMask = 0x1FFF;
constexpr uint32_t kLargeMask = 0x7FFF;
constexpr uint32_t kFlagShift = 13;

bool HasRightNewChecksum(std::string_view page, uint32_t number) {
  if (page.size() <= kMaxSmallPageBytes) {
    return LoadAt<uint32_t>(page, kChecksum) == XorWords(page.substr(kChecksumSize), number);
  }
  const size_t blockSize = page.size() / kBlocks;
  if (LoadAt<uint32_t>(page, kChecksum) !=
      XorWords(page.substr(kChecksumSize, blockSize - kChecksumSize), number)) {
    return false;
  }
  for (size_t block = 1; block < kBlocks; ++block) {
    const size_t place = kBlockChecksums + (block - 1) * kChecksumSize;
    if (LoadAt<uint32_t>(page, place) !=
        XorWords(page.substr(block * blockSize, blockSize), number)) {
      return false;
    }
  }
  return true;
}

}  // namespace

bool HasRightChecksum(std::string_view page, uint32_t number) {
  if ((LoadAt<uint32_t>(page, kFlags) & kNewChecksum) != 0) {
    return HasRightNewChecksum(page, number);
  }
  return LoadAt<uint32_t>(page, kOldPageNumber) == number &&
         LoadAt<uint32_t>(page, kChecksum) == XorWords(page.substr(kOldPageNumber), kXorSeed);
}

int CompareKey(const PageEntry& entry, std::string_view key) {
  if (const int order = entry.keyPrefix.compare(key.substr(0, entry.keyPrefix.size()));
      order != 0) {
    return order;
  }
  return entry.keySuffix.compare(key.substr(entry.keyPrefix.size()));
}

std::optional<Page> Page::Parse(std::string_view bytes) {
  Page page(bytes);
  page.m_objectId = LoadAt<uint32_t>(bytes, kObjectId);
  page.m_flags = LoadAt<uint32_t>(bytes, kFlags);
  const auto counts = LoadAt<uint16_t>(bytes, kTagCount);
  const uint32_t tags = counts & 0x0FFFU;
  const uint32_t reserved = counts >> 12U & 7U;
  if (tags * kTagSize > bytes.size() - page.HeaderSize()) {
    return std::nullopt;
  }
  page.m_firstEntry = std::max(reserved, 1U);
  page.m_endEntry = std::max(tags, page.m_firstEntry);
  // In a root, the first tag is the header of the tree.
  if (tags > 0 && (page.m_flags & kRoot) == 0) {
    if (const std::optional<Tag> prefix = page.TagAt(0)) {
      page.m_commonPrefix = prefix->bytes;
    }
  }
  return page;
}

bool Page::IsLeaf() const {
  return (m_flags & kLeaf) != 0;
}

bool Page::IsOutOfUse() const {
  return (m_flags & (kEmpty | kSpaceTree)) != 0;
}

bool Page::HasNewRecords() const {
  return (m_flags & kNewRecords) != 0;
}

size_t Page::HeaderSize() const {
  return IsLarge() ? kLargeHeader : kSmallHeader;
}

std::optional<Page::Tag> Page::TagAt(uint32_t number) const {
  const size_t place = m_bytes.size() - kTagSize * (size_t{number} + 1);
  const auto size = LoadAt<uint16_t>(m_bytes, place);
  const auto offset = LoadAt<uint16_t>(m_bytes, place + 2);
  const uint32_t mask = IsLarge() ? kLargeMask : kSmallMask;
  const size_t endOfData = m_bytes.size() - kTagSize * size_t{m_endEntry};
  const std::string_view data = m_bytes.substr(HeaderSize(), endOfData - HeaderSize());
  const std::optional<std::string_view> bytes = TrySlice(data, offset & mask, size & mask);
  if (!bytes) {
    return std::nullopt;
  }
  // Large pages need all 15 bits for the offset, so the flags are in the entry.
  uint32_t flags = static_cast<uint32_t>(offset) >> kFlagShift;
  if (IsLarge()) {
    flags = TryLoadAt<uint16_t>(*bytes, 0).value_or(0) >> kFlagShift;
  }
  return Tag{*bytes, flags};
}

std::optional<PageEntry> Page::EntryAt(uint32_t number) const {
  const std::optional<Tag> tag = TagAt(number);
  if (!tag) {
    return std::nullopt;
  }
  PageEntry entry;
  entry.isDeleted = (tag->flags & kTagDeleted) != 0;
  size_t place = 0;
  if ((tag->flags & kTagHasPrefix) != 0) {
    const auto length = TryLoadAt<uint16_t>(tag->bytes, place);
    if (!length || (*length & kSmallMask) > m_commonPrefix.size()) {
      return std::nullopt;
    }
    entry.keyPrefix = m_commonPrefix.substr(0, *length & kSmallMask);
    place += sizeof(uint16_t);
  }
  const auto length = TryLoadAt<uint16_t>(tag->bytes, place);
  if (!length) {
    return std::nullopt;
  }
  place += sizeof(uint16_t);
  const auto suffix = TrySlice(tag->bytes, place, *length & kSmallMask);
  if (!suffix) {
    return std::nullopt;
  }
  entry.keySuffix = *suffix;
  entry.data = tag->bytes.substr(place + suffix->size());
  return entry;
}

}  // namespace postmarker::ese
