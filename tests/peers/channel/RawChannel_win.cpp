#include "RawChannel_win.h"

#include <algorithm>
#include <atomic>
#include <cstring>

namespace postmarker::peer {
namespace {

std::wstring FreshName(const std::wstring& rendezvous) {
  static std::atomic<uint32_t> count{0};
  wchar_t digits[40];
  ::wsprintfW(digits, L".%08X%08X%08X%08X", ::GetCurrentProcessId(), ::GetTickCount(),
              ::GetCurrentThreadId(), ++count);
  return rendezvous + digits;
}

KernelHandle MakeSection(const std::wstring& name, uint32_t size, bool reserve) {
  const DWORD commit = reserve ? SEC_RESERVE : SEC_COMMIT;
  return KernelHandle(::CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE | commit,
                                           0, size, name.c_str()));
}

FileView MapWritable(const KernelHandle& section) {
  return FileView(::MapViewOfFile(section.Get(), FILE_MAP_WRITE, 0, 0, 0));
}

KernelHandle MakeEvent(const std::wstring& name) {
  return KernelHandle(::CreateEventW(nullptr, TRUE, FALSE, name.c_str()));
}

bool Wait(const KernelHandle& event, uint32_t timeout) {
  return ::WaitForSingleObject(event.Get(), timeout) == WAIT_OBJECT_0;
}

bool WaitClear(const KernelHandle& event, uint32_t timeout) {
  const uint64_t end = ::GetTickCount64() + timeout;
  while (Wait(event, 0)) {
    if (::GetTickCount64() > end) {
      return false;
    }
    ::Sleep(1);
  }
  return true;
}

bool WaitForClient(const RawEnd& end, HANDLE cancel, uint32_t timeout) {
  const HANDLE either[] = {end.receiveEvent.Get(), cancel};
  return ::WaitForMultipleObjects(cancel != nullptr ? 2 : 1, either, FALSE, timeout) ==
         WAIT_OBJECT_0;
}

void WriteName(const RawServerOptions& options, const std::wstring& name, const FileView& view) {
  const std::wstring said = options.saidName.value_or(name);
  const auto bytes = static_cast<uint32_t>(said.size() * sizeof(wchar_t));
  auto* const region = static_cast<std::byte*>(const_cast<void*>(view.Get()));
  const uint32_t length = options.saidLength.value_or(bytes);
  std::memcpy(region, &length, sizeof(length));
  std::memcpy(region + 4, said.c_str(), bytes + sizeof(wchar_t));
}

// A mutex that did not exist before.
KernelHandle MakeMutex(const std::wstring& name) {
  for (;;) {
    KernelHandle mutex(::CreateMutexW(nullptr, FALSE, name.c_str()));
    if (::GetLastError() != ERROR_ALREADY_EXISTS) {
      return mutex;
    }
    mutex.Reset();
    ::Sleep(1);
  }
}

// Opens the mutex and takes it; the step in between is told once.
KernelHandle TakeMutex(const RawClientOptions& options) {
  const std::wstring name = options.name + L".DispatchMtx";
  const uint64_t end = ::GetTickCount64() + options.timeout;
  bool opened = false;
  while (::GetTickCount64() <= end) {
    KernelHandle mutex(::OpenMutexW(SYNCHRONIZE | MUTEX_MODIFY_STATE, FALSE, name.c_str()));
    if (mutex && !opened) {
      opened = true;
      options.onStep(ClientStep::kOpened);
    }
    const DWORD state = mutex ? ::WaitForSingleObject(mutex.Get(), 0) : WAIT_TIMEOUT;
    if (state == WAIT_OBJECT_0 || state == WAIT_ABANDONED) {
      return mutex;
    }
    ::Sleep(1);
  }
  return {};
}

std::wstring ReadName(const std::wstring& rendezvous) {
  const KernelHandle section(::OpenFileMappingW(FILE_MAP_READ, FALSE, rendezvous.c_str()));
  const FileView view(::MapViewOfFile(section.Get(), FILE_MAP_READ, 0, 0, 0));
  return view ? std::wstring(
                    reinterpret_cast<const wchar_t*>(static_cast<const std::byte*>(view.Get()) + 4))
              : std::wstring();
}

}  // namespace

void RawEnd::Announce(uint32_t length, uint32_t type, const void* payload, size_t bytes) const {
  std::memcpy(Region(), &length, sizeof(length));
  std::memcpy(Region() + 4, &type, sizeof(type));
  if (bytes > 0) {
    std::memcpy(Region() + 8, payload, bytes);
  }
  ::SetEvent(sendEvent.Get());
}

bool RawEnd::WaitTaken(uint32_t timeout) const {
  return WaitClear(sendEvent, timeout);
}

