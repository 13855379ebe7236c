#include <fcntl.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <unistd.h>

#include <filesystem>
#include <system_error>

#include "clients/incredimail/ImTemporaryFile.h"
#include "support/Text.h"

namespace postmarker {
namespace {

bool WriteWhole(const Descriptor& file, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(file.Get(), bytes.data(), bytes.size());
    if (written <= 0) {
      return false;
    }
    bytes.remove_prefix(static_cast<size_t>(written));
  }
  return true;
}

}  // namespace

ImTemporaryFile::ImTemporaryFile() {
  std::error_code failure;
  const std::filesystem::path folder = std::filesystem::temp_directory_path(failure);
  if (failure) {
    return;
  }
  std::string path = (folder / "tmpXXXXXX").string();
  if (const Descriptor file(::mkstemp(path.data())); file) {
    m_path = WidenUtf8(path);
  }
}

ImTemporaryFile::~ImTemporaryFile() {
  if (!m_content.empty()) {
    ::munmap(const_cast<char*>(m_content.data()), m_content.size());
  }
}

// The name goes at once; the file goes with its descriptor and its view.
bool ImTemporaryFile::Write(std::string_view bytes) {
  const std::string path = NarrowUtf8(m_path);
  m_file.Reset(::open(path.c_str(), O_RDWR | O_CLOEXEC));
  if (!m_file || ::unlink(path.c_str()) != 0) {
    return false;
  }
  if (WriteWhole(m_file, bytes) && View(bytes.size())) {
    return true;
  }
  m_file.Reset(::open(path.c_str(), O_RDWR | O_CLOEXEC | O_CREAT | O_EXCL, S_IRUSR | S_IWUSR));
  return false;
}

bool ImTemporaryFile::View(size_t size) {
  if (size == 0) {
    return true;  // nothing can be mapped
  }
  void* const view = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, m_file.Get(), 0);
  if (view == MAP_FAILED) {
    return false;
  }
  m_content = {static_cast<const char*>(view), size};
  return true;
}

}  // namespace postmarker
