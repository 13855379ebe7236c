// Where the build lays the suite out to run from.
#pragma once

#include <windows.h>

#include <filesystem>
#include <string>

namespace postmarker::test {

// The staged suite root, as a Windows path without a backslash at its end: the folder "stage"
// beside the program that runs or beside one of the folders that it lies in. No path is compiled
// in, so that a program compiled in one clone of the tree is, byte for byte, that of another. Empty
// if there is none.
inline std::wstring StageFolder() {
  wchar_t program[MAX_PATH] = {};
  const DWORD length = ::GetModuleFileNameW(nullptr, program, MAX_PATH);
  std::filesystem::path folder = std::filesystem::path(program, program + length).parent_path();
  while (folder.has_relative_path()) {
    const std::filesystem::path stage = folder / L"stage";
    std::error_code failed;
    if (std::filesystem::is_directory(stage, failed)) {
      return stage.wstring();
    }
    folder = folder.parent_path();
  }
  return {};
}

}  // namespace postmarker::test
