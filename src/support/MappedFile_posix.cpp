#include "support/MappedFile.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include "support/Descriptor_posix.h"
#include "support/Text.h"

namespace postmarker {
namespace {

// An opened regular file. Without O_NONBLOCK, opening a pipe that nobody writes to would wait for a
// writer.
struct OpenedFile {
  Descriptor descriptor;
  off_t size = 0;
};

OpenedFile OpenForReading(const std::wstring& path) {
  Descriptor file(::open(NarrowUtf8(path).c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  struct stat info = {};
  if (!file || ::fstat(file.Get(), &info) != 0 || !S_ISREG(info.st_mode)) {
    return {};
  }
  return {std::move(file), info.st_size};
}

}  // namespace

MappedFile::MappedFile(const std::wstring& path, uint8_t map) {
  if (map == 0) {
    return;
  }
  const OpenedFile file = OpenForReading(path);
  if (file.size == 0 || file.size >= 0xFFFFFFFF) {
    return;
  }
  const auto size = static_cast<size_t>(file.size);
  void* const view = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, file.descriptor.Get(), 0);
  if (view == MAP_FAILED) {
    return;
  }
  m_data = static_cast<const uint8_t*>(view);
  m_size = static_cast<uint32_t>(size);
  m_status = kOk;
}

MappedFile::~MappedFile() {
  if (m_data != nullptr) {
    ::munmap(const_cast<uint8_t*>(m_data), m_size);
  }
}

bool CanOpenForReading(const std::wstring& path) {
  return static_cast<bool>(OpenForReading(path).descriptor);
}

}  // namespace postmarker
