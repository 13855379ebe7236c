#include "ipc/ChannelServer_win.h"

#include <wincrypt.h>

#include <algorithm>
#include <optional>

#include "ipc/ChannelMessage.h"
#include "ipc/ChannelWaits_win.h"
#include "ipc/ObjectSecurity_win.h"
#include "ipc/SharedRegion_win.h"

namespace postmarker {
namespace {

constexpr DWORD kRegionAccess = FILE_MAP_READ | FILE_MAP_WRITE;
constexpr DWORD kEventAccess = SYNCHRONIZE | EVENT_MODIFY_STATE;
constexpr DWORD kMutexAccess = SYNCHRONIZE | MUTEX_MODIFY_STATE;

struct CryptTraits {
  using Type = HCRYPTPROV;
  static Type None() noexcept { return 0; }
  static bool IsOpen(Type context) noexcept { return context != 0; }
  static void Close(Type context) noexcept { ::CryptReleaseContext(context, 0); }
};

// Empty if the system gives none.
std::wstring MakeRandomName() {
  UniqueHandle<CryptTraits> context;
  uint8_t bytes[kRandomNameLength] = {};
  if (!::CryptAcquireContextW(context.Put(), nullptr, nullptr, PROV_RSA_FULL,
                              CRYPT_VERIFYCONTEXT | CRYPT_SILENT) ||
      !::CryptGenRandom(context.Get(), sizeof(bytes), bytes)) {
    return {};
  }
  return RandomCharacters(bytes);
}

// A clear event that did not exist before, reset by hand.
KernelHandle MakeEvent(const std::wstring& name, ObjectSecurity* security) {
  KernelHandle event(::CreateEventW(security->Attributes(), TRUE, FALSE, name.c_str()));
  if (event && ::GetLastError() == ERROR_ALREADY_EXISTS) {
    event.Reset();
  }
  return event;
}

// One attempt: what it makes is released in the reverse order, on every way out.
class Listener {
 public:
  Listener(const std::wstring& name, const ListenOptions& options)
      : m_name(name),
        m_options(options),
        m_regionSecurity(ForEveryone(kRegionAccess)),
        m_eventSecurity(ForEveryone(kEventAccess)),
        m_mutexSecurity(ForEveryone(kMutexAccess)) {}

  bool Listen() { return MakePrivateObjects() && Publish() && AwaitClient() && ShakeHands(); }

  std::unique_ptr<ShmChannel> TakeChannel() {
    return std::make_unique<ShmChannel>(std::move(m_private.mapping), std::move(m_private.view),
                                        m_private.size, std::move(m_serverEvent),
                                        std::move(m_clientEvent));
  }

 private:
  [[nodiscard]] ObjectSecurity ForEveryone(DWORD access) const {
    return ObjectSecurity::ForEveryone(access, m_options.kind == ChannelKind::kGlobalLowIntegrity);
  }

  bool MakePrivateObjects() {
    const std::wstring randomName = MakeRandomName();
    if (!m_regionSecurity || !m_eventSecurity || !m_mutexSecurity || randomName.empty()) {
      return false;
    }
    m_privateName = PrivateName(m_name, randomName);
    auto region = MakeSharedRegion(m_privateName, m_options.size, &m_regionSecurity);
    if (!region) {
      return false;
    }
    m_private = std::move(*region);
    m_serverEvent = MakeEvent(ServerEventName(m_privateName), &m_eventSecurity);
    m_clientEvent = MakeEvent(ClientEventName(m_privateName), &m_eventSecurity);
    return m_serverEvent && m_clientEvent;
  }

  bool Publish() {
    auto region = MakeSharedRegion(m_name, kRendezvousSize, &m_regionSecurity);
    if (!region) {
      return false;
    }
    m_rendezvous = std::move(*region);
    return PutPrivateName(m_rendezvous.Bytes(), m_privateName) && MakeMutex();
  }

  // The client before may still hold the mutex, and clients that look for their turn open it for an
  // instant. Only the rights that everyone has are asked for, or an existing one would be refused.
  // Where many look, one of them can take the old mutex and find the new rendezvous. It then has
  // the rendezvous for itself just as well, and waits for an answer: the new mutex is not needed.
  bool MakeMutex() {
    const std::wstring name = DispatchMutexName(m_name);
    while (!IsSignalled(m_clientEvent.Get())) {
      m_mutex.Reset(::CreateMutexExW(m_mutexSecurity.Attributes(), name.c_str(), 0, kMutexAccess));
      if (!m_mutex || ::GetLastError() != ERROR_ALREADY_EXISTS) {
        return static_cast<bool>(m_mutex);
      }
      m_mutex.Reset();
      ::Sleep(1);
      if (m_elapsed.IsMoreThan(m_options.timeout) || IsSignalled(m_options.cancel)) {
        return false;
      }
    }
    return true;
  }

  bool AwaitClient() {
    return WaitUnlessCancelled(m_clientEvent.Get(), m_options.timeout, m_options.cancel);
  }

  // The client has the private name: the rendezvous goes, and the events are from now on theirs.
  bool ShakeHands() {
    m_rendezvous = SharedRegion();
    m_mutex.Reset();
    ::ResetEvent(m_clientEvent.Get());
    ::SetEvent(m_serverEvent.Get());
    const uint32_t timeout = std::min(m_options.timeout, m_options.handshakeTimeout);
    if (!WaitUnlessCancelled(m_clientEvent.Get(), timeout, nullptr)) {
      return false;
    }
    ::ResetEvent(m_clientEvent.Get());
    return true;
  }

  std::wstring m_name;
  ListenOptions m_options;
  ElapsedTime m_elapsed;
  ObjectSecurity m_regionSecurity;
  ObjectSecurity m_eventSecurity;
  ObjectSecurity m_mutexSecurity;
  std::wstring m_privateName;
  SharedRegion m_private;
  KernelHandle m_serverEvent;
  KernelHandle m_clientEvent;
  SharedRegion m_rendezvous;
  KernelHandle m_mutex;
};

}  // namespace

bool ChannelListen(const wchar_t* name, std::unique_ptr<ShmChannel>* channel,
                   const ListenOptions& options) {
  channel->reset();
  if (!IsRendezvousName(name) || options.size < kMinRegionBytes) {
    return false;
  }
  Listener listener(name, options);
  if (listener.Listen()) {
    *channel = listener.TakeChannel();
  }
  return *channel != nullptr;
}

bool ChannelListenRetry(const wchar_t* name, std::unique_ptr<ShmChannel>* channel,
                        const ListenOptions& options) {
  const ElapsedTime elapsed;
  while (!ChannelListen(name, channel, options)) {
    if (IsSignalled(options.cancel) || elapsed.IsMoreThan(options.timeout)) {
      return false;
    }
    ::Sleep(100);
  }
  return true;
}

}  // namespace postmarker
