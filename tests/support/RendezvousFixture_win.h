// A rendezvous of a test's own.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <future>
#include <string>
#include <thread>

#include "RawChannel_win.h"
#include "ipc/ChannelNames.h"
#include "ipc/ChannelWaits_win.h"
#include "ipc/Mutexes_win.h"
#include "support/ChannelPair_win.h"

namespace postmarker::test {

// Fails at once or not at all.
inline bool FailsAtOnce(const std::function<bool()>& attempt) {
  const ElapsedTime elapsed;
  return !attempt() && !elapsed.IsMoreThan(5'000);
}

inline bool SectionExists(const std::wstring& name) {
  return static_cast<bool>(KernelHandle(::OpenFileMappingW(FILE_MAP_READ, FALSE, name.c_str())));
}

// Waits until clients can come.
inline bool WaitForMutex(const std::wstring& rendezvous) {
  const ElapsedTime elapsed;
  while (!MutexExists(DispatchMutexName(rendezvous).c_str())) {
    if (elapsed.IsMoreThan(kPatience)) {
      return false;
    }
    ::Sleep(1);
  }
  return true;
}

// One attempt of the product's server that has to end by its own limits. One that doesn't fails the
// test after 5 seconds and is canceled. `options` without a cancel event.
inline ChannelEnd ListenUntilItEnds(const std::wstring& name, ListenOptions options) {
  const KernelHandle cancel(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
  options.cancel = cancel.Get();
  auto server = ListenInBackground(name, options);
  if (server.wait_for(std::chrono::seconds(5)) != std::future_status::ready) {
    ADD_FAILURE() << "the server waits on after its time";
    ::SetEvent(cancel.Get());
  }
  return server.get();
}

// A server that sees a client's call and does not answer it. It sets the event at the call, which
// may be null, and gives up when it is destroyed.
class SilentServer {
 public:
  explicit SilentServer(const std::wstring& rendezvous, HANDLE called = nullptr)
      : m_thread([=, this] {
          peer::RawServerOptions options;
          options.name = rendezvous;
          options.cancel = m_over.Get();
          options.onStep = [&](peer::ServerStep step) {
            if (step == peer::ServerStep::kClaimed) {
              ::SetEvent(called);
              ::WaitForSingleObject(m_over.Get(), INFINITE);
            }
          };
          peer::RawListen(options);
        }) {}
  SilentServer(const SilentServer&) = delete;
  SilentServer& operator=(const SilentServer&) = delete;
  ~SilentServer() {
    ::SetEvent(m_over.Get());
    m_thread.join();
  }

 private:
  KernelHandle m_over{::CreateEventW(nullptr, TRUE, FALSE, nullptr)};
  std::thread m_thread;
};

class RendezvousFixture : public testing::Test {
 protected:
  bool Listen(const ListenOptions& options) {
    ChannelEnd end;
    return ChannelListen(m_name.c_str(), &end, options);
  }
  bool Connect(const ConnectOptions& options) {
    ChannelEnd end;
    return ChannelConnect(m_name.c_str(), &end, options);
  }
  // Are the next server and the next client at this rendezvous as if nothing had been.
  bool IsUsable() {
    const auto [server, client] = ConnectPair(m_name);
    return server && client;
  }

  std::wstring m_name = FreshObjectName();
};

}  // namespace postmarker::test
