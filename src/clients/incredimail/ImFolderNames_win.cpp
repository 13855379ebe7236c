#include "clients/incredimail/ImFolderNames_win.h"

#include <windows.h>

#include "clients/incredimail/ImIdentity_win.h"
#include "support/Handles_win.h"

namespace postmarker::incredimail {
namespace {

constexpr wchar_t kMessageFile[] = L"ImSuppRU.dll";
constexpr DWORD kFolderMessages[] = {1814, 1816, 1818, 1820, 1821, 1822};
constexpr DWORD kDefaultSublanguage = 0x400;
constexpr DWORD kMessageRoom = 256;  // in characters, with the terminator

LibraryHandle OpenMessageFile() {
  std::wstring path;
  if (Failed(FindExecutablePath(&path))) {
    return {};
  }
  const size_t backslash = path.rfind(L'\\');
  if (backslash == std::wstring::npos) {
    return {};
  }
  path.replace(backslash + 1, std::wstring::npos, kMessageFile);
  return LibraryHandle(::LoadLibraryExW(path.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE));
}

// A message without the white space at its end; false if it is missing or too long.
bool ReadMessage(HMODULE module, DWORD number, DWORD language, std::wstring* text) {
  wchar_t buffer[kMessageRoom] = {};
  const DWORD length = ::FormatMessageW(FORMAT_MESSAGE_FROM_HMODULE, module, number, language,
                                        buffer, kMessageRoom, nullptr);
  if (length == 0) {
    return false;
  }
  text->assign(buffer, length);
  text->erase(text->find_last_not_of(L"\r\n ") + 1);
  return true;
}

}  // namespace

ResultCode ReadLocalisedFolderNames(uint32_t language, std::vector<std::wstring>* names) {
  const LibraryHandle module = OpenMessageFile();
  if (!module) {
    return kFail;
  }
  for (const DWORD number : kFolderMessages) {
    std::wstring text;
    if (!ReadMessage(module.Get(), number, language | kDefaultSublanguage, &text)) {
      return kFail;
    }
    names->push_back(std::move(text));
  }
  return kOk;
}

}  // namespace postmarker::incredimail
