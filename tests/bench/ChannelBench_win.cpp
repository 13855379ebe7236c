// One command over a channel of shared memory (a number and a text go out, a text comes back),
// beside the same three messages over bare events and memory: once with the polls that belong to
// the protocol, once with an event that says that a message was taken. And the making of a channel.
#include <windows.h>

#include <benchmark/benchmark.h>

#include <array>
#include <cstring>
#include <string>
#include <thread>

#include "ipc/ChannelClient_win.h"
#include "ipc/ChannelServer_win.h"
#include "support/Handles_win.h"

namespace postmarker {
namespace {

constexpr wchar_t kRendezvous[] = L"Local\\PostmarkerBench";
constexpr uint32_t kTimeout = 20'000;
constexpr uint32_t kCommand = 21;
constexpr uint32_t kStop = 0;
const std::wstring kQuestion(60, L'q');
const std::wstring kAnswer(80, L'a');

void Check(benchmark::State& state, bool holds) {
  if (!holds) {
    state.SkipWithError("the exchange has failed");
  }
}

// Serves so many clients, each until it sends another number than the command's.
class Server {
 public:
  explicit Server(int64_t clients)
      : m_thread([clients] {
          for (int64_t i = 0; i < clients; ++i) {
            Serve();
          }
        }) {}
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;
  ~Server() { m_thread.join(); }

 private:
  static void Serve() {
    ListenOptions options;
    options.timeout = kTimeout;
    options.handshakeTimeout = kTimeout;
    options.size = 4096;
    std::unique_ptr<ShmChannel> channel;
    if (!ChannelListenRetry(kRendezvous, &channel, options)) {
      return;
    }
    uint32_t command = kStop;
    std::wstring question;
    while (channel->ReceiveNumber(&command, kTimeout) && command == kCommand &&
           channel->ReceiveText(&question, kTimeout)) {
      channel->SendText(kAnswer.c_str(), kTimeout);
    }
  }

  std::thread m_thread;
};

void ChannelCommand(benchmark::State& state) {
  const Server server(1);
  std::unique_ptr<ShmChannel> channel;
  Check(state, ChannelConnectRetry(kRendezvous, &channel, {nullptr, kTimeout, kTimeout}));
  std::wstring answer;
  for (auto _ : state) {
    Check(state, channel->SendNumber(kCommand, kTimeout) &&
                     channel->SendText(kQuestion.c_str(), kTimeout) &&
                     channel->ReceiveText(&answer, kTimeout) && answer == kAnswer);
  }
  channel->SendNumber(kStop, kTimeout);
}

void ConnectAndDisconnect(benchmark::State& state) {
  const Server server(state.max_iterations);
  for (auto _ : state) {
    std::unique_ptr<ShmChannel> channel;
    Check(state, ChannelConnectRetry(kRendezvous, &channel, {nullptr, kTimeout, kTimeout}) &&
                     channel->SendNumber(kStop, kTimeout));
  }
}

KernelHandle MakeEvent() {
  return KernelHandle(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
}

// One direction of a bare exchange.
class BareDirection {
 public:
  explicit BareDirection(bool polls) : m_polls(polls) {}

  void Send(const void* bytes, size_t size) {
    std::memcpy(m_memory.data(), bytes, size);
    ::SetEvent(m_ready.Get());
    if (!m_polls) {
      ::WaitForSingleObject(m_taken.Get(), kTimeout);
      ::ResetEvent(m_taken.Get());
      return;
    }
    while (::WaitForSingleObject(m_ready.Get(), 0) == WAIT_OBJECT_0) {
      ::Sleep(1);
    }
  }

  void Receive(void* bytes, size_t size) {
    ::WaitForSingleObject(m_ready.Get(), kTimeout);
    std::memcpy(bytes, m_memory.data(), size);
    ::ResetEvent(m_ready.Get());
    if (!m_polls) {
      ::SetEvent(m_taken.Get());
    }
  }

 private:
  bool m_polls;
  std::array<std::byte, 4096> m_memory = {};
  KernelHandle m_ready = MakeEvent();
  KernelHandle m_taken = MakeEvent();
};

// The argument: 1 for the protocol's polls.
void BareExchange(benchmark::State& state) {
  BareDirection out(state.range(0) != 0);
  BareDirection back(state.range(0) != 0);
  std::array<wchar_t, 80> text = {};
  std::thread server([&] {
    std::array<wchar_t, 80> question = {};
    for (uint32_t command = kCommand;;) {
      out.Receive(&command, sizeof(command));
      if (command != kCommand) {
        return;
      }
      out.Receive(question.data(), kQuestion.size() * sizeof(wchar_t));
      back.Send(kAnswer.data(), kAnswer.size() * sizeof(wchar_t));
    }
  });
  for (auto _ : state) {
    out.Send(&kCommand, sizeof(kCommand));
    out.Send(kQuestion.data(), kQuestion.size() * sizeof(wchar_t));
    back.Receive(text.data(), kAnswer.size() * sizeof(wchar_t));
    Check(state, std::wstring(text.data(), text.size()) == kAnswer);
  }
  out.Send(&kStop, sizeof(kStop));
  server.join();
}

BENCHMARK(BareExchange)->Arg(0)->Iterations(1000)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK(BareExchange)->Arg(1)->Iterations(1000)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK(ChannelCommand)->Iterations(1000)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK(ConnectAndDisconnect)->Iterations(200)->Unit(benchmark::kMicrosecond)->UseRealTime();

}  // namespace
}  // namespace postmarker

BENCHMARK_MAIN();
