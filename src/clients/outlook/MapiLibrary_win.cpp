#include "clients/outlook/MapiLibrary_win.h"

#include <shlobj.h>

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>
#include <vector>

#include "clients/CrashGuard_win.h"

namespace postmarker {
namespace {

constexpr size_t kMaxHexDigits = 4096;

// Where Outlook's releases have their library: below these folders, in a folder for each language.
constexpr struct {
  const wchar_t* folder;
  const wchar_t* file;
} kPlaces[] = {{L"\\System\\MSMAPI\\", L"\\msmapi32.dll"},
               {L"\\System\\Mapi\\", L"\\msmapi32.dll"},
               {L"\\System\\Mapi\\", L"\\NT\\mapi32.dll"}};

struct FindTraits {
  using Type = HANDLE;
  static Type None() noexcept { return INVALID_HANDLE_VALUE; }
  static bool IsOpen(Type handle) noexcept { return handle != INVALID_HANDLE_VALUE; }
  static void Close(Type handle) noexcept { ::FindClose(handle); }
};
using FindHandle = UniqueHandle<FindTraits>;

// In the order of the file system.
std::vector<std::wstring> Subfolders(const std::wstring& folder) {
  std::vector<std::wstring> names;
  WIN32_FIND_DATAW entry = {};
  const FindHandle find(::FindFirstFileW((folder + L"*.*").c_str(), &entry));
  if (!find) {
    return names;
  }
  do {
    const std::wstring_view name = entry.cFileName;
    if ((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0 && name != L"." && name != L"..") {
      names.emplace_back(name);
    }
  } while (::FindNextFileW(find.Get(), &entry));
  return names;
}

LibraryHandle LoadFirst(const std::wstring& commonFiles) {
  for (const auto& place : kPlaces) {
    const std::wstring folder = commonFiles + place.folder;
    for (const std::wstring& language : Subfolders(folder)) {
      LibraryHandle module(::LoadLibraryW((folder + language + place.file).c_str()));
      if (module) {
        return module;
      }
    }
  }
  return {};
}

template <class Function>
void FindEntry(HMODULE module, const char* name, Function* function) {
  *function = reinterpret_cast<Function>(reinterpret_cast<void*>(::GetProcAddress(module, name)));
}

// The utility functions are exported by their decorated names. A library for 64 bits, where no
// function has one, may export them plainly.
template <class Function>
void FindUtility(HMODULE module, const char* name, const char* decorated, Function* function) {
  FindEntry(module, decorated, function);
  if (sizeof(void*) == 8 && *function == nullptr) {
    FindEntry(module, name, function);
  }
}

}  // namespace

MapiLibrary MapiLibrary::LoadOutlooks() {
  wchar_t folder[MAX_PATH] = {};
  if (!::SHGetSpecialFolderPathW(nullptr, folder, CSIDL_PROGRAM_FILES_COMMON, FALSE)) {
    return {};
  }
  return LoadBelow(folder);
}

MapiLibrary MapiLibrary::LoadBelow(const std::wstring& commonFiles) {
  return MapiLibrary(LoadFirst(commonFiles));
}

MapiLibrary MapiLibrary::LoadSystems() {
  wchar_t folder[MAX_PATH] = {};
  const UINT length = ::GetSystemDirectoryW(folder, MAX_PATH);
  if (length == 0 || length >= MAX_PATH) {
    return {};
  }
  return MapiLibrary(
      LibraryHandle(::LoadLibraryW((folder + std::wstring(L"\\mapi32.dll")).c_str())));
}

MapiLibrary::MapiLibrary(LibraryHandle module) : m_module(std::move(module)) {
  const HMODULE library = m_module.Get();
  if (library == nullptr) {
    return;
  }
  FindEntry(library, "MAPIInitialize", &initialize);
  FindEntry(library, "MAPIUninitialize", &uninitialize);
  FindEntry(library, "MAPILogonEx", &logonEx);
  FindEntry(library, "MAPIFreeBuffer", &freeBuffer);
  FindUtility(library, "HexFromBin", "HexFromBin@12", &hexFromBin);
  FindUtility(library, "HrQueryAllRows", "HrQueryAllRows@24", &hrQueryAllRows);
  FindUtility(library, "FreeProws", "FreeProws@4", &freeProws);
  FindUtility(library, "HrGetOneProp", "HrGetOneProp@12", &hrGetOneProp);
}

MapiLibrary::~MapiLibrary() {
  // Some releases crash when their library is unloaded.
  (void)RunGuarded([this]() noexcept { m_module.Reset(); });
}

bool MapiLibrary::IsUsable() const {
  return initialize != nullptr && uninitialize != nullptr && logonEx != nullptr &&
         freeBuffer != nullptr && hexFromBin != nullptr && hrQueryAllRows != nullptr &&
         freeProws != nullptr && hrGetOneProp != nullptr;
}

std::string HexText(const MapiLibrary& library, const SBinary& bytes) {
  if (bytes.cb == 0 || bytes.lpb == nullptr || bytes.cb > kMaxHexDigits / 2) {
    return {};
  }
  // There is room for UTF-16, which libraries that were built for it write.
  std::string text(2 * (2 * size_t{bytes.cb} + 1), '\0');
  library.hexFromBin(bytes.lpb, static_cast<int>(bytes.cb), text.data());
  std::erase(text, '\0');
  return text;
}

}  // namespace postmarker
