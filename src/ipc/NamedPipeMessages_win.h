// What both ends of a named pipe share: the transfer of messages, each one NUL-terminated text of
// UTF-16 units.
#pragma once

#include <windows.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

namespace postmarker {

// A pipe name with fewer characters is refused.
inline constexpr size_t kMinPipeNameChars = 10;

// True for a pipe name and a buffer size that both ends take.
bool ArePipeArgumentsValid(const wchar_t* name, int32_t bufferChars);

// The transfer buffer of one end and the three transfers through it, on a pipe in message mode that
// does not wait. A handle of null or INVALID_HANDLE_VALUE counts as none. For one conversation;
// nothing is locked.
class NamedPipeMessages {
 public:
  // Characters of a received message that are kept. Deliberate: a longer message arrives cut to
  // them, and not as an error. The other side of the pipe knows and relies on it.
  static constexpr size_t kMaxMessageChars = 1023;

  // Makes a buffer of `chars` wide characters; false if there is no memory for it. REQUIRES:
  // chars > 0.
  bool Allocate(int32_t chars);
  void Free();

  // Would Read give something: a message, or the news that the pipe is broken.
  bool HasMessage(HANDLE pipe);

  // Takes the next message. False, with *text empty, if there is none or the pipe is broken.
  bool Read(HANDLE pipe, std::wstring* text);

  // Sends `text` up to its first NUL. False for an empty text, for one that does not fit into the
  // buffer with its terminator, and if the pipe did not take the whole message: a full pipe that
  // does not wait reports success and takes nothing.
  [[nodiscard]] bool Write(HANDLE pipe, const std::wstring& text) const;

 private:
  struct FreeMemory {
    void operator()(wchar_t* memory) const noexcept { std::free(memory); }
  };

  [[nodiscard]] DWORD Size() const { return static_cast<DWORD>(m_chars) * sizeof(wchar_t); }
  void Clear();

  int32_t m_chars = 0;
  std::unique_ptr<wchar_t[], FreeMemory> m_buffer;
  DWORD m_dirtyBytes = 0;  // everything after them is zero
};

}  // namespace postmarker
