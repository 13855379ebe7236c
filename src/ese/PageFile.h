// The file as a whole: its header, and its pages by number.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "ese/Page.h"

namespace postmarker::ese {

// Why a file can't be read.
enum class FileStatus {
  kOpen,          // it can
  kNotADatabase,  // neither the header nor its copy is whole
  kUnsupported,   // of another kind or version
  kDamaged,       // neither the catalog nor its copy can be read
};

// What the header of a file tells.
struct FileHeader {
  uint32_t pageSize = 0;
  uint32_t revision = 0;
  bool isClean = false;  // closed by the program that wrote it last
};

// The pages of a database file. From one thread at a time: which pages were checked is kept.
class PageFile {
 public:
  // `bytes` is the whole file, which must outlive this object. If the header is damaged, its copy
  // is used.
  explicit PageFile(std::string_view bytes);

  [[nodiscard]] FileStatus Status() const { return m_status; }
  [[nodiscard]] const FileHeader& Header() const { return m_header; }

  // The number of the last page that the file holds as a whole; pages are numbered from 1.
  [[nodiscard]] uint32_t LastPage() const { return m_lastPage; }

  // A page of the tree with this object id. Nothing if the page is not within the file, is damaged,
  // belongs to something else or is out of use.
  [[nodiscard]] std::optional<Page> ReadPage(uint32_t number, uint32_t objectId) const;

 private:
  enum class Verdict : uint8_t { kUnknown, kGood, kBad };

  [[nodiscard]] std::string_view PageBytes(uint32_t number) const;

  std::string_view m_bytes;
  FileStatus m_status = FileStatus::kNotADatabase;
  FileHeader m_header;
  uint32_t m_lastPage = 0;
  mutable std::vector<Verdict> m_verdicts;  // on checksums, by page number
};

}  // namespace postmarker::ese
