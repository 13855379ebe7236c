#include "support/LogPath.h"

#include <algorithm>
#include <iterator>

#include "support/Text.h"

namespace postmarker {
namespace {

constexpr size_t kMaxPathChars = 260;

struct Macro {
  std::wstring_view beginning;
  LogFolder folder;
};

constexpr Macro kMacros[] = {
    {L"appdir:", LogFolder::kProgram},
    {L"appdata:", LogFolder::kApplicationData},
    {L"temp:", LogFolder::kTemporary},
    // Deliberate: as much as is compared of "desktop:", so that "desktops:" is that folder as well.
    {L"deskt", LogFolder::kDesktop},
};

}  // namespace

std::wstring ExpandLogPath(std::wstring_view text,
                           const std::function<std::wstring(LogFolder)>& folderOf) {
  const auto* const macro = std::find_if(
      std::begin(kMacros), std::end(kMacros),
      [&](const Macro& m) { return EqualNoCase(text.substr(0, m.beginning.size()), m.beginning); });
  const size_t colon = text.find(L':');
  if (macro == std::end(kMacros) || colon == std::wstring_view::npos) {
    return std::wstring(text);
  }
  std::wstring path = folderOf(macro->folder);
  if (path.empty()) {
    return std::wstring(text);
  }
  if (path.back() == L'\\') {
    path.pop_back();
  }
  path.append(text.substr(colon + 1));
  path.resize(std::min(path.size(), kMaxPathChars));
  return path;
}

}  // namespace postmarker
