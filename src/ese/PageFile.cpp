#include "ese/PageFile.h"

#include <algorithm>
#include <limits>

#include "ese/ByteAccess.h"
#include "ese/Checksum.h"

namespace postmarker::ese {
namespace {

constexpr uint32_t kSignature = 0x89ABCDEF;
constexpr uint32_t kVersion = 0x620;
constexpr uint32_t kDatabaseKind = 0;
constexpr uint32_t kCleanState = 3;
constexpr uint32_t kOldPageSize = 4096;  // of files whose header doesn't say
constexpr uint32_t kHeaderPages = 2;     // before page 1

// Places in the header.
constexpr size_t kChecksum = 0;
constexpr size_t kSignaturePlace = 4;
constexpr size_t kVersionPlace = 8;
constexpr size_t kKindPlace = 12;
constexpr size_t kStatePlace = 52;
constexpr size_t kRevisionPlace = 232;
constexpr size_t kPageSizePlace = 236;

struct ReadHeader {
  FileStatus status;
  FileHeader header;
};

// The header that begins at `place`, if it is whole.
std::optional<ReadHeader> ReadHeaderAt(std::string_view file, size_t place) {
  const auto start = TrySlice(file, place, kMinPageBytes);
  if (!start || LoadAt<uint32_t>(*start, kSignaturePlace) != kSignature) {
    return std::nullopt;
  }
  FileHeader header;
  header.pageSize = LoadAt<uint32_t>(*start, kPageSizePlace);
  if (header.pageSize == 0) {
    header.pageSize = kOldPageSize;
  }
  if (!IsPageSize(header.pageSize)) {
    return std::nullopt;
  }
  const auto page = TrySlice(file, place, header.pageSize);
  if (!page ||
      LoadAt<uint32_t>(*page, kChecksum) != XorWords(page->substr(sizeof(uint32_t)), kXorSeed)) {
    return std::nullopt;
  }
  header.revision = LoadAt<uint32_t>(*page, kRevisionPlace);
  header.isClean = LoadAt<uint32_t>(*page, kStatePlace) == kCleanState;
  const bool isSupported = LoadAt<uint32_t>(*page, kVersionPlace) == kVersion &&
                           LoadAt<uint32_t>(*page, kKindPlace) == kDatabaseKind;
  return ReadHeader{isSupported ? FileStatus::kOpen : FileStatus::kUnsupported, header};
}

// The header, or else its copy in the second page, whose place depends on the size of pages.
std::optional<ReadHeader> FindHeader(std::string_view file) {
  if (auto header = ReadHeaderAt(file, 0)) {
    return header;
  }
  for (uint32_t size = kMinPageBytes; size <= kMaxPageBytes; size *= 2) {
    auto header = ReadHeaderAt(file, size);
    if (header && header->header.pageSize == size) {
      return header;
    }
  }
  return std::nullopt;
}

}  // namespace

PageFile::PageFile(std::string_view bytes) : m_bytes(bytes) {
  const std::optional<ReadHeader> found = FindHeader(bytes);
  if (!found) {
    return;
  }
  m_status = found->status;
  m_header = found->header;
  const uint64_t pages = bytes.size() / m_header.pageSize;
  if (pages > kHeaderPages) {
    m_lastPage = static_cast<uint32_t>(
        std::min<uint64_t>(pages - kHeaderPages, std::numeric_limits<uint32_t>::max() - 1));
  }
  m_verdicts.resize(size_t{m_lastPage} + 1);
}

std::string_view PageFile::PageBytes(uint32_t number) const {
  return m_bytes.substr((size_t{number} + 1) * m_header.pageSize, m_header.pageSize);
}

std::optional<Page> PageFile::ReadPage(uint32_t number, uint32_t objectId) const {
  if (number == 0 || number > m_lastPage) {
    return std::nullopt;
  }
  const std::string_view bytes = PageBytes(number);
  Verdict& verdict = m_verdicts[number];
  if (verdict == Verdict::kUnknown) {
    verdict = HasRightChecksum(bytes, number) ? Verdict::kGood : Verdict::kBad;
  }
  if (verdict == Verdict::kBad) {
    return std::nullopt;
  }
  std::optional<Page> page = Page::Parse(bytes);
  if (page && (page->ObjectId() != objectId || page->IsOutOfUse())) {
    page.reset();
  }
  return page;
}

}  // namespace postmarker::ese
