// The two streams that tie a native program to Thunderbird.
#pragma once

#include <windows.h>

#include <memory>
#include <optional>
#include <string>

#include "support/Handles_win.h"

namespace postmarker::bridge {

// Reads frames on a thread of its own and writes them on the caller's. Reading can't be canceled
// on every system, so the thread outlives the port if the stream is silent: it keeps what it needs.
// For one thread.
class NativePort {
 public:
  // `input` and `output` are pipes to Thunderbird; they must stay open as long as the process.
  // Without a thread to read on, the stream counts as ended.
  NativePort(HANDLE input, HANDLE output);
  NativePort(const NativePort&) = delete;
  NativePort& operator=(const NativePort&) = delete;
  ~NativePort();

  // Waits until a message is there or the stream has ended, at most for so long.
  void Wait(DWORD milliseconds) const;

  // The next message; none if there is none now.
  std::optional<std::string> Next();

  // Has the stream ended, or become unreadable, and is its last message taken.
  [[nodiscard]] bool HasEnded() const;

  // Sends a message. False if Thunderbird does not listen any more.
  bool Write(const std::string& message);

 private:
  struct Inbox;
  struct Reading;

  static DWORD WINAPI ReadAll(void* reading);

  std::shared_ptr<Inbox> m_inbox;
  HANDLE m_output;
};

}  // namespace postmarker::bridge
