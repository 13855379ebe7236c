// A real Thunderbird with sample mail, which scripts/lib/thunderbird/keeper keeps beside the tests.
#pragma once

#include <winsock2.h>

#include <windows.h>

#include <chrono>
#include <cstdlib>
#include <stdexcept>
#include <string>

#include "support/TempFolder.h"
#include "support/UniqueHandle.h"
#include "support/WizardSession_win.h"

namespace postmarker::test {

struct SocketTraits {
  using Type = SOCKET;
  static Type None() noexcept { return INVALID_SOCKET; }
  static bool IsOpen(Type socket) noexcept { return socket != INVALID_SOCKET; }
  static void Close(Type socket) noexcept { ::closesocket(socket); }
};
using SocketHandle = UniqueHandle<SocketTraits>;

// What Thunderbird and a machine under load may take for anything.
inline constexpr std::chrono::milliseconds kThunderbirdPatience{150'000};

class RealThunderbird {
 public:
  static constexpr wchar_t kPipeName[] =
      L"\\\\.\\pipe\\TB_SPAMFILTER{47D90EE3-EF55-4f69-B0E9-BB740F0ADD6F}";

  // Where the keeper has made its home; empty without a Thunderbird.
  static std::wstring Home() {
    const wchar_t* const home = ::_wgetenv(L"POSTMARKER_THUNDERBIRD");
    return home != nullptr ? home : L"";
  }

  RealThunderbird() {
    WSADATA data = {};
    if (::WSAStartup(MAKEWORD(2, 2), &data) != 0) {
      throw std::runtime_error("no sockets");
    }
  }
  RealThunderbird(const RealThunderbird&) = delete;
  RealThunderbird& operator=(const RealThunderbird&) = delete;
  ~RealThunderbird() { ::WSACleanup(); }

  // Has the keeper do something and returns its answer, which is no failure.
  [[nodiscard]] std::string Ask(const std::string& command) const {
    const SocketHandle socket(::socket(AF_INET, SOCK_STREAM, IPPROTO_TCP));
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port =
        ::htons(static_cast<u_short>(std::atoi(ReadFile(Home() + L"\\port").c_str())));
    address.sin_addr.s_addr = ::htonl(INADDR_LOOPBACK);
    const auto limit = static_cast<DWORD>(kThunderbirdPatience.count());
    ::setsockopt(socket.Get(), SOL_SOCKET, SO_RCVTIMEO, reinterpret_cast<const char*>(&limit),
                 sizeof(limit));
    const std::string line = command + "\n";
    if (::connect(socket.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) !=
            0 ||
        ::send(socket.Get(), line.data(), static_cast<int>(line.size()), 0) !=
            static_cast<int>(line.size())) {
      throw std::runtime_error("the keeper of Thunderbird is not there");
    }
    std::string answer;
    for (char c = 0; ::recv(socket.Get(), &c, 1, 0) == 1 && c != '\n';) {
      answer += c;
    }
    if (answer.empty() || answer.starts_with("failed: ")) {
      throw std::runtime_error(command + ": " + answer);
    }
    return answer;
  }
  void Tell(const std::string& command) const { (void)Ask(command); }

  // Is the pipe served, by an instance that is free or by others.
  static bool IsServed() {
    return ::WaitNamedPipeW(kPipeName, 1) || ::GetLastError() == ERROR_SEM_TIMEOUT;
  }

  // As if a person had it open; it stays as it is if it runs.
  void Open() const {
    Tell("start");
    if (!WaitUntil(&RealThunderbird::IsServed, kThunderbirdPatience)) {
      throw std::runtime_error("Thunderbird does not serve the pipe");
    }
  }

  // As if nobody had it open.
  void End() const {
    Tell("kill");
    WaitUntilGone();
  }

  void WaitUntilGone() const {
    Tell("wait");
    if (!WaitUntil([] { return !IsServed(); }, kThunderbirdPatience)) {
      throw std::runtime_error("the native program does not end");
    }
  }

  [[nodiscard]] int Starts() const { return std::atoi(Ask("starts").c_str()); }

  // Where the files of all folders are.
  static std::wstring MailFolder() { return Home() + L"\\profile\\Mail\\"; }
  // The file of a local folder, by its path below the account with ".sbd" where Thunderbird has it.
  static std::wstring LocalMailFile(const std::wstring& path) {
    return MailFolder() + L"Local Folders\\" + path;
  }
};

}  // namespace postmarker::test
