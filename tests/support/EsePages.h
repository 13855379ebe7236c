// Pages of ESE databases, written for tests: whole ones, and such as were harmed on purpose.
#pragma once

#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace postmarker::test {

template <class Number>
void PutEse(std::string* bytes, size_t place, Number number) {
  if (place + sizeof(number) > bytes->size()) {
    throw std::out_of_range("a number does not fit into a test's page");
  }
  std::memcpy(bytes->data() + place, &number, sizeof(number));
}

// Little-endian bytes of a number.
template <class Number>
std::string EseBytes(Number number) {
  return {reinterpret_cast<const char*>(&number), sizeof(number)};
}

// Big-endian bytes of a number.
template <class Number>
std::string EseBigEndian(Number number) {
  const std::string little = EseBytes(number);
  return {little.rbegin(), little.rend()};
}

// The bytes of a UTF-16 text, without a NUL at its end.
inline std::string EseUtf16(std::u16string_view text) {
  return {reinterpret_cast<const char*>(text.data()), text.size() * 2};
}

// The pieces of keys that integers give.
inline std::string EseKey(int32_t number) {
  return "\x7F" + EseBigEndian(static_cast<uint32_t>(number) ^ 0x80000000U);
}
inline std::string EseKey(int64_t number) {
  return "\x7F" + EseBigEndian(static_cast<uint64_t>(number) ^ 0x8000000000000000U);
}

inline uint32_t EseXor(std::string_view bytes, uint32_t seed) {
  for (size_t place = 0; place < bytes.size(); place += 4) {
    uint32_t word = 0;
    std::memcpy(&word, bytes.data() + place, sizeof(word));
    seed ^= word;
  }
  return seed;
}

constexpr uint32_t kEseSeed = 0x89ABCDEF;
constexpr uint32_t kEseRoot = 0x1;
constexpr uint32_t kEseLeaf = 0x2;
constexpr uint32_t kEseParent = 0x4;  // of leaves
constexpr uint32_t kEseIndex = 0x40;
constexpr uint32_t kEseLongValues = 0x80;
constexpr uint32_t kEseNewRecords = 0x800;
constexpr uint32_t kEseNewChecksum = 0x2000;

constexpr uint32_t kEseTagDeleted = 2;
constexpr uint32_t kEseTagPrefix = 4;

// Places in a page's header.
constexpr size_t kEseObjectId = 24;
constexpr size_t kEseTagCount = 34;
constexpr size_t kEseFlags = 36;

inline bool IsLargeEse(size_t pageSize) {
  return pageSize > 8192;
}

inline size_t EseHeaderSize(size_t pageSize) {
  return IsLargeEse(pageSize) ? 80 : 40;
}

// Writes the checksum of a page, as after any change of its bytes.
inline void SealEsePage(std::string* page, uint32_t number) {
  uint32_t flags = 0;
  std::memcpy(&flags, page->data() + kEseFlags, sizeof(flags));
  const std::string_view bytes(*page);
  if ((flags & kEseNewChecksum) == 0) {
    PutEse(page, 4, number);
    PutEse(page, 0, EseXor(bytes.substr(4), kEseSeed));
    return;
  }
  if (!IsLargeEse(page->size())) {
    PutEse(page, 0, EseXor(bytes.substr(8), number));
    return;
  }
  const size_t block = page->size() / 4;
  for (size_t i = 1; i < 4; ++i) {
    PutEse(page, 32 + i * 8, EseXor(bytes.substr(i * block, block), number));
  }
  PutEse(page, 0, EseXor(bytes.substr(8, block - 8), number));
}

struct EseEntry {
  std::string key;
  std::string data;
  uint32_t flags = 0;
};

struct EsePage {
  uint32_t number = 0;
  uint32_t previous = 0;
  uint32_t next = 0;
  uint32_t objectId = 0;
  uint32_t flags = 0;
  std::string firstTag;  // a root's header, else the common prefix of keys
  std::vector<EseEntry> entries;
};

inline std::string EncodeEseEntry(const EsePage& page, const EseEntry& entry, uint32_t* flags) {
  const bool isRoot = (page.flags & kEseRoot) != 0;
  size_t shared = 0;
  while (!isRoot && shared < page.firstTag.size() && shared < entry.key.size() &&
         page.firstTag[shared] == entry.key[shared]) {
    ++shared;
  }
  *flags = entry.flags | (shared > 0 ? kEseTagPrefix : 0);
  std::string bytes;
  if (shared > 0) {
    bytes = EseBytes(static_cast<uint16_t>(shared));
  }
  return bytes + EseBytes(static_cast<uint16_t>(entry.key.size() - shared)) +
         entry.key.substr(shared) + entry.data;
}

// The page, sealed. Throws if its entries have no room.
inline std::string MakeEsePage(const EsePage& page, size_t pageSize) {
  std::string bytes(pageSize, '\0');
  PutEse(&bytes, 16, page.previous);
  PutEse(&bytes, 20, page.next);
  PutEse(&bytes, kEseObjectId, page.objectId);
  PutEse(&bytes, kEseTagCount, static_cast<uint16_t>(page.entries.size() + 1));
  PutEse(&bytes, kEseFlags, page.flags);
  const size_t header = EseHeaderSize(pageSize);
  const size_t end = pageSize - 4 * (page.entries.size() + 1);
  size_t used = 0;
  const auto put = [&](size_t tag, std::string entry, uint32_t flags) {
    if (header + used + entry.size() > end) {
      throw std::length_error("the entries of a test's page have no room");
    }
    if (IsLargeEse(pageSize) && flags != 0) {
      entry[1] = static_cast<char>(static_cast<uint8_t>(entry[1]) | flags << 5U);
      flags = 0;
    }
    bytes.replace(header + used, entry.size(), entry);
    PutEse(&bytes, pageSize - 4 * (tag + 1), static_cast<uint16_t>(entry.size()));
    PutEse(&bytes, pageSize - 4 * (tag + 1) + 2, static_cast<uint16_t>(used | flags << 13U));
    used += entry.size();
  };
  put(0, page.firstTag, 0);
  for (size_t i = 0; i < page.entries.size(); ++i) {
    uint32_t flags = 0;
    const std::string entry = EncodeEseEntry(page, page.entries[i], &flags);
    put(i + 1, entry, flags);
  }
  PutEse(&bytes, 32, static_cast<uint16_t>(used));
  SealEsePage(&bytes, page.number);
  return bytes;
}

}  // namespace postmarker::test
