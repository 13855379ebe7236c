#include "clients/thunderbird/ThunderbirdConnection_win.h"

#include <windows.h>

#include <shellapi.h>

#include <exception>

#include "clients/thunderbird/TbInstallation_win.h"
#include "support/Handles_win.h"

namespace postmarker {
namespace {

constexpr wchar_t kPipeName[] = L"\\\\.\\pipe\\TB_SPAMFILTER{47D90EE3-EF55-4f69-B0E9-BB740F0ADD6F}";
constexpr int32_t kPipeBufferChars = 2'560'000;
constexpr int32_t kRunningAttempts = 2;
constexpr int32_t kRunningPauseMs = 100;
constexpr int32_t kStartAttempts = 20;
constexpr int32_t kCancelPollMs = 50;  // in silence it is asked at each poll of the bridge

bool StartHidden(const std::wstring& program) {
  SHELLEXECUTEINFOW start = {};
  start.cbSize = sizeof(start);
  start.fMask = SEE_MASK_NOCLOSEPROCESS;
  start.lpFile = program.c_str();
  start.nShow = SW_HIDE;
  const bool isStarted = ::ShellExecuteExW(&start) != FALSE;
  const KernelHandle process(start.hProcess);
  return isStarted;
}

}  // namespace

int64_t ThunderbirdConnection::Now() {
  return static_cast<int64_t>(::GetTickCount64());
}

void ThunderbirdConnection::Sleep(int32_t milliseconds) {
  ::Sleep(static_cast<DWORD>(milliseconds));
}

bool ThunderbirdConnection::IsAbandoned() {
  if (!m_stop || Now() < m_nextLook) {
    return false;
  }
  m_nextLook = Now() + kCancelPollMs;
  return m_stop();
}

ResultCode ConnectOrLaunch(ThunderbirdConnection* connection, int32_t limitMilliseconds) {
  const std::wstring program = thunderbird::GetThunderbirdExePath();
  NamedPipeClient& pipe = connection->Pipe();
  if (program.empty() || !pipe.Init(kPipeName, kPipeBufferChars, 0)) {
    return kFail;
  }
  const StopQuery& stop = connection->Stop();
  if (pipe.TryConnect(kRunningAttempts, kRunningPauseMs, stop)) {
    connection->alreadyRunning = 1;
    return kOk;
  }
  connection->alreadyRunning = 0;
  if (ShouldStop(stop) || !StartHidden(program) ||
      !pipe.TryConnect(kStartAttempts, limitMilliseconds / kStartAttempts, stop)) {
    return kFail;
  }
  (void)pipe.Write(L"HideThunderbirdWindow");
  return kOk;
}

ResultCode ReleaseThunderbird(ThunderbirdConnection* connection) noexcept {
  if (connection->alreadyRunning == 0) {
    try {
      (void)connection->Pipe().Write(L"ExitThunderbird");
    } catch (const std::exception&) {
      // Called by destructors: without memory for the word, Thunderbird stays.
      ::SetLastError(ERROR_OUTOFMEMORY);
    }
  }
  return kOk;
}

}  // namespace postmarker
