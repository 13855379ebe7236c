#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <system_error>

#include "clients/incredimail/ImTemporaryFile.h"
#include "support/Text.h"

namespace postmarker {
namespace {

std::filesystem::path PathOf(const std::wstring& path) {
  return NarrowUtf8(path);
}

}  // namespace

std::wstring MakeTemporaryFile() {
  std::error_code failure;
  const std::filesystem::path folder = std::filesystem::temp_directory_path(failure);
  if (failure) {
    return {};
  }
  std::string path = (folder / "tmpXXXXXX").string();
  const int descriptor = ::mkstemp(path.data());
  if (descriptor < 0) {
    return {};
  }
  ::close(descriptor);
  return WidenUtf8(path);
}

bool WriteTemporaryFile(const std::wstring& path, std::string_view bytes) {
  std::ofstream file(PathOf(path), std::ios::binary | std::ios::trunc);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  return !file.flush().fail();
}

void DeleteTemporaryFile(const std::wstring& path) {
  std::error_code ignored;
  std::filesystem::remove(PathOf(path), ignored);
}

}  // namespace postmarker
