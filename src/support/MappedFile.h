// A read-only view of a whole file.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "support/Results.h"

#if defined(_WIN32)
#include "support/Handles_win.h"
#endif

namespace postmarker {

// Maps a whole file into memory. The file may be held by a running client: when it can't be opened
// with shared reading, it is opened with shared reading and writing. Its bytes can then change
// under the reader's hands, and cutting it short while it is mapped is the writer's fault that no
// reader can catch. An empty file, one of 4 GiB or more and one that can't be opened give a
// failure. Use an object from one thread at a time; several objects may view the same file.
class MappedFile {
 public:
  // `path` is UTF-16, on Linux converted to UTF-8. Nothing is opened unless `map` is nonzero.
  MappedFile(const std::wstring& path, uint8_t map);
  MappedFile(const MappedFile&) = delete;
  MappedFile& operator=(const MappedFile&) = delete;
  ~MappedFile();

  // 0 while the view stands, 0x80004005 after any failure; then Data is null and Size 0.
  [[nodiscard]] ResultCode Status() const { return m_status; }
  [[nodiscard]] const uint8_t* Data() const { return m_data; }
  [[nodiscard]] uint32_t Size() const { return m_size; }

  // The bytes; they live as long as this object. Empty after a failure.
  [[nodiscard]] std::string_view Bytes() const {
    return {reinterpret_cast<const char*>(m_data), m_size};
  }

 private:
#if defined(_WIN32)
  FileHandle m_file;
  KernelHandle m_mapping;
  FileView m_view;
#endif
  uint32_t m_size = 0;
  const uint8_t* m_data = nullptr;
  ResultCode m_status = kFail;
};

// True if a file can be opened for reading in one of MappedFile's two ways. Nothing is kept open.
bool CanOpenForReading(const std::wstring& path);

}  // namespace postmarker
