#include "ipc/NamedPipeMessages_win.h"

#include <algorithm>
#include <cstring>
#include <cwchar>

namespace postmarker {
namespace {

bool IsHandle(HANDLE pipe) {
  return pipe != nullptr && pipe != INVALID_HANDLE_VALUE;
}

}  // namespace

bool ArePipeArgumentsValid(const wchar_t* name, int32_t bufferChars) {
  return name != nullptr && std::wcslen(name) >= kMinPipeNameChars && bufferChars > 0;
}

bool NamedPipeMessages::Allocate(int32_t chars) {
  // A small buffer has room for the cut all the same.
  const size_t room = std::max(static_cast<size_t>(chars), kMaxMessageChars + 1);
  m_buffer.reset(static_cast<wchar_t*>(std::calloc(room, sizeof(wchar_t))));
  m_chars = m_buffer ? chars : 0;
  m_dirtyBytes = 0;
  return m_buffer != nullptr;
}

void NamedPipeMessages::Free() {
  m_buffer.reset();
  m_chars = 0;
  m_dirtyBytes = 0;
}

// Only what an earlier transfer wrote is not zero, which in a large buffer is next to nothing.
void NamedPipeMessages::Clear() {
  std::memset(m_buffer.get(), 0, m_dirtyBytes);
  m_dirtyBytes = 0;
}

bool NamedPipeMessages::HasMessage(HANDLE pipe) {
  if (!IsHandle(pipe) || !m_buffer) {
    return true;  // Read then fails
  }
  // Only whether there is something is asked: with a buffer the system would make another one of
  // its size for each call.
  DWORD available = 0;
  if (::PeekNamedPipe(pipe, nullptr, 0, nullptr, &available, nullptr)) {
    return available != 0;
  }
  return ::GetLastError() != ERROR_NO_DATA;
}

bool NamedPipeMessages::Read(HANDLE pipe, std::wstring* text) {
  text->clear();
  if (!IsHandle(pipe) || !m_buffer) {
    return false;
  }
  Clear();
  DWORD bytes = 0;
  if (!::ReadFile(pipe, m_buffer.get(), Size(), &bytes, nullptr)) {
    m_dirtyBytes = Size();
    return false;
  }
  m_dirtyBytes = std::min(bytes, Size());
  m_buffer[kMaxMessageChars] = L'\0';
  *text = m_buffer.get();
  return true;
}

bool NamedPipeMessages::Write(HANDLE pipe, const std::wstring& text) const {
  const size_t length = std::wcslen(text.c_str());
  if (!IsHandle(pipe) || length == 0 || length >= static_cast<size_t>(m_chars)) {
    return false;
  }
  const auto bytes = static_cast<DWORD>((length + 1) * sizeof(wchar_t));
  DWORD written = 0;
  return ::WriteFile(pipe, text.c_str(), bytes, &written, nullptr) && written == bytes;
}

}  // namespace postmarker
