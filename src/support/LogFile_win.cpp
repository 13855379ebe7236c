#include "support/LogFile_win.h"

#include <clocale>
#include <cstdio>
#include <new>
#include <string_view>

#include "support/LogPath.h"
#include "support/Registry_win.h"

namespace postmarker {
namespace {

constexpr size_t kBufferSize = 3096;
constexpr DWORD kSpinCount = 4000;

// By which wide arguments become bytes. Given to each call that formats, so that no thread's own
// locale changes.
struct LocaleTraits {
  using Type = _locale_t;
  static Type None() noexcept { return nullptr; }
  static bool IsOpen(Type locale) noexcept { return locale != nullptr; }
  static void Close(Type locale) noexcept { ::_free_locale(locale); }
};
using LocaleHandle = UniqueHandle<LocaleTraits>;

std::wstring ShellFolder(const wchar_t* name) {
  const RegistryKey key = RegistryKey::Open(
      HKEY_CURRENT_USER, L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders",
      KEY_QUERY_VALUE);
  return key.ReadString(name, MAX_PATH * sizeof(wchar_t)).value_or(std::wstring());
}

std::wstring FolderOf(LogFolder folder) {
  wchar_t path[MAX_PATH] = {};
  switch (folder) {
    case LogFolder::kProgram: {
      const DWORD length = ::GetModuleFileNameW(nullptr, path, MAX_PATH);
      const std::wstring program(path, length < MAX_PATH ? length : 0);
      const size_t end = program.rfind(L'\\');
      return end == std::wstring::npos ? std::wstring() : program.substr(0, end);
    }
    case LogFolder::kTemporary: {
      const DWORD length = ::GetTempPathW(MAX_PATH, path);
      return {path, length < MAX_PATH ? length : 0};
    }
    case LogFolder::kApplicationData:
      return ShellFolder(L"AppData");
    case LogFolder::kDesktop:
      return ShellFolder(L"Desktop");
  }
  return {};
}

uint32_t SeekToEnd(const FileHandle& file) {
  return ::SetFilePointerEx(file.Get(), {}, nullptr, FILE_END) ? ERROR_SUCCESS : ::GetLastError();
}

FileHandle OpenShared(const std::wstring& path, DWORD access, DWORD disposition) {
  return FileHandle(::CreateFileW(path.c_str(), access, FILE_SHARE_READ, nullptr, disposition,
                                  FILE_ATTRIBUTE_NORMAL, nullptr));
}

}  // namespace

// Holds the lock of a log. Nests on a thread.
class LogFile::Holder {
 public:
  explicit Holder(LogFile* log) : m_log(log) {
    if (m_log->m_hasLock) {
      ::EnterCriticalSection(&m_log->m_lock);
    }
  }
  Holder(const Holder&) = delete;
  Holder& operator=(const Holder&) = delete;
  ~Holder() {
    if (m_log->m_hasLock) {
      ::LeaveCriticalSection(&m_log->m_lock);
    }
  }

  // What keeps an operation on the open file from running; 0 if nothing does.
  [[nodiscard]] uint32_t Obstacle() const {
    if (!m_log->m_hasLock) {
      return ERROR_INVALID_HANDLE;
    }
    return m_log->m_file ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND;
  }
  [[nodiscard]] bool IsHeld() const { return m_log->m_hasLock; }

