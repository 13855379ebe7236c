#include "ipc/ChannelClient_win.h"

#include <algorithm>
#include <optional>

#include "ipc/ChannelMessage.h"
#include "ipc/ChannelNames.h"
#include "ipc/ChannelWaits_win.h"
#include "ipc/SharedRegion_win.h"

namespace postmarker {
namespace {

constexpr DWORD kEventAccess = SYNCHRONIZE | EVENT_MODIFY_STATE;
constexpr DWORD kMutexAccess = SYNCHRONIZE | MUTEX_MODIFY_STATE;
constexpr DWORD kPauseBetweenAttemptsMs = 100;

// A named mutex while this thread owns it. Its handle may be closed before: as long as somebody
// else's handle keeps the mutex alive, it stays this thread's.
class HeldMutex {
 public:
  explicit HeldMutex(std::wstring name) : m_name(std::move(name)) {}
  HeldMutex(const HeldMutex&) = delete;
  HeldMutex& operator=(const HeldMutex&) = delete;
  ~HeldMutex() { Release(); }

  // Takes the mutex if it exists and is free.
  bool TryTake() {
    Open();
    const DWORD state = m_mutex ? ::WaitForSingleObject(m_mutex.Get(), 0) : WAIT_FAILED;
    if (state == WAIT_ABANDONED) {
      // Its holder ended. That does not count as holding it, but the system has made this thread
      // the owner: the mutex is put back, so that the next try, whoever's it is, finds it free.
      ::ReleaseMutex(m_mutex.Get());
    }
    m_isOwned = state == WAIT_OBJECT_0;
    if (!m_isOwned) {
      DropHandle();
    }
    return m_isOwned;
  }

  void DropHandle() { m_mutex.Reset(); }

  // Puts the mutex back. If it is gone, another one of that name belongs to others and stays so.
  void Release() {
    if (m_isOwned && !m_mutex) {
      Open();
    }
    if (m_isOwned && m_mutex) {
      ::ReleaseMutex(m_mutex.Get());
    }
    Forget();
  }

  // For a mutex that has gone, or goes with its last handle.
  void Forget() {
    DropHandle();
    m_isOwned = false;
  }

 private:
  void Open() { m_mutex.Reset(::OpenMutexW(kMutexAccess, FALSE, m_name.c_str())); }

  std::wstring m_name;
  KernelHandle m_mutex;
  bool m_isOwned = false;
};

// One attempt: what it opens is closed in the reverse order, on every way out.
class Connector {
 public:
  Connector(const std::wstring& name, const ConnectOptions& options)
      : m_name(name),
        m_options(options),
        m_handshakeTimeout(std::min(options.timeout, options.handshakeTimeout)),
        m_turn(DispatchMutexName(name)) {}

  // Each way round looks at time and cancel, whatever it finds at the rendezvous: a server that
  // hangs can leave a free turn and a call that it does not answer.
  bool Connect() {
    for (;;) {
      if (m_turn.TryTake()) {
        if (!OpenPrivateObjects()) {
          return false;
        }
        if (IsFirstToCall()) {
          return ShakeHands();
        }
        LeaveRound();
      }
      if (m_elapsed.IsMoreThan(m_options.timeout) || IsCancelled()) {
        return false;
      }
      ::Sleep(1);
    }
  }

  std::unique_ptr<ShmChannel> TakeChannel() {
    return std::make_unique<ShmChannel>(std::move(m_private.mapping), std::move(m_private.view),
                                        m_private.size, std::move(m_clientEvent),
                                        std::move(m_serverEvent));
  }

 private:
  [[nodiscard]] bool IsCancelled() const {
    return postmarker::IsCancelled(m_options.cancel, m_options.stop);
  }

  [[nodiscard]] std::optional<std::wstring> ReadPrivateName() const {
    const auto rendezvous = OpenSharedRegion(m_name, FILE_MAP_READ, FILE_MAP_READ);
    if (!rendezvous) {
      return std::nullopt;
    }
    const auto* const bytes = static_cast<const std::byte*>(rendezvous->view.Get());
    return TakePrivateName({bytes, rendezvous->size}, m_name);
  }

  bool OpenPrivateObjects() {
    m_privateName = ReadPrivateName().value_or(std::wstring());
    auto region =
        m_privateName.empty()
            ? std::nullopt
            : OpenSharedRegion(m_privateName, FILE_MAP_READ | FILE_MAP_WRITE, FILE_MAP_WRITE);
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
  void LeaveRound() {
    m_clientEvent.Reset();
    m_serverEvent.Reset();
    m_private = SharedRegion();
    m_turn.Release();
  }

  bool ShakeHands() {
    if (IsCancelled()) {
      return false;  // before the server is troubled
    }
    ::SetEvent(m_clientEvent.Get());
    // Before the wait: the mutex can be the one of the round before, which a client's look has kept
    // alive. A server may wait for that one to go before it looks for a call, and this handle would
    // be its last. The mutex of this round the server keeps alive, as this thread's.
    m_turn.DropHandle();
    // Deliberate: a call that is not answered in time is not taken back. The server may have seen
    // it and answer late; it would then take the next client's call for the confirmation of this
    // one. As it stands, the next client leaves this round alone, and the server's next round is
    // free.
    if (!WaitUnlessCancelled(m_serverEvent.Get(), m_handshakeTimeout, m_options.cancel,
                             m_options.stop)) {
      return false;
    }
    // Deliberate: not released. The server has let go of the mutex, so that it has ended, and the
    // server's next one of that name belongs to nobody.
    m_turn.Forget();
    ::ResetEvent(m_serverEvent.Get());
    ::SetEvent(m_clientEvent.Get());
    return WaitUntilTaken(m_clientEvent.Get(), m_handshakeTimeout, m_options.cancel,
                          m_options.stop);
  }

  std::wstring m_name;
  ConnectOptions m_options;
  uint32_t m_handshakeTimeout;
  ElapsedTime m_elapsed;
  HeldMutex m_turn;
  std::wstring m_privateName;
  SharedRegion m_private;
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
    if (elapsed.IsMoreThan(options.timeout) || IsCancelled(options.cancel, options.stop)) {
      return false;
    }
    ::Sleep(kPauseBetweenAttemptsMs);
  }
  return true;
}

}  // namespace postmarker
