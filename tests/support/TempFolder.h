// A folder of a test's own, gone with everything in it at the end.
#pragma once

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>

#include "support/Text.h"

namespace postmarker::test {

// Made at construction under the system's folder for temporary files, deleted at destruction.
class TempFolder {
 public:
  TempFolder() {
    static std::atomic<unsigned> count{0};
    // Tests of several programs run at once: a folder that is there already is somebody else's.
    do {
      const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
      m_path = std::filesystem::temp_directory_path() /
               ("postmarker-test-" + std::to_string(now) + "-" + std::to_string(++count));
    } while (!std::filesystem::create_directory(m_path));
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;
  ~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
  }

  [[nodiscard]] const std::filesystem::path& Path() const { return m_path; }

  // The path of a file or folder in it, in the form that the system under test takes. `name` is
  // ASCII.
  [[nodiscard]] std::wstring PathOf(std::string_view name) const { return Wide(m_path / name); }

  // A path as UTF-16 units.
  static std::wstring Wide(const std::filesystem::path& path) {
    const std::u16string units = path.u16string();
    return {units.begin(), units.end()};
  }

 private:
  std::filesystem::path m_path;
};

// Writes a file whole. `path` is UTF-16.
inline void WriteFile(const std::wstring& path, std::string_view bytes) {
  const std::u16string units(path.begin(), path.end());
  std::ofstream file(std::filesystem::path(units), std::ios::binary | std::ios::trunc);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  if (!file.flush()) {
    throw std::runtime_error("a test's file could not be written");
  }
}

// Reads a file whole; empty if it can't be opened. `path` is UTF-16.
inline std::string ReadFile(const std::wstring& path) {
  const std::u16string units(path.begin(), path.end());
  std::ifstream file(std::filesystem::path(units), std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace postmarker::test
