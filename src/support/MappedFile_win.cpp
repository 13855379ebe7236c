#include "support/MappedFile.h"

namespace postmarker {
namespace {

FileHandle OpenShared(const std::wstring& path, DWORD share) {
  return FileHandle(::CreateFileW(path.c_str(), GENERIC_READ, share, nullptr, OPEN_EXISTING,
                                  FILE_ATTRIBUTE_NORMAL | FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
}

// A running client holds its files open for writing, which the first way refuses.
FileHandle OpenEitherWay(const std::wstring& path) {
  FileHandle file = OpenShared(path, FILE_SHARE_READ);
  return file ? std::move(file) : OpenShared(path, FILE_SHARE_READ | FILE_SHARE_WRITE);
}

}  // namespace

MappedFile::MappedFile(const std::wstring& path, uint8_t map) {
  if (map == 0) {
    return;
  }
  FileHandle file = OpenEitherWay(path);
  if (!file) {
    return;
  }
  LARGE_INTEGER size = {};
  if (!::GetFileSizeEx(file.Get(), &size) || size.QuadPart == 0 ||
      size.QuadPart >= INVALID_FILE_SIZE) {
    return;
  }
  // With the size named, a file that its client has cut short meanwhile is refused, and one that
  // grew is seen up to that size: the view never ends before Size.
  KernelHandle mapping(
      ::CreateFileMappingW(file.Get(), nullptr, PAGE_READONLY, 0, size.LowPart, nullptr));
  if (!mapping) {
    return;
  }
  FileView view(::MapViewOfFile(mapping.Get(), FILE_MAP_READ, 0, 0, size.LowPart));
  if (!view) {
    return;
  }
  m_file = std::move(file);
  m_mapping = std::move(mapping);
  m_view = std::move(view);
  m_data = static_cast<const uint8_t*>(m_view.Get());
  m_size = size.LowPart;
  m_status = kOk;
}

MappedFile::~MappedFile() = default;

bool CanOpenForReading(const std::wstring& path) {
  return static_cast<bool>(OpenEitherWay(path));
}

}  // namespace postmarker
