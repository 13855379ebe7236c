#include "ipc/NamedPipeClient_win.h"

#include <algorithm>

namespace postmarker {
namespace {

constexpr DWORD kBusyPollMs = 5;
constexpr DWORD kShutdownGraceMs = 20;
constexpr DWORD kAnswerPollMs = 5;
constexpr DWORD kInstanceWaitMs = 1000;
constexpr DWORD kPauseWithoutServerMs = 1000;
constexpr DWORD kPauseWithServerMs = 100;
constexpr DWORD kStopPollMs = 50;  // half of what is promised, for a clock with coarse ticks

// Whoever serves the pipe may know who is calling, and no more: by default a server may act in the
// name of its client.
constexpr DWORD kOpenFlags = SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION;

}  // namespace

// Held by the calls that can last, so that Shutdown waits for them.
class NamedPipeClient::BusyMark {
 public:
  explicit BusyMark(NamedPipeClient* client) : m_count(client->m_busyCount) { ++m_count; }
  BusyMark(const BusyMark&) = delete;
  BusyMark& operator=(const BusyMark&) = delete;
  ~BusyMark() { --m_count; }

 private:
  std::atomic<int32_t>& m_count;
};

bool NamedPipeClient::Init(const wchar_t* name, int32_t bufferChars, uint8_t overlapped) {
  Shutdown();
  if (!ArePipeArgumentsValid(name, bufferChars) || overlapped != 0) {
    return false;
  }
  m_name = name;
  m_isStopped = false;
  m_stopEvent.Reset(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
  if (!m_stopEvent || !m_messages.Allocate(bufferChars)) {
    Shutdown();
    return false;
  }
  return true;
}

void NamedPipeClient::Shutdown() {
  if (m_stopEvent) {
    RequestStop();
    while (m_busyCount >= 1) {
      ::Sleep(kBusyPollMs);
    }
    // For a call that has seen no stop yet and is about to take its mark.
    ::Sleep(kShutdownGraceMs);
    Close();
    m_stopEvent.Reset();
  }
  m_messages.Free();
  m_name.clear();
}

void NamedPipeClient::RequestStop() const {
  if (m_stopEvent) {
    m_isStopped = true;
    ::SetEvent(m_stopEvent.Get());
  }
}

bool NamedPipeClient::WaitForStop(DWORD milliseconds) const {
  return ::WaitForSingleObject(m_stopEvent.Get(), milliseconds) == WAIT_OBJECT_0;
}

bool NamedPipeClient::StopRequested() const {
  return m_stopEvent && m_isStopped;
}

bool NamedPipeClient::Open() {
  if (m_pipe || m_name.empty()) {
    Close();
    return false;
  }
  return TryOpen() == Opening::kConnected;
}

NamedPipeClient::Opening NamedPipeClient::TryOpen() {
  m_pipe.Reset(::CreateFileW(m_name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                             OPEN_EXISTING, kOpenFlags, nullptr));
  if (!m_pipe) {
    Close();
    return Opening::kNone;
  }
  DWORD mode = PIPE_READMODE_MESSAGE | PIPE_NOWAIT;
  if (m_owner(m_pipe.Get()) == PipeOwner::kAnotherUser ||
      !::SetNamedPipeHandleState(m_pipe.Get(), &mode, nullptr, nullptr)) {
    Close();
    return Opening::kUnusable;
  }
  return Opening::kConnected;
}

bool NamedPipeClient::PauseUntilStop(DWORD milliseconds, const StopQuery& stop) const {
  DWORD left = milliseconds;
  while (!ShouldStop(stop) && !WaitForStop(std::min(left, kStopPollMs))) {
    if (left <= kStopPollMs) {
      return false;
    }
    left -= kStopPollMs;
  }
  return true;
}

bool NamedPipeClient::TryConnect(int32_t attempts, int32_t pauseMilliseconds,
                                 const StopQuery& stop) {
  const BusyMark mark(this);
  const auto pause = static_cast<DWORD>(std::max(pauseMilliseconds, 0));
  for (int32_t count = 0; count < attempts; ++count) {
    if (!m_stopEvent || PauseUntilStop(count > 0 ? pause : 0, stop)) {
      Close();
      return false;
    }
    if (Open()) {
      return true;
    }
  }
  return attempts <= 0;
}

bool NamedPipeClient::ConnectBlocking() {
  const BusyMark mark(this);
  if (m_pipe || !m_stopEvent) {
    Close();
    return false;
  }
  while (!StopRequested()) {
    const Opening opening = TryOpen();
    if (opening == Opening::kConnected) {
      return true;
    }
    // An unusable pipe is as none, or the loop would never rest while that one is free.
    if (opening == Opening::kUnusable) {
      (void)WaitForStop(kPauseWithoutServerMs);
    } else if (!::WaitNamedPipeW(m_name.c_str(), kInstanceWaitMs)) {
      const bool isServed = ::GetLastError() != ERROR_FILE_NOT_FOUND;
      (void)WaitForStop(isServed ? kPauseWithServerMs : kPauseWithoutServerMs);
    }
  }
  Close();
  return false;
}

bool NamedPipeClient::HasMessage() {
  return StopRequested() || m_messages.HasMessage(m_pipe.Get());
}

bool NamedPipeClient::Read(std::wstring* text) {
  if (StopRequested()) {
    text->clear();
    return false;
  }
  return m_messages.Read(m_pipe.Get(), text);
}

bool NamedPipeClient::Write(const std::wstring& text) {
  return !StopRequested() && m_messages.Write(m_pipe.Get(), text);
}

bool NamedPipeClient::Transact(const std::wstring& text, std::wstring* answer) {
  const BusyMark mark(this);
  answer->clear();
  if (!Write(text)) {
    return false;
  }
  while (!HasMessage()) {
    ::Sleep(kAnswerPollMs);
  }
  return Read(answer);
}

bool NamedPipeClient::Flush() {
  const BusyMark mark(this);
  return !StopRequested() && ::FlushFileBuffers(m_pipe.Get());
}

}  // namespace postmarker
