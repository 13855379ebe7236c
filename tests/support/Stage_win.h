// Where the build lays the suite out to run from.
#pragma once

#include <algorithm>
#include <string>

#include "support/Text.h"

namespace postmarker::test {

// The staged suite root, as a Windows path without a backslash at its end.
inline std::wstring StageFolder() {
  std::wstring path = L"Z:" + WidenUtf8(POSTMARKER_STAGE);
  std::replace(path.begin(), path.end(), L'/', L'\\');
  return path;
}

}  // namespace postmarker::test
