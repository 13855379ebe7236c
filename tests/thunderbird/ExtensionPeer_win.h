// The extension's side of the native program, played by a test.
#pragma once

#include <windows.h>

#include <chrono>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "NativeFrames.h"
#include "support/Handles_win.h"
#include "support/Stage_win.h"

namespace postmarker::test {

using Json = nlohmann::json;

// Runs the bridge as Thunderbird does, with both streams tied to this object. For one thread.
class ExtensionPeer {
 public:
  ExtensionPeer() {
    KernelHandle theirInput;
    KernelHandle theirOutput;
    MakeStream(&theirInput, &m_output, &m_output);
    MakeStream(&m_input, &theirOutput, &m_input);
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = theirInput.Get();
    startup.hStdOutput = theirOutput.Get();
    startup.hStdError = ::GetStdHandle(STD_ERROR_HANDLE);
    std::wstring command = L"\"" + Program() + L"\" manifest.json extension";
    PROCESS_INFORMATION info = {};
    if (!::CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                          &startup, &info)) {
      throw std::runtime_error("the bridge can't be started: " + std::to_string(::GetLastError()));
    }
    m_process.Reset(info.hProcess);
    const KernelHandle thread(info.hThread);
  }
  ExtensionPeer(const ExtensionPeer&) = delete;
  ExtensionPeer& operator=(const ExtensionPeer&) = delete;
  ~ExtensionPeer() {
    ::TerminateProcess(m_process.Get(), 1);
    ::WaitForSingleObject(m_process.Get(), kLimitMs);
  }

  static std::wstring Program() { return StageFolder() + L"\\bin\\postmarker-thunderbird.exe"; }

  // The next request; none after `limit` milliseconds.
  std::optional<Json> NextRequest(DWORD limit = kLimitMs) {
    const ULONGLONG start = ::GetTickCount64();
    for (;;) {
      if (std::optional<std::string> message = m_frames.Next()) {
        return Json::parse(*message);
      }
      DWORD available = 0;
      if (!::PeekNamedPipe(m_input.Get(), nullptr, 0, nullptr, &available, nullptr)) {
        return std::nullopt;
      }
      if (available > 0) {
        std::string bytes(available, '\0');
        DWORD read = 0;
        ::ReadFile(m_input.Get(), bytes.data(), available, &read, nullptr);
        m_frames.Append(std::string_view(bytes).substr(0, read));
      } else if (::GetTickCount64() - start >= limit) {
        return std::nullopt;
      } else {
        ::Sleep(2);
      }
    }
  }

  void Answer(const Json& message) { WriteBytes(bridge::MakeFrame(message.dump())); }
  void Answer(const Json& id, const Json& items, bool done = true) {
    Answer({{"id", id}, {"items", items}, {"done", done}});
  }

  void WriteBytes(const std::string& bytes) {
    DWORD written = 0;
    ::WriteFile(m_output.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
  }

  // As Thunderbird does when it ends.
  void CloseInput() { m_output.Reset(); }
  void CloseOutput() { m_input.Reset(); }

  // Has the bridge ended by itself, after a wait.
  [[nodiscard]] bool HasEnded() const {
    return ::WaitForSingleObject(m_process.Get(), kLimitMs) == WAIT_OBJECT_0;
  }

 private:
  static constexpr DWORD kLimitMs = 30'000;

  // `ours` is the end that the bridge does not inherit.
  static void MakeStream(KernelHandle* readEnd, KernelHandle* writeEnd, KernelHandle* ours) {
    SECURITY_ATTRIBUTES inherited = {sizeof(inherited), nullptr, TRUE};
    if (!::CreatePipe(readEnd->Put(), writeEnd->Put(), &inherited, 0) ||
        !::SetHandleInformation(ours->Get(), HANDLE_FLAG_INHERIT, 0)) {
      throw std::runtime_error("no stream for the bridge");
    }
  }

  KernelHandle m_process;
  KernelHandle m_input;
  KernelHandle m_output;
  bridge::FrameReader m_frames;
};

}  // namespace postmarker::test
