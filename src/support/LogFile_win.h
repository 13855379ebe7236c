// A text log with date and time prefixes, which can be shortened when it has grown.
#pragma once

#include <windows.h>

#include <cstdarg>
#include <cstdint>
#include <memory>
#include <string>

#include "support/Handles_win.h"

namespace postmarker {

// One log file, open for writing while others may read. Texts are bytes, formatted as printf does
// with the person's code page for wide arguments; nothing adds line ends. Prefixes are local time.
//
// Operations return 0 for success, 2 if no file is open or there is no path, 6 if the lock can't be
// had, 13 if a format fails, 14 if memory fails, or the system's error code. All may be called from
// any thread; each is one unit, a prefix with its text as well.
class LogFile {
 public:
  // Sets the path and opens the file. Whether that worked is seen when something is written.
  LogFile(const wchar_t* path, bool truncate);
  LogFile(const LogFile&) = delete;
  LogFile& operator=(const LogFile&) = delete;
  ~LogFile();

  // The path for the next Open. A beginning as in LogPath.h stands for a folder. Null and empty
  // paths are ignored.
  uint32_t SetPath(const wchar_t* path);

  // Opens the file, emptied with `truncate`, otherwise to go on at its end; makes it if it is
  // missing. 183 if a file is open: that one stays as it is. Deliberate: 0 also when there is no
  // memory for the buffer; the file is not open then, and the first write says so.
  uint32_t Open(bool truncate);
  uint32_t Close();

  // Makes the open file empty.
  uint32_t Clear();

  // Write a prefix: "2026/03/09 ", "07:05:02 " or "2026/03/09 07:05:02 ".
  uint32_t WriteDate();
  uint32_t WriteTime();
  uint32_t WriteDateTime();

  // Writes a formatted text, alone or after a prefix.
  uint32_t Write(const char* format, ...);
  uint32_t WriteWithDate(const char* format, ...);
  uint32_t WriteWithTime(const char* format, ...);
  uint32_t WriteWithDateTime(const char* format, ...);

  // The file's size in bytes, 0 when closed.
  uint64_t GetSize();

  // Cuts the log down to about its last `target` bytes, from a line's beginning on, under a notice
  // that says so. Nothing happens to a log that is no longer than that. 6 if no file is open. On
  // failure the log is as it was, unless the system refused to put the short one into its place.
  uint32_t Shrink(uint32_t target);

  // Copies the path with its terminator; 122, and an empty text, if `size` units are not enough.
  uint32_t GetPath(wchar_t* buffer, size_t size);

 private:
  class Holder;
  using Prefix = uint32_t (LogFile::*)();

  uint32_t WriteFormatted(const char* format, va_list arguments);
  uint32_t WriteBehind(Prefix prefix, const char* format, va_list arguments);
  uint32_t WriteBytes(HANDLE file, const char* bytes, size_t size);
  uint32_t OpenFile(DWORD disposition);
  uint32_t ReplaceByItsEnd(uint64_t size, uint32_t target);
  uint32_t CopyEnd(const FileHandle& log, const std::wstring& copyPath, uint64_t size,
                   uint32_t target);
  uint32_t CopyFromNextLine(const FileHandle& log, const FileHandle& copy);

  std::wstring m_path;
  FileHandle m_file;
  std::unique_ptr<char[]> m_buffer;
  CRITICAL_SECTION m_lock;
  bool m_hasLock;
};

}  // namespace postmarker
