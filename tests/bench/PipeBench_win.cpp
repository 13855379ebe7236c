// One round trip over a named pipe, and one command of the bridge to Thunderbird, each beside a
// bare exchange of the same bytes with the same polls.
#include <windows.h>

#include <benchmark/benchmark.h>

#include <stdexcept>
#include <string>
#include <thread>

#include "clients/thunderbird/TbCommands.h"
#include "clients/thunderbird/ThunderbirdConnection_win.h"
#include "ipc/NamedPipeClient_win.h"
#include "support/Handles_win.h"

namespace postmarker {
namespace {

constexpr wchar_t kPipeName[] = L"\\\\.\\pipe\\postmarker-bench";
constexpr int32_t kBufferChars = 2'560'000;  // the bridge's
constexpr DWORD kPipeBytes = 1 << 20;
constexpr int kFolders = 2000;
constexpr wchar_t kQuestion[] = L"SentItemsEntries";
constexpr wchar_t kAnswer[] = L"42";
constexpr wchar_t kEnd[] = L"#####SentItemsEntries";
constexpr wchar_t kFolder[] = L"Local Folders\\Inbox######1######local######true";

void Send(HANDLE pipe, const wchar_t* text) {
  DWORD written = 0;
  const auto bytes = static_cast<DWORD>((std::wcslen(text) + 1) * sizeof(wchar_t));
  if (!::WriteFile(pipe, text, bytes, &written, nullptr) || written != bytes) {
    throw std::runtime_error("a message was not sent");
  }
}

// Answers without a poll, on a thread of its own, until its client has gone.
class Server {
 public:
  Server()
      : m_pipe(::CreateNamedPipeW(kPipeName, PIPE_ACCESS_DUPLEX,
                                  PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE | PIPE_WAIT, 1,
                                  kPipeBytes, kPipeBytes, 0, nullptr)),
        m_thread([this] { Run(); }) {}
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;
  ~Server() { m_thread.join(); }

 private:
  void Run() {
    ::ConnectNamedPipe(m_pipe.Get(), nullptr);
    wchar_t text[1024] = {};
    DWORD bytes = 0;
    while (::ReadFile(m_pipe.Get(), text, sizeof(text) - sizeof(wchar_t), &bytes, nullptr)) {
      text[bytes / sizeof(wchar_t)] = L'\0';
      const std::wstring command = text;
      if (command == L"GiveAllFolders") {
        for (int i = 0; i < kFolders; ++i) {
          Send(m_pipe.Get(), kFolder);
        }
        Send(m_pipe.Get(), L"#####GiveAllFolders");
      } else {
        Send(m_pipe.Get(), kAnswer);
        if (command == kQuestion) {
          Send(m_pipe.Get(), kEnd);
        }
      }
    }
  }

  FileHandle m_pipe;
  std::thread m_thread;
};

// The platform's own calls, with a poll of so many milliseconds or, for 0, a read that waits.
class BarePipe {
 public:
  explicit BarePipe(DWORD poll)
      : m_poll(poll),
        m_pipe(::CreateFileW(kPipeName, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0,
                             nullptr)) {
    DWORD mode = PIPE_READMODE_MESSAGE | (poll != 0 ? PIPE_NOWAIT : PIPE_WAIT);
    ::SetNamedPipeHandleState(m_pipe.Get(), &mode, nullptr, nullptr);
  }

  [[nodiscard]] HANDLE Get() const { return m_pipe.Get(); }

  std::wstring Read() const {
    DWORD available = 0;
    while (m_poll != 0 && ::PeekNamedPipe(m_pipe.Get(), nullptr, 0, nullptr, &available, nullptr) &&
           available == 0) {
      ::Sleep(m_poll);
    }
    wchar_t text[1024] = {};
    DWORD bytes = 0;
    if (!::ReadFile(m_pipe.Get(), text, sizeof(text) - sizeof(wchar_t), &bytes, nullptr)) {
      throw std::runtime_error("no message came");
    }
    return text;
  }

 private:
  DWORD m_poll;
  FileHandle m_pipe;
};

void Check(benchmark::State& state, bool holds) {
  if (!holds) {
    state.SkipWithError("the answer is another one");
  }
}

void BareExchange(benchmark::State& state) {
  const Server server;
  const BarePipe pipe(static_cast<DWORD>(state.range(0)));
  for (auto _ : state) {
    Send(pipe.Get(), L"question");
    Check(state, pipe.Read() == kAnswer);
  }
}

void Transact(benchmark::State& state) {
  const Server server;
  NamedPipeClient client;
  Check(state, client.Init(kPipeName, kBufferChars, 0) && client.Open());
  std::wstring answer;
  for (auto _ : state) {
    Check(state, client.Transact(L"question", &answer) && answer == kAnswer);
  }
}

void BareCommand(benchmark::State& state) {
  const Server server;
  const BarePipe pipe(static_cast<DWORD>(state.range(0)));
  for (auto _ : state) {
    Send(pipe.Get(), kQuestion);
    Check(state, pipe.Read() == kAnswer && pipe.Read() == kEnd);
  }
}

void BridgeCommand(benchmark::State& state) {
  const Server server;
  ThunderbirdConnection connection;
  Check(state, connection.Pipe().Init(kPipeName, kBufferChars, 0) && connection.Pipe().Open());
  for (auto _ : state) {
    int32_t count = 0;
    thunderbird::SentItemsEntries(&connection, kThunderbirdCommandSeconds, &count);
    Check(state, count == 42);
  }
}

void BareFolders(benchmark::State& state) {
  const Server server;
  const BarePipe pipe(static_cast<DWORD>(state.range(0)));
  for (auto _ : state) {
    Send(pipe.Get(), L"GiveAllFolders");
    for (int i = 0; i <= kFolders; ++i) {
      benchmark::DoNotOptimize(pipe.Read());
    }
  }
}

void BridgeFolders(benchmark::State& state) {
  const Server server;
  ThunderbirdConnection connection;
  Check(state, connection.Pipe().Init(kPipeName, kBufferChars, 0) && connection.Pipe().Open());
  for (auto _ : state) {
    MailFolderList folders;
    thunderbird::GiveAllFolders(&connection, kThunderbirdCommandSeconds, &folders);
    Check(state, folders.size() == kFolders);
  }
}

// The argument is the poll in milliseconds: none, that of Transact, and that of the bridge.
BENCHMARK(BareExchange)->Arg(0)->Iterations(2000)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK(BareExchange)->Arg(5)->Iterations(200)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK(Transact)->Iterations(200)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK(BareCommand)->Arg(100)->Iterations(20)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BridgeCommand)->Iterations(20)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BareFolders)->Arg(100)->Iterations(10)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BridgeFolders)->Iterations(10)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace postmarker

BENCHMARK_MAIN();
