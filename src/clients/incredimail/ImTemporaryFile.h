// A file for one moment, in the system's folder for them.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#if defined(_WIN32)
#include "support/Handles_win.h"
#else
#include "support/Descriptor_posix.h"
#endif

namespace postmarker {

// Begins as an empty file of a new name. Once something was written, the file is gone with the
// object or with the process, whichever ends first, so that no mail stays behind. One to which
// nothing was written stays, empty. From one thread at a time.
class ImTemporaryFile {
 public:
  ImTemporaryFile();
  ImTemporaryFile(const ImTemporaryFile&) = delete;
  ImTemporaryFile& operator=(const ImTemporaryFile&) = delete;
  ~ImTemporaryFile();

  // UTF-16; empty if no file could be made.
  [[nodiscard]] const std::wstring& Path() const { return m_path; }

  // Writes the file's content, once. False if that failed; the file is empty then, and stays.
  bool Write(std::string_view bytes);

  // The content as the file has it. It is read through the handle that the file was written with:
  // opening the file by its name is refused to who does not share its deletion. Lives as long as
  // the object; empty before Write and after a failed one.
  [[nodiscard]] std::string_view Bytes() const { return m_content; }

 private:
  bool View(size_t size);

  std::wstring m_path;
#if defined(_WIN32)
  FileHandle m_file;
  KernelHandle m_mapping;
  FileView m_view;
#else
  Descriptor m_file;
#endif
  std::string_view m_content;
};

}  // namespace postmarker
