// The names of a channel's objects.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace postmarker {

// Which name space a server's objects stand in, and who may open them.
enum class ChannelKind : int32_t {
  kLocal = 1,               // the person's session
  kGlobal = 2,              // the whole machine
  kGlobalLowIntegrity = 3,  // the same, and processes of low integrity may open them
};

// A rendezvous' name has 1 to this many units.
inline constexpr size_t kMaxRendezvousNameChars = 210;

// How many random characters a private name ends with, and by how much that makes it longer than
// the rendezvous' name.
inline constexpr size_t kRandomNameLength = 32;
inline constexpr size_t kPrivateNameGrowth = kRandomNameLength + 1;

// Not null, not empty and not too long.
bool IsRendezvousName(const wchar_t* name);

// The random characters that these bytes stand for: five bits of each choose one.
std::wstring RandomCharacters(std::span<const uint8_t, kRandomNameLength> bytes);

std::wstring DispatchMutexName(std::wstring_view rendezvous);
std::wstring PrivateName(std::wstring_view rendezvous, std::wstring_view randomName);
std::wstring ServerEventName(std::wstring_view privateName);
std::wstring ClientEventName(std::wstring_view privateName);

// The objects of a module inside a client: the event that says that it is there, and its
// rendezvous. `module` is its file name.
std::wstring ModuleEventName(std::wstring_view module, ChannelKind kind);
std::wstring ModuleTunnelName(std::wstring_view module, ChannelKind kind);

}  // namespace postmarker
