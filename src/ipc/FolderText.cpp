#include "ipc/FolderText.h"

#include <optional>

#include "support/Text.h"

namespace postmarker {
namespace {

constexpr std::wstring_view kMark = L"#-#";
constexpr std::wstring_view kDoubled = L"##";

void AppendEscaped(std::wstring* text, std::wstring_view field) {
  for (const wchar_t unit : field) {
    text->append(unit == L'#' ? 2 : 1, unit);
  }
  text->append(kMark);
}

// Reads the field at *pos, its doubled signs single, and moves past its mark. Pairs are taken
// from the left: what follows a doubled sign is no mark, even if it looks like one with the pair's
// second half.
std::optional<std::wstring> NextField(std::wstring_view text, size_t* pos) {
  std::wstring field;
  for (size_t i = *pos; i < text.size(); ++i) {
    const std::wstring_view rest = text.substr(i);
    if (rest.starts_with(kMark)) {
      *pos = i + kMark.size();
      return field;
    }
    field.push_back(text[i]);
    if (rest.starts_with(kDoubled)) {
      ++i;
    }
  }
  *pos = text.size();
  return std::nullopt;
}

}  // namespace

std::wstring EncodeFolderText(const MailFolderRef& folder) {
  std::wstring text(kMark);
  AppendEscaped(&text, folder.flag != 0 ? L"T" : L"F");
  AppendEscaped(&text, Widen(folder.firstId));
  AppendEscaped(&text, Widen(folder.secondId));
  AppendEscaped(&text, folder.name);
  return text;
}

MailFolderRef DecodeFolderText(std::wstring_view text) {
  MailFolderRef folder;
  size_t pos = kMark.size();
  const auto next = [&] { return NextField(text, &pos).value_or(std::wstring()); };
  folder.flag = EqualNoCase(next(), L"T") ? 1 : 0;
  folder.firstId = Narrow(next());
  folder.secondId = Narrow(next());
  folder.name = next();
  return folder;
}

}  // namespace postmarker
