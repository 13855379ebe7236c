// The two ends of a shared memory channel, written once more from what crosses between processes,
// so that the product's ends are tested against something other than themselves. A callback sees
// each step and may stop there; what is written to the memory can be a lie.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "support/Handles_win.h"

namespace postmarker::peer {

// What a server has just done.
enum class ServerStep {
  kPrivateMade,     // private region and events
  kRendezvousMade,  // no mutex yet: clients can't come
  kListening,
  kClaimed,  // a client has set its event
  kDropped,  // rendezvous and mutex are gone
  kAnswered,
  kConnected,
};

// What a client has just done.
enum class ClientStep {
  kOpened,  // the mutex, without taking it
  kHolding,
  kRead,  // the private name
  kCalled,
  kAnswered,  // the server's event was seen
  kLetGo,     // the mutex is closed
  kCleared,   // the server's event is reset
  kConfirmed,
  kConnected,
};

// One end. Times are in milliseconds.
struct RawEnd {
  KernelHandle mapping;
  FileView view;
  KernelHandle sendEvent;
  KernelHandle receiveEvent;

  [[nodiscard]] std::byte* Region() const {
    return static_cast<std::byte*>(const_cast<void*>(view.Get()));
  }

  // Writes a header and a payload as they are given and announces them. The caller knows the
  // region's size.
  void Announce(uint32_t length, uint32_t type, const void* payload, size_t bytes) const;
  [[nodiscard]] bool WaitTaken(uint32_t timeout) const;

  [[nodiscard]] bool SendText(const std::wstring& text, uint32_t timeout) const;
  [[nodiscard]] bool SendNumber(uint32_t value, uint32_t timeout) const;
  [[nodiscard]] std::optional<std::wstring> ReceiveText(uint32_t timeout) const;
  [[nodiscard]] std::optional<uint32_t> ReceiveNumber(uint32_t timeout) const;
};

// How a server behaves.
struct RawServerOptions {
  std::wstring name;
  uint32_t size = 4096;
  uint32_t timeout = INFINITE;
  uint32_t handshakeTimeout = 10'000;  // for the confirmation; at most `timeout`
  HANDLE cancel = nullptr;             // ends each waiting for the client; may be null
  std::function<void(ServerStep)> onStep = [](ServerStep) {};
  // Lies. The rendezvous says this length, holds this name, is under another name; memory of the
  // regions is reserved and not there.
  std::optional<uint32_t> saidLength;
  std::optional<std::wstring> saidName;
  bool reserveRendezvous = false;
  bool reservePrivate = false;
  uint32_t committed = 0;  // so much at the beginning of a reserved private region is there
};

// Waits for one client. Nothing if it does not come or breaks off.
std::optional<RawEnd> RawListen(const RawServerOptions& options);

// How a client behaves.
struct RawClientOptions {
  std::wstring name;
  uint32_t timeout = 10'000;
  std::function<void(ClientStep)> onStep = [](ClientStep) {};
};

std::optional<RawEnd> RawConnect(const RawClientOptions& options);

}  // namespace postmarker::peer