bool RawEnd::SendText(const std::wstring& text, uint32_t timeout) const {
  const size_t bytes = text.size() * sizeof(wchar_t);
  Announce(static_cast<uint32_t>(bytes), 1, text.data(), bytes);
  return WaitTaken(timeout);
}

bool RawEnd::SendNumber(uint32_t value, uint32_t timeout) const {
  Announce(sizeof(value), 2, &value, sizeof(value));
  return WaitTaken(timeout);
}

std::optional<std::wstring> RawEnd::ReceiveText(uint32_t timeout) const {
  uint32_t header[2] = {};
  if (!Wait(receiveEvent, timeout)) {
    return std::nullopt;
  }
  std::memcpy(header, Region(), sizeof(header));
  if (header[1] != 1) {
    return std::nullopt;
  }
  std::wstring text(header[0] / sizeof(wchar_t), L'\0');
  std::memcpy(text.data(), Region() + 8, header[0]);
  ::ResetEvent(receiveEvent.Get());
  return text;
}

std::optional<uint32_t> RawEnd::ReceiveNumber(uint32_t timeout) const {
  uint32_t message[3] = {};
  if (!Wait(receiveEvent, timeout)) {
    return std::nullopt;
  }
  std::memcpy(message, Region(), sizeof(message));
  if (message[0] != sizeof(uint32_t) || message[1] != 2) {
    return std::nullopt;
  }
  ::ResetEvent(receiveEvent.Get());
  return message[2];
}

std::optional<RawEnd> RawListen(const RawServerOptions& options) {
  const std::wstring name = FreshName(options.name);
  RawEnd end;
  end.mapping = MakeSection(name, options.size, options.reservePrivate);
  end.view = MapWritable(end.mapping);
  if (options.committed > 0) {
    ::VirtualAlloc(end.Region(), options.committed, MEM_COMMIT, PAGE_READWRITE);
  }
  end.sendEvent = MakeEvent(name + L".ServerEvt");
  end.receiveEvent = MakeEvent(name + L".ClientEvt");
  options.onStep(ServerStep::kPrivateMade);

  KernelHandle rendezvous = MakeSection(options.name, 4096, options.reserveRendezvous);
  FileView view = MapWritable(rendezvous);
  if (!end.view || !view) {
    return std::nullopt;
  }
  if (!options.reserveRendezvous) {
    WriteName(options, name, view);
  }
  options.onStep(ServerStep::kRendezvousMade);
  KernelHandle mutex = MakeMutex(options.name + L".DispatchMtx");
  options.onStep(ServerStep::kListening);

  if (!WaitForClient(end, options.cancel, options.timeout)) {
    return std::nullopt;
  }
  options.onStep(ServerStep::kClaimed);
  view.Reset();
  rendezvous.Reset();
  mutex.Reset();
  options.onStep(ServerStep::kDropped);
  ::ResetEvent(end.receiveEvent.Get());
  ::SetEvent(end.sendEvent.Get());
  options.onStep(ServerStep::kAnswered);
  if (!WaitForClient(end, options.cancel, std::min(options.timeout, options.handshakeTimeout))) {
    return std::nullopt;
  }
  ::ResetEvent(end.receiveEvent.Get());
  options.onStep(ServerStep::kConnected);
  return end;
}

std::optional<RawEnd> RawConnect(const RawClientOptions& options) {
  KernelHandle mutex = TakeMutex(options);
  if (!mutex) {
    return std::nullopt;
  }
  options.onStep(ClientStep::kHolding);
  const std::wstring name = ReadName(options.name);
  options.onStep(ClientStep::kRead);
  RawEnd end;
  end.mapping.Reset(::OpenFileMappingW(FILE_MAP_READ | FILE_MAP_WRITE, FALSE, name.c_str()));
  end.view = MapWritable(end.mapping);
  constexpr DWORD kAccess = SYNCHRONIZE | EVENT_MODIFY_STATE;
  end.sendEvent.Reset(::OpenEventW(kAccess, FALSE, (name + L".ClientEvt").c_str()));
  end.receiveEvent.Reset(::OpenEventW(kAccess, FALSE, (name + L".ServerEvt").c_str()));
  ::SetEvent(end.sendEvent.Get());
  options.onStep(ClientStep::kCalled);
  if (!end.view || !Wait(end.receiveEvent, options.timeout)) {
    ::ReleaseMutex(mutex.Get());
    return std::nullopt;
  }
  options.onStep(ClientStep::kAnswered);
  mutex.Reset();
  options.onStep(ClientStep::kLetGo);
  ::ResetEvent(end.receiveEvent.Get());
  options.onStep(ClientStep::kCleared);
  ::SetEvent(end.sendEvent.Get());
  options.onStep(ClientStep::kConfirmed);
  if (!WaitClear(end.sendEvent, options.timeout)) {
    return std::nullopt;
  }
  options.onStep(ClientStep::kConnected);
  return end;
}

}  // namespace postmarker::peer
