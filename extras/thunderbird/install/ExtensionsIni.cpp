#include "ExtensionsIni.h"

#include "clients/thunderbird/TbIniFile.h"
#include "support/Text.h"

namespace postmarker::install {

std::optional<std::string> WithExtension(std::string_view extensionsIni, std::wstring_view path) {
  using thunderbird::HasLineWith;
  std::string text(extensionsIni);
  if (HasLineWith(text, path)) {
    return text;
  }
  const bool hasBareEnds =
      text.find('\n') != std::string::npos && text.find('\r') == std::string::npos;
  const std::string end = hasBareEnds ? "\n" : "\r\n";
  if (!text.empty() && !text.ends_with('\n')) {
    text += end;
  }
  // A section of its own: the others are Thunderbird's.
  text += "[Postmarker]" + end + "Extension=";
  text += (IsUtf8(extensionsIni) ? NarrowUtf8(path) : Narrow(path)) + end;
  return HasLineWith(text, path) ? std::optional(text) : std::nullopt;
}

}  // namespace postmarker::install
