// Address books as the older clients keep them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace postmarker::test {

inline constexpr size_t kWabTable = 0x80;  // where the table of a file made here begins
inline constexpr size_t kWabEntry = 68;    // the size of an entry

// Sets the field that tells where the table begins.
inline void SetWabTable(std::string* file, uint32_t offset) {
  for (size_t i = 0; i < sizeof(offset); ++i) {
    (*file)[0x60 + i] = static_cast<char>(offset >> (8 * i));
  }
}

// A file with a table of these entries, each with zeros up to its size; at most 34 units of a text
// are written. `count` is what the file tells as their number; without it, the true one.
inline std::string MakeWabFile(const std::vector<std::wstring>& entries, int count = -1) {
  std::string file(kWabTable, '\0');
  SetWabTable(&file, kWabTable);
  file[0x64] = static_cast<char>(count < 0 ? static_cast<int>(entries.size()) : count);
  for (const std::wstring& entry : entries) {
    std::string bytes;
    for (const wchar_t unit : entry.substr(0, kWabEntry / 2)) {
      bytes.push_back(static_cast<char>(unit & 0xFF));
      bytes.push_back(static_cast<char>((unit >> 8) & 0xFF));
    }
    bytes.resize(kWabEntry, '\0');
    file += bytes;
  }
  return file;
}

}  // namespace postmarker::test
