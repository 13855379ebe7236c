#include "FilePlace.h"

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <system_error>

#include "support/Text.h"

namespace postmarker::install {
namespace {

namespace fs = std::filesystem;

std::string Utf8(const fs::path& path) {
  return NarrowUtf8(ToWide(path));
}

bool WriteWhole(const fs::path& path, const std::string& bytes) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  file.close();
  return !file.fail();
}

}  // namespace

fs::path ToPath(const std::wstring& path) {
  return {std::u16string(path.begin(), path.end())};
}

std::wstring ToWide(const fs::path& path) {
  const std::u16string units = path.u16string();
  return {units.begin(), units.end()};
}

std::string FilePlace::Name() const {
  return Utf8(m_path);
}

bool FilePlace::Read(Content* content) const {
  content->reset();
  std::error_code failure;
  const fs::file_status status = fs::symlink_status(m_path, failure);
  if (status.type() == fs::file_type::not_found) {
    return true;
  }
  const uintmax_t size = fs::file_size(m_path, failure);
  if (status.type() != fs::file_type::regular || failure || size > kMaxContentBytes) {
    return false;
  }
  std::string bytes(static_cast<size_t>(size), '\0');
  std::ifstream file(m_path, std::ios::binary);
  file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  if (!file) {
    return false;
  }
  *content = std::move(bytes);
  return true;
}

bool FilePlace::Write(const Content& content) {
  std::error_code failure;
  if (content) {
    fs::create_directories(m_path.parent_path(), failure);
    return !failure && Replace(*content);
  }
  fs::remove(m_path, failure);
  return !failure;
}

bool FilePlace::Replace(const std::string& bytes) const {
  const fs::path draft = fs::path(m_path) += ".new";
  std::error_code failure;
  bool isDone = WriteWhole(draft, bytes);
  if (isDone) {
    // Who may read the file stays as it is.
    const fs::file_status old = fs::status(m_path, failure);
    if (fs::exists(old)) {
      fs::permissions(draft, old.permissions(), failure);
    }
    fs::rename(draft, m_path, failure);
    isDone = !failure;
  }
  if (!isDone) {
    fs::remove(draft, failure);
  }
  return isDone;
}

std::vector<std::string> FilePlace::MissingParents() const {
  std::vector<std::string> missing;
  std::error_code failure;
  for (fs::path folder = m_path.parent_path();
       folder.has_relative_path() && !fs::exists(folder, failure); folder = folder.parent_path()) {
    missing.push_back(Utf8(folder));
  }
  std::reverse(missing.begin(), missing.end());
  return missing;
}

void FilePlace::RemoveParent(const std::string& parent) {
  const fs::path folder = ToPath(WidenUtf8(parent));
  std::error_code failure;
  if (fs::is_directory(folder, failure) && fs::is_empty(folder, failure)) {
    fs::remove(folder, failure);
  }
}

}  // namespace postmarker::install
