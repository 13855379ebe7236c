#include <windows.h>

#include "clients/incredimail/ImTemporaryFile.h"

namespace postmarker {
namespace {

FileHandle Open(const std::wstring& path, DWORD disposition, DWORD flags) {
  return FileHandle(::CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ,
                                  nullptr, disposition, FILE_ATTRIBUTE_TEMPORARY | flags, nullptr));
}

bool WriteWhole(const FileHandle& file, std::string_view bytes) {
  const auto size = static_cast<DWORD>(bytes.size());
  DWORD written = 0;
  return file && ::WriteFile(file.Get(), bytes.data(), size, &written, nullptr) != 0 &&
         written == size;
}

}  // namespace

ImTemporaryFile::ImTemporaryFile() {
  constexpr DWORD kPathRoom = 260;
  wchar_t folder[kPathRoom] = {};
  wchar_t path[kPathRoom] = {};
  const DWORD length = ::GetTempPathW(kPathRoom, folder);
  if (length != 0 && length < kPathRoom && ::GetTempFileNameW(folder, L"tmp", 0, path) != 0) {
    m_path = path;
  }
}

ImTemporaryFile::~ImTemporaryFile() = default;

bool ImTemporaryFile::Write(std::string_view bytes) {
  if (m_path.empty()) {
    return false;
  }
  m_file = Open(m_path, CREATE_ALWAYS, FILE_FLAG_DELETE_ON_CLOSE);
  if (WriteWhole(m_file, bytes) && View(bytes.size())) {
    return true;
  }
  m_file.Reset();
  (void)Open(m_path, CREATE_NEW, 0);  // the empty file that stays
  return false;
}

bool ImTemporaryFile::View(size_t size) {
  if (size == 0) {
    return true;  // nothing can be mapped
  }
  m_mapping.Reset(::CreateFileMappingW(m_file.Get(), nullptr, PAGE_READONLY, 0, 0, nullptr));
  m_view.Reset(m_mapping ? ::MapViewOfFile(m_mapping.Get(), FILE_MAP_READ, 0, 0, size) : nullptr);
  if (!m_view) {
    return false;
  }
  m_content = {static_cast<const char*>(m_view.Get()), size};
  return true;
}

}  // namespace postmarker
