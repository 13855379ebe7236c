#include "clients/StoreIdSearch.h"

#include <algorithm>

#include "support/MappedFile.h"

namespace postmarker {
namespace {

// The end of a key: the mark of a column, "Folders" and its terminator in UTF-16, and the mark of
// the next column, whose value is the id.
constexpr char kPatternBytes[] =
    "\x40\x01"
    "F\0o\0l\0d\0e\0r\0s\0"
    "\0\0\x01";
constexpr std::string_view kPattern(kPatternBytes, sizeof(kPatternBytes) - 1);
static_assert(kPattern.size() == 19);

std::optional<std::string> IdOf(std::string_view bytes) {
  const bool isZero = std::all_of(bytes.begin(), bytes.end(), [](char c) { return c == '\0'; });
  return isZero ? std::nullopt : std::optional<std::string>(bytes);
}

}  // namespace

std::optional<std::string> FindStoreId(std::string_view file) {
  const size_t found = file.find(kPattern);
  if (found == std::string_view::npos) {
    return std::nullopt;
  }
  const std::string_view rest = file.substr(found + kPattern.size());
  // Deliberate: an id that is the end of the file is none. No store ends there, so it was cut.
  return rest.size() > kStoreIdBytes ? IdOf(rest.substr(0, kStoreIdBytes)) : std::nullopt;
}

std::optional<std::string> DbxStoreId(std::string_view file) {
  return file.size() >= kDbxStoreIdOffset + kStoreIdBytes
             ? IdOf(file.substr(kDbxStoreIdOffset, kStoreIdBytes))
             : std::nullopt;
}

std::optional<std::string> FindStoreIdInFile(const std::wstring& path,
                                             const std::wstring& backupPath) {
  const MappedFile live(path, 1);
  if (Succeeded(live.Status())) {
    return FindStoreId(live.Bytes());
  }
  return FindStoreId(MappedFile(backupPath, 1).Bytes());
}

std::optional<std::string> ReadDbxStoreId(const std::wstring& path) {
  return DbxStoreId(MappedFile(path, 1).Bytes());
}

}  // namespace postmarker
