#include "controls/FileExtension.h"

#include <algorithm>

#include "support/Text.h"

namespace postmarker {
namespace {

constexpr size_t kMaxNameChars = 64;
constexpr std::wstring_view kForbidden = L"\\/:*?\"<>|";

bool MayStandInName(wchar_t unit) {
  return unit > L' ' && unit != 0x7F && kForbidden.find(unit) == std::wstring_view::npos;
}

}  // namespace

std::optional<std::wstring> FileExtensionForm(std::wstring_view typed) {
  std::wstring_view name = TrimWhiteSpace(typed);
  if (name.starts_with(L"*.")) {
    name.remove_prefix(1);
  }
  if (name.starts_with(L'.')) {
    name.remove_prefix(1);
  }
  if (name.empty() || name.size() > kMaxNameChars || name.back() == L'.' ||
      !std::all_of(name.begin(), name.end(), MayStandInName)) {
    return std::nullopt;
  }
  return L"." + ToLower(name);
}

}  // namespace postmarker
