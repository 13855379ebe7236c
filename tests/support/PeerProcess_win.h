// Stand-ins that run as processes of their own.
#pragma once

#include <windows.h>

#include <atomic>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/Handles_win.h"
#include "support/Stage_win.h"

namespace postmarker::test {

// A name for a system object that no other test has. It starts with "Local\".
inline std::wstring FreshObjectName() {
  static std::atomic<unsigned> count{0};
  return L"Local\\PostmarkerTest-" + std::to_wstring(::GetCurrentProcessId()) + L"-" +
         std::to_wstring(++count);
}

// The path of a program or library below tests/peers of the build, such as "resident\resident.exe".
inline std::wstring PeerPath(const std::wstring& name) {
  return StageFolder() + L"\\..\\tests\\peers\\" + name;
}

// A program, from construction to destruction, which ends it by force. It ends with the test
// program as well, however that ends.
class PeerProcess {
 public:
  // Starts the program. Arguments must not hold quotation marks or end in a backslash. Throws where
  // the system can't start it.
  PeerProcess(const std::wstring& program, const std::vector<std::wstring>& arguments) {
    std::wstring command = L"\"" + program + L"\"";
    for (const std::wstring& argument : arguments) {
      command.append(L" \"").append(argument).append(L"\"");
    }
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION info = {};
    if (!::CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, CREATE_SUSPENDED,
                          nullptr, nullptr, &startup, &info)) {
      throw std::runtime_error("a peer can't be started: " + std::to_string(::GetLastError()));
    }
    m_process.Reset(info.hProcess);
    const KernelHandle thread(info.hThread);
    m_job.Reset(::CreateJobObjectW(nullptr, nullptr));
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    ::SetInformationJobObject(m_job.Get(), JobObjectExtendedLimitInformation, &limits,
                              sizeof(limits));
    ::AssignProcessToJobObject(m_job.Get(), info.hProcess);
    ::ResumeThread(info.hThread);
  }
  PeerProcess(PeerProcess&&) = default;
  PeerProcess& operator=(PeerProcess&&) = delete;
  PeerProcess(const PeerProcess&) = delete;
  PeerProcess& operator=(const PeerProcess&) = delete;
  ~PeerProcess() { Kill(); }

  // Ends the process from outside, at whatever it is doing, and waits until it is gone.
  void Kill() {
    if (m_process) {
      ::TerminateProcess(m_process.Get(), 1);
      ::WaitForSingleObject(m_process.Get(), 20'000);
      m_process.Reset();
    }
  }

  // Waits until the process has set the event, which is reset by hand. False if the process ends
  // first, or after 20 seconds.
  [[nodiscard]] bool WaitFor(HANDLE event) const {
    const HANDLE either[] = {event, m_process.Get()};
    return ::WaitForMultipleObjects(2, either, FALSE, 20'000) == WAIT_OBJECT_0;
  }

  // Waits for the process' own end; its exit code, or -1 after `timeout` milliseconds.
  [[nodiscard]] int WaitForExit(DWORD timeout = 60'000) const {
    DWORD code = 0;
    if (::WaitForSingleObject(m_process.Get(), timeout) != WAIT_OBJECT_0 ||
        !::GetExitCodeProcess(m_process.Get(), &code)) {
      return -1;
    }
    return static_cast<int>(code);
  }

  [[nodiscard]] DWORD Id() const { return ::GetProcessId(m_process.Get()); }

 private:
  KernelHandle m_process;
  KernelHandle m_job;
};

// Starts a program whose first argument is the name of an event that it sets when it is ready, and
// waits for that. Throws if it does not get ready.
inline PeerProcess StartPeer(const std::wstring& program, std::vector<std::wstring> arguments) {
  const std::wstring name = FreshObjectName();
  const KernelHandle ready(::CreateEventW(nullptr, TRUE, FALSE, name.c_str()));
  arguments.insert(arguments.begin(), name);
  PeerProcess process(program, arguments);
  if (!process.WaitFor(ready.Get())) {
    throw std::runtime_error("a peer did not get ready");
  }
  return process;
}

}  // namespace postmarker::test
