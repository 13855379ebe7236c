// Files for one moment, in the system's folder for them.
#pragma once

#include <string>
#include <string_view>

namespace postmarker {

// Makes an empty file of a new name and gives its path, UTF-16; empty if that failed.
std::wstring MakeTemporaryFile();

// Replaces the content of the file. False if that failed.
bool WriteTemporaryFile(const std::wstring& path, std::string_view bytes);

void DeleteTemporaryFile(const std::wstring& path);

}  // namespace postmarker
