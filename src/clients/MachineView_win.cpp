// The machine that the program runs on.
#include <windows.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cwchar>

#include "clients/MachineView.h"
#include "support/Registry_win.h"

namespace postmarker {
namespace {

constexpr DWORD kTextRoom = 260;
constexpr DWORD kExpandedRoom = 2049;
constexpr DWORD kPathRoom = 260;
constexpr DWORD kMaxKeyNameChars = 256;

HKEY RootKey(RegistryRoot root) {
  return root == RegistryRoot::kUser ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE;
}

PlatformVersion ReadPlatformVersion() {
  OSVERSIONINFOW info = {};
  info.dwOSVersionInfoSize = sizeof(info);
  return ::GetVersionExW(&info) ? PlatformVersion{info.dwMajorVersion, info.dwMinorVersion}
                                : PlatformVersion{6, 0};
}

REGSAM ViewFlag(RegistryView view) {
  switch (view) {
    case RegistryView::kSuite:
      return SuiteKeyView();
    case RegistryView::k32Bit: {
      // The first platform of major version 5 does not know the flag.
      const PlatformVersion version = ReadPlatformVersion();
      return version.major == 5 && version.minor == 0 ? 0 : KEY_WOW64_32KEY;
    }
    case RegistryView::kDefault:
      break;
  }
  return 0;
}

RegistryKey OpenKey(RegistryRoot root, const std::wstring& path,
                    RegistryView view = RegistryView::kDefault) {
  return RegistryKey::Open(RootKey(root), path, KEY_READ | ViewFlag(view));
}

// The folder of Postmarker.dll; empty if that is not loaded under its name.
std::wstring ModuleFolder() {
  const HMODULE module = ::GetModuleHandleW(L"Postmarker.dll");
  if (module == nullptr) {
    return {};
  }
  std::wstring path(kPathRoom, L'\0');
  path.resize(::GetModuleFileNameW(module, path.data(), kPathRoom));
  const size_t cut = path.rfind(L'\\');
  return cut == std::wstring::npos ? std::wstring() : path.substr(0, cut);
}

// The version resource of a file; empty if it has none.
std::vector<BYTE> ReadVersionResource(const std::wstring& path) {
  DWORD ignored = 0;
  std::vector<BYTE> info(::GetFileVersionInfoSizeW(path.c_str(), &ignored));
  if (info.empty() ||
      !::GetFileVersionInfoW(path.c_str(), 0, static_cast<DWORD>(info.size()), info.data())) {
    return {};
  }
  return info;
}

class WindowsMachine final : public MachineView {
 public:
  PlatformVersion Version() const override { return ReadPlatformVersion(); }

  bool HasKey(RegistryRoot root, const std::wstring& path) const override {
    return static_cast<bool>(OpenKey(root, path));
  }

  std::vector<std::wstring> SubkeyNames(RegistryRoot root, const std::wstring& path,
                                        size_t room) const override {
    std::vector<std::wstring> names;
    const RegistryKey key = OpenKey(root, path);
    for (DWORD i = 0; key; ++i) {
      std::array<wchar_t, kMaxKeyNameChars> name = {};
      auto length = static_cast<DWORD>(std::min<size_t>(room, name.size()));
      const LSTATUS status =
          ::RegEnumKeyExW(key.Get(), i, name.data(), &length, nullptr, nullptr, nullptr, nullptr);
      if (status == ERROR_SUCCESS) {
        names.emplace_back(name.data(), length);
      } else if (status != ERROR_MORE_DATA) {
        break;
      }
    }
    return names;
  }

  bool HasValue(RegistryRoot root, const std::wstring& path, const std::wstring& name,
                size_t roomInBytes) const override {
    const auto room = static_cast<DWORD>(roomInBytes);
    return OpenKey(root, path).ReadBytes(name.c_str(), room).has_value();
  }

  std::optional<std::wstring> ReadText(RegistryRoot root, const std::wstring& path,
                                       const std::wstring& name, RegistryView view) const override {
    const RegistryKey key = OpenKey(root, path, view);
    std::array<wchar_t, kTextRoom + 1> text = {};  // one for a terminator that may be missing
    DWORD type = 0;
    DWORD size = kTextRoom * sizeof(wchar_t);
    const bool isRead =
        key && ::RegQueryValueExW(key.Get(), name.c_str(), nullptr, &type,
                                  reinterpret_cast<BYTE*>(text.data()), &size) == ERROR_SUCCESS;
    return isRead && (type == REG_SZ || type == REG_EXPAND_SZ) ? std::optional(text.data())
                                                               : std::nullopt;
  }

  std::optional<std::wstring> Expand(const std::wstring& text) const override {
    std::wstring expanded(kExpandedRoom, L'\0');
    const DWORD needed = ::ExpandEnvironmentStringsW(text.c_str(), expanded.data(), kExpandedRoom);
    if (needed == 0 || needed > kExpandedRoom) {
      return std::nullopt;
    }
    expanded.resize(std::wcslen(expanded.c_str()));
    return expanded;
  }

  std::optional<std::wstring> FileVersionText(const std::wstring& path) const override {
    const std::vector<BYTE> info = ReadVersionResource(path);
    const WORD* translation = nullptr;  // language and code page
    UINT size = 0;
    if (info.empty() ||
        !::VerQueryValueW(info.data(), L"\\VarFileInfo\\Translation",
                          reinterpret_cast<void**>(const_cast<WORD**>(&translation)), &size) ||
        size < 2 * sizeof(WORD)) {
      return std::nullopt;
    }
    std::array<wchar_t, 64> block = {};
    (void)std::swprintf(block.data(), block.size(), L"\\StringFileInfo\\%04x%04x\\FileVersion",
                        unsigned{translation[0]}, unsigned{translation[1]});
    wchar_t* text = nullptr;
    if (!::VerQueryValueW(info.data(), block.data(), reinterpret_cast<void**>(&text), &size)) {
      return std::nullopt;
    }
    return std::wstring(text, ::wcsnlen(text, size));
  }

  bool CanLoadBesideModule(const std::wstring& fileName) const override {
    const std::wstring folder = ModuleFolder();
    return !folder.empty() &&
           LibraryHandle(::LoadLibraryW((folder + L"\\" + fileName).c_str())).Get() != nullptr;
  }
};

}  // namespace

const MachineView& ThisMachine() {
  static const WindowsMachine machine;
  return machine;
}

}  // namespace postmarker
