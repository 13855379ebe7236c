#include "ipc/ChannelClient_win.h"

#include <algorithm>
#include <optional>

#include "ipc/ChannelMessage.h"
#include "ipc/ChannelNames.h"
#include "ipc/ChannelWaits_win.h"

namespace postmarker {
namespace {

constexpr DWORD kEventAccess = SYNCHRONIZE | EVENT_MODIFY_STATE;
constexpr DWORD kMutexAccess = SYNCHRONIZE | MUTEX_MODIFY_STATE;

// A mutex while this thread owns it.
class HeldMutex {
 public:
  HeldMutex() = default;
  HeldMutex(const HeldMutex&) = delete;
  HeldMutex& operator=(const HeldMutex&) = delete;
  ~HeldMutex() { Release(); }

  void Release() {
    if (m_mutex) {
      ::ReleaseMutex(m_mutex.Get());
    }
    m_mutex.Reset();
  }

  // Takes the mutex if it exists and is free.
  bool TryTake(const std::wstring& name) {
    KernelHandle mutex(::OpenMutexW(kMutexAccess, FALSE, name.c_str()));
    if (!mutex) {
      return false;
    }
    const DWORD state = ::WaitForSingleObject(mutex.Get(), 0);
    if (state == WAIT_ABANDONED) {
      // Its holder ended. That does not count as holding it, but the system has made this thread
      // the owner: the mutex is put back, so that the next try, whoever's it is, finds it free.
      ::ReleaseMutex(mutex.Get());
    }
    if (state == WAIT_OBJECT_0) {
      m_mutex = std::move(mutex);
    }
    return static_cast<bool>(m_mutex);
  }

  void CloseWithoutRelease() { m_mutex.Reset(); }

 private:
  KernelHandle m_mutex;
};

struct Region {
  KernelHandle mapping;
  FileView view;
  size_t size = 0;
};

// Maps a region and takes its size from the system: nothing that the other side says about it
// counts. Memory that is only reserved can't be read.
std::optional<Region> OpenRegion(const std::wstring& name, DWORD access, DWORD viewAccess) {
  Region region;
  region.mapping.Reset(::OpenFileMappingW(access, FALSE, name.c_str()));
  if (region.mapping) {
    region.view.Reset(::MapViewOfFile(region.mapping.Get(), viewAccess, 0, 0, 0));
  }
  MEMORY_BASIC_INFORMATION memory = {};
  if (!region.view || ::VirtualQuery(region.view.Get(), &memory, sizeof(memory)) == 0 ||
      memory.State != MEM_COMMIT) {
    return std::nullopt;
  }
  region.size = memory.RegionSize;
  return region;
}

// One attempt: what it opens is closed in the reverse order, on every way out.
class Connector {
 public:
  Connector(const std::wstring& name, const ConnectOptions& options)
      : m_name(name),
        m_options(options),
        m_handshakeTimeout(std::min(options.timeout, options.handshakeTimeout)) {}

  bool Connect() {
    while (AwaitTurn() && OpenPrivateObjects()) {
      if (IsFirstToCall()) {
        return ShakeHands();
      }
      LetGo();
    }
    return false;
  }

  std::unique_ptr<ShmChannel> TakeChannel() {
    return std::make_unique<ShmChannel>(std::move(m_private.mapping), std::move(m_private.view),
                                        m_private.size, std::move(m_clientEvent),
                                        std::move(m_serverEvent));
  }

 private:
  bool AwaitTurn() {
    const std::wstring mutex = DispatchMutexName(m_name);
    while (!m_turn.TryTake(mutex)) {
      if (m_elapsed.IsMoreThan(m_options.timeout) || IsSignalled(m_options.cancel)) {
        return false;
      }
      ::Sleep(1);
    }
    return true;
  }

  [[nodiscard]] std::optional<std::wstring> ReadPrivateName() const {
    const auto rendezvous = OpenRegion(m_name, FILE_MAP_READ, FILE_MAP_READ);
    if (!rendezvous) {
      return std::nullopt;
    }
    const auto* const bytes = static_cast<const std::byte*>(rendezvous->view.Get());
    return TakePrivateName({bytes, rendezvous->size}, m_name.size());
  }

  bool OpenPrivateObjects() {
    m_privateName = ReadPrivateName().value_or(std::wstring());
    auto region = m_privateName.empty()
                      ? std::nullopt
                      : OpenRegion(m_privateName, FILE_MAP_READ | FILE_MAP_WRITE, FILE_MAP_WRITE);
    if (!region) {
      return false;
    }
    m_private = std::move(*region);
    m_serverEvent.Reset(::OpenEventW(kEventAccess, FALSE, ServerEventName(m_privateName).c_str()));
    m_clientEvent.Reset(::OpenEventW(kEventAccess, FALSE, ClientEventName(m_privateName).c_str()));
    return m_serverEvent && m_clientEvent;
  }

  // A client before may have called and ended. The server answers that one, and would take this
  // one's call for the other's confirmation: the two would wait for each other. While the
  // rendezvous is there the server has not answered yet, so a call of before is still to be seen.
  [[nodiscard]] bool IsFirstToCall() const {
    return IsClear(m_clientEvent.Get()) && ReadPrivateName() == m_privateName;
  }

  // For another turn, when the server has given up the client before.
  void LetGo() {
    m_clientEvent.Reset();
    m_serverEvent.Reset();
    m_private = Region();
    m_turn.Release();
    ::Sleep(1);
  }

  bool ShakeHands() {
    ::SetEvent(m_clientEvent.Get());
    if (!WaitUnlessCancelled(m_serverEvent.Get(), m_options.cancel, m_handshakeTimeout)) {
      return false;
    }
    // Deliberate: closed while owned. The server has let go of the mutex, so it ends here, and the
    // server's next one of that name belongs to nobody.
    m_turn.CloseWithoutRelease();
    ::ResetEvent(m_serverEvent.Get());
    ::SetEvent(m_clientEvent.Get());
    return WaitUntilTaken(m_clientEvent.Get(), m_handshakeTimeout);
  }

  std::wstring m_name;
  ConnectOptions m_options;
  uint32_t m_handshakeTimeout;
  ElapsedTime m_elapsed;
  HeldMutex m_turn;
  std::wstring m_privateName;
  Region m_private;
  KernelHandle m_serverEvent;
  KernelHandle m_clientEvent;
};

}  // namespace

bool ChannelConnect(const wchar_t* name, std::unique_ptr<ShmChannel>* channel,
                    const ConnectOptions& options) {
  channel->reset();
  if (!IsRendezvousName(name)) {
    return false;
  }
  Connector connector(name, options);
  if (connector.Connect()) {
    *channel = connector.TakeChannel();
  }
  return *channel != nullptr;
}

bool ChannelConnectRetry(const wchar_t* name, std::unique_ptr<ShmChannel>* channel,
                         const ConnectOptions& options) {
  const ElapsedTime elapsed;
  while (!ChannelConnect(name, channel, options)) {
    if (IsSignalled(options.cancel) || elapsed.IsMoreThan(options.timeout)) {
      return false;
    }
    ::Sleep(100);
  }
  return true;
}

}  // namespace postmarker