 private:
  LogFile* m_log;
};

LogFile::LogFile(const wchar_t* path, bool truncate)
    : m_hasLock(::InitializeCriticalSectionAndSpinCount(&m_lock, kSpinCount) != FALSE) {
  SetPath(path);
  Open(truncate);
}

LogFile::~LogFile() {
  Close();
  if (m_hasLock) {
    ::DeleteCriticalSection(&m_lock);
  }
}

uint32_t LogFile::SetPath(const wchar_t* path) {
  const Holder holder(this);
  if (!holder.IsHeld()) {
    return ERROR_INVALID_HANDLE;
  }
  if (path != nullptr && *path != L'\0') {
    m_path = ExpandLogPath(path, FolderOf);
  }
  return ERROR_SUCCESS;
}

uint32_t LogFile::OpenFile(DWORD disposition) {
  FileHandle file = OpenShared(m_path, GENERIC_WRITE, disposition);
  if (!file) {
    return ::GetLastError();
  }
  const uint32_t sought = disposition == OPEN_ALWAYS ? SeekToEnd(file) : ERROR_SUCCESS;
  m_file = std::move(file);
  return sought;
}

uint32_t LogFile::Open(bool truncate) {
  const Holder holder(this);
  if (!holder.IsHeld()) {
    return ERROR_INVALID_HANDLE;
  }
  if (m_file) {
    return ERROR_ALREADY_EXISTS;
  }
  if (m_path.empty()) {
    return ERROR_FILE_NOT_FOUND;
  }
  if (const uint32_t error = OpenFile(truncate ? CREATE_ALWAYS : OPEN_ALWAYS)) {
    m_file.Reset();
    return error;
  }
  m_buffer.reset(new (std::nothrow) char[kBufferSize]);
  if (!m_buffer) {
    m_file.Reset();
  }
  return ERROR_SUCCESS;
}

uint32_t LogFile::Close() {
  const Holder holder(this);
  if (const uint32_t obstacle = holder.Obstacle()) {
    return obstacle;
  }
  m_file.Reset();
  m_buffer.reset();
  return ERROR_SUCCESS;
}

uint32_t LogFile::Clear() {
  const Holder holder(this);
  if (const uint32_t obstacle = holder.Obstacle()) {
    return obstacle;
  }
  if (!::SetFilePointerEx(m_file.Get(), {}, nullptr, FILE_BEGIN) || !::SetEndOfFile(m_file.Get())) {
    return ::GetLastError();
  }
  return ERROR_SUCCESS;
}

uint32_t LogFile::WriteBytes(HANDLE file, const char* bytes, size_t size) {
  DWORD written = 0;
  return ::WriteFile(file, bytes, static_cast<DWORD>(size), &written, nullptr) ? ERROR_SUCCESS
                                                                               : ::GetLastError();
}

uint32_t LogFile::WriteFormatted(const char* format, va_list arguments) {
  const Holder holder(this);
  if (const uint32_t obstacle = holder.Obstacle()) {
    return obstacle;
  }
  const LocaleHandle locale(::_create_locale(LC_CTYPE, ".ACP"));
  va_list again;
  va_copy(again, arguments);
  const int measured = ::_vscprintf_l(format, locale.Get(), again);
  va_end(again);
  if (measured < 0) {
    return ERROR_INVALID_DATA;
  }
  const auto length = static_cast<size_t>(measured);
  std::unique_ptr<char[]> large;
  char* text = m_buffer.get();
  size_t room = kBufferSize;
  if (length > kBufferSize) {
    room = length + 1;
    large.reset(new (std::nothrow) char[room]);
    text = large.get();
    if (text == nullptr) {
      return ERROR_OUTOFMEMORY;
    }
  }
  // A text that just fills the room gets no terminator and needs none.
  if (::_vsnprintf_l(text, room, format, locale.Get(), arguments) < 0) {
    return ERROR_INVALID_DATA;
  }
  return WriteBytes(m_file.Get(), text, length);
}

uint32_t LogFile::Write(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const uint32_t result = WriteFormatted(format, arguments);
  va_end(arguments);
  return result;
}

uint32_t LogFile::WriteDate() {
  SYSTEMTIME now = {};
  ::GetLocalTime(&now);
  return Write("%d/%02d/%02d ", now.wYear, now.wMonth, now.wDay);
}

uint32_t LogFile::WriteTime() {
  SYSTEMTIME now = {};
  ::GetLocalTime(&now);
  return Write("%02d:%02d:%02d ", now.wHour, now.wMinute, now.wSecond);
}

uint32_t LogFile::WriteDateTime() {
  SYSTEMTIME now = {};
  ::GetLocalTime(&now);
  return Write("%d/%02d/%02d %02d:%02d:%02d ", now.wYear, now.wMonth, now.wDay, now.wHour,
               now.wMinute, now.wSecond);
}

uint32_t LogFile::WriteBehind(Prefix prefix, const char* format, va_list arguments) {
  const Holder holder(this);
  if (const uint32_t error = (this->*prefix)()) {
    return error;
  }
  return WriteFormatted(format, arguments);
}

uint32_t LogFile::WriteWithDate(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const uint32_t result = WriteBehind(&LogFile::WriteDate, format, arguments);
  va_end(arguments);
  return result;
}

uint32_t LogFile::WriteWithTime(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const uint32_t result = WriteBehind(&LogFile::WriteTime, format, arguments);
  va_end(arguments);
  return result;
}

uint32_t LogFile::WriteWithDateTime(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const uint32_t result = WriteBehind(&LogFile::WriteDateTime, format, arguments);
  va_end(arguments);
  return result;
}

uint64_t LogFile::GetSize() {
  const Holder holder(this);
  LARGE_INTEGER size = {};
  if (holder.Obstacle() != ERROR_SUCCESS || !::GetFileSizeEx(m_file.Get(), &size)) {
    return 0;
  }
  return static_cast<uint64_t>(size.QuadPart);
}

uint32_t LogFile::GetPath(wchar_t* buffer, size_t size) {
  const Holder holder(this);
  if (!holder.IsHeld()) {
    return ERROR_INVALID_HANDLE;
  }
  if (size == 0) {
    return ERROR_INSUFFICIENT_BUFFER;
  }
  *buffer = L'\0';
  if (m_path.empty()) {
    return ERROR_FILE_NOT_FOUND;
  }
  if (m_path.size() >= size) {
    return ERROR_INSUFFICIENT_BUFFER;
  }
  m_path.copy(buffer, m_path.size());
  buffer[m_path.size()] = L'\0';
  return ERROR_SUCCESS;
}

uint32_t LogFile::Shrink(uint32_t target) {
  const Holder holder(this);
  if (holder.Obstacle() != ERROR_SUCCESS) {
    return ERROR_INVALID_HANDLE;
  }
  const uint64_t size = GetSize();
  if (size <= target) {
    return ERROR_SUCCESS;
  }
  m_file.Reset();
  uint32_t result = ReplaceByItsEnd(size, target);
  const uint32_t reopened = OpenFile(OPEN_ALWAYS);
  if (!m_file) {
    m_buffer.reset();
  }
  return result != ERROR_SUCCESS ? result : reopened;
}

// The steps of Shrink while the log is closed.
uint32_t LogFile::ReplaceByItsEnd(uint64_t size, uint32_t target) {
  const std::wstring copyPath = m_path + L".tmp";
  FileHandle log = OpenShared(m_path, GENERIC_READ, OPEN_EXISTING);
  if (!log) {
    return ::GetLastError();
  }
  if (copyPath.size() >= MAX_PATH) {
    return ERROR_FILENAME_EXCED_RANGE;
  }
  if (const uint32_t error = CopyEnd(log, copyPath, size, target)) {
    return error;
  }
  log.Reset();
  if (!::DeleteFileW(m_path.c_str()) || !::MoveFileW(copyPath.c_str(), m_path.c_str())) {
    const uint32_t error = ::GetLastError();
    ::DeleteFileW(copyPath.c_str());
    return error;
  }
  return ERROR_SUCCESS;
}

// Makes the short log. On failure there is none.
uint32_t LogFile::CopyEnd(const FileHandle& log, const std::wstring& copyPath, uint64_t size,
                          uint32_t target) {
  LARGE_INTEGER back = {};
  back.QuadPart = -static_cast<LONGLONG>(target);
  if (!::SetFilePointerEx(log.Get(), back, nullptr, FILE_END)) {
    return ::GetLastError();
  }
  FileHandle copy = OpenShared(copyPath, GENERIC_WRITE, CREATE_ALWAYS);
  if (!copy) {
    return ::GetLastError();
  }
  const int notice = std::snprintf(m_buffer.get(), kBufferSize,
                                   "INFO: The log was shrunk from %u bytes to ~%u bytes\r\n\r\n",
                                   static_cast<unsigned>(size), static_cast<unsigned>(target));
  uint32_t error = WriteBytes(copy.Get(), m_buffer.get(), static_cast<size_t>(notice));
  if (error == ERROR_SUCCESS) {
    error = CopyFromNextLine(log, copy);
  }
  copy.Reset();
  if (error != ERROR_SUCCESS) {
    ::DeleteFileW(copyPath.c_str());
  }
  return error;
}

// Copies what follows the next line feed, which may be nothing.
uint32_t LogFile::CopyFromNextLine(const FileHandle& log, const FileHandle& copy) {
  bool atLine = false;
  for (;;) {
    DWORD read = 0;
    if (!::ReadFile(log.Get(), m_buffer.get(), kBufferSize, &read, nullptr)) {
      return ::GetLastError();
    }
    if (read == 0) {
      return ERROR_SUCCESS;
    }
    std::string_view block(m_buffer.get(), read);
    if (!atLine) {
      const size_t feed = block.find('\n');
      atLine = feed != std::string_view::npos;
      block.remove_prefix(atLine ? feed + 1 : block.size());
    }
    if (!block.empty()) {
      if (const uint32_t error = WriteBytes(copy.Get(), block.data(), block.size())) {
        return error;
      }
    }
  }
}

}  // namespace postmarker
