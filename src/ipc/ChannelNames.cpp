#include "ipc/ChannelNames.h"

#include <algorithm>

namespace postmarker {
namespace {

std::wstring Join(std::wstring_view front, std::wstring_view back) {
  return std::wstring(front).append(back);
}

std::wstring ModuleObject(std::wstring_view module, ChannelKind kind, std::wstring_view ending) {
  const bool global = kind == ChannelKind::kGlobal || kind == ChannelKind::kGlobalLowIntegrity;
  return std::wstring(global ? L"Global\\" : L"Local\\")
      .append(L"Kestrelon.")
      .append(module)
      .append(ending);
}

}  // namespace

bool IsRendezvousName(const wchar_t* name) {
  if (name == nullptr) {
    return false;
  }
  const wchar_t* const limit = name + kMaxRendezvousNameChars + 1;
  const wchar_t* const end = std::find(name, limit, L'\0');
  return end != name && end != limit;
}

std::wstring RandomCharacters(std::span<const uint8_t, kRandomNameLength> bytes) {
  constexpr std::wstring_view kCharacters = L"0123456789ABCDEFGHIJKLMNOPQRSTUV";
  std::wstring name;
  for (const uint8_t byte : bytes) {
    name.push_back(kCharacters[byte & 31]);
  }
  return name;
}

std::wstring DispatchMutexName(std::wstring_view rendezvous) {
  return Join(rendezvous, L".DispatchMtx");
}

std::wstring PrivateName(std::wstring_view rendezvous, std::wstring_view randomName) {
  return Join(rendezvous, L".").append(randomName);
}

std::wstring ServerEventName(std::wstring_view privateName) {
  return Join(privateName, L".ServerEvt");
}

std::wstring ClientEventName(std::wstring_view privateName) {
  return Join(privateName, L".ClientEvt");
}

std::wstring ModuleEventName(std::wstring_view module, ChannelKind kind) {
  return ModuleObject(module, kind, L".Event");
}

std::wstring ModuleTunnelName(std::wstring_view module, ChannelKind kind) {
  return ModuleObject(module, kind, L".Tunnel");
}

}  // namespace postmarker
