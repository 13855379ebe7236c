// Two connected ends of a channel in one process.
#pragma once

#include <future>
#include <memory>
#include <string>

#include "ipc/ChannelClient_win.h"
#include "ipc/ChannelServer_win.h"
#include "support/PeerProcess_win.h"

namespace postmarker::test {

// Longer than anything takes on a busy machine.
inline constexpr uint32_t kPatience = 20'000;

inline ListenOptions PatientListening(uint32_t size = 4096) {
  ListenOptions options;
  options.timeout = kPatience;
  options.size = size;
  options.handshakeTimeout = kPatience;
  return options;
}

inline ConnectOptions PatientConnecting() {
  return {nullptr, kPatience, kPatience};
}

using ChannelEnd = std::unique_ptr<ShmChannel>;

// One attempt of the product's server, on a thread of its own; null if it fails.
inline std::future<ChannelEnd> ListenInBackground(const std::wstring& name,
                                                  const ListenOptions& options) {
  return std::async(std::launch::async, [=] {
    ChannelEnd end;
    ChannelListen(name.c_str(), &end, options);
    return end;
  });
}

// One attempt of the product's client, on a thread of its own; null if it fails.
inline std::future<ChannelEnd> ConnectInBackground(const std::wstring& name,
                                                   const ConnectOptions& options) {
  return std::async(std::launch::async, [=] {
    ChannelEnd end;
    ChannelConnect(name.c_str(), &end, options);
    return end;
  });
}

struct ChannelPair {
  ChannelEnd server;
  ChannelEnd client;
};

// The product's two ends; null where one failed.
inline ChannelPair ConnectPair(const std::wstring& name = FreshObjectName(),
                               const ListenOptions& options = PatientListening()) {
  ChannelPair pair;
  auto server = ListenInBackground(name, options);
  ChannelConnect(name.c_str(), &pair.client, PatientConnecting());
  pair.server = server.get();
  return pair;
}

}  // namespace postmarker::test
