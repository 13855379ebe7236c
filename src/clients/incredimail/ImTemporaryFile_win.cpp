#include <windows.h>

#include "clients/incredimail/ImTemporaryFile.h"
#include "support/Handles_win.h"

namespace postmarker {

std::wstring MakeTemporaryFile() {
  constexpr DWORD kPathRoom = 260;
  wchar_t folder[kPathRoom] = {};
  wchar_t path[kPathRoom] = {};
  const DWORD length = ::GetTempPathW(kPathRoom, folder);
  if (length == 0 || length >= kPathRoom || ::GetTempFileNameW(folder, L"tmp", 0, path) == 0) {
    return {};
  }
  return path;
}

bool WriteTemporaryFile(const std::wstring& path, std::string_view bytes) {
  const FileHandle file(::CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                      CREATE_ALWAYS, FILE_ATTRIBUTE_TEMPORARY, nullptr));
  const auto size = static_cast<DWORD>(bytes.size());
  DWORD written = 0;
  return file && ::WriteFile(file.Get(), bytes.data(), size, &written, nullptr) != 0 &&
         written == size;
}

void DeleteTemporaryFile(const std::wstring& path) {
  ::DeleteFileW(path.c_str());
}

}  // namespace postmarker
