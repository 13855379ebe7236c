#include "wizard/ResourceLanguage_win.h"

#include <cwchar>

#include "support/Registry_win.h"
#include "support/SuiteKeys.h"

namespace postmarker {
namespace {

constexpr wchar_t kDefaultLanguage[] = L"en";
constexpr size_t kLanguageLength = 2;
constexpr DWORD kLanguageRoom = 6;  // bytes: two characters and the terminator
constexpr DWORD kPathRoom = 260;

struct FindTraits {
  using Type = HANDLE;
  static Type None() noexcept { return INVALID_HANDLE_VALUE; }
  static bool IsOpen(Type handle) noexcept { return handle != INVALID_HANDLE_VALUE; }
  static void Close(Type handle) noexcept { ::FindClose(handle); }
};
using FindHandle = UniqueHandle<FindTraits>;

bool IsLanguageFolder(const WIN32_FIND_DATAW& entry) {
  const std::wstring name = entry.cFileName;
  return name != L"." && name != L".." &&
         (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0 && name.size() == kLanguageLength;
}

std::wstring HostExecutable() {
  std::wstring path(kPathRoom, L'\0');
  const DWORD length = ::GetModuleFileNameW(nullptr, path.data(), kPathRoom);
  path.resize(length < kPathRoom ? length : 0);
  return path;
}

}  // namespace

std::wstring FolderAbove(const std::wstring& path, int levels) {
  std::wstring folder = path;
  for (int i = 0; i < levels; ++i) {
    const size_t cut = folder.rfind(L'\\');
    folder.resize(cut == std::wstring::npos ? 0 : cut);
  }
  return folder;
}

std::wstring ReadLanguageSetting() {
  const RegistryKey key =
      RegistryKey::Open(HKEY_LOCAL_MACHINE, kMainKey, KEY_QUERY_VALUE | SuiteKeyView());
  return key.ReadString(L"Language", kLanguageRoom).value_or(std::wstring());
}

std::wstring ScanForLanguage(const std::wstring& executable) {
  if (executable.empty()) {
    return {};
  }
  const std::wstring pattern = FolderAbove(executable, 1) + L"\\res\\*";
  WIN32_FIND_DATAW entry = {};
  const FindHandle find(::FindFirstFileW(pattern.c_str(), &entry));
  if (!find) {
    return {};
  }
  do {
    if (IsLanguageFolder(entry)) {
      return entry.cFileName;
    }
  } while (::FindNextFileW(find.Get(), &entry));
  return {};
}

std::wstring FindResourceLanguage() {
  std::wstring language = ReadLanguageSetting();
  if (language.empty()) {
    language = ScanForLanguage(HostExecutable());
  }
  return language.empty() ? kDefaultLanguage : language;
}

}  // namespace postmarker
