#include "clients/thunderbird/TbIniFile.h"

#include <algorithm>

#include "support/Text.h"

namespace postmarker::thunderbird {
namespace {

constexpr size_t kMaxLineChars = 259;
constexpr std::wstring_view kPathKey = L"Path=";

// The lines of a text file, each up to its first NUL. A file that is well-formed UTF-8, as today's
// Thunderbird writes it, is read as such, another in the code page. Deliberate: a line longer than
// any path comes in pieces of 259 characters, the line end counting as one, and each piece is a
// line.
class TextLines {
 public:
  explicit TextLines(std::string_view bytes)
      : m_rest(bytes.substr(0, bytes.find('\x1A'))), m_isUtf8(IsUtf8(m_rest)) {}

  // Without its line end. False at the end of the file; *line is then as it was.
  bool Next(std::wstring* line) {
    if (m_rest.empty()) {
      return false;
    }
    std::string piece;
    for (size_t characters = 0; !m_rest.empty();) {
      characters += BeginsCharacter() ? 1 : 0;
      if (characters > kMaxLineChars) {
        break;
      }
      const char c = TakeByte();
      if (c == '\n') {
        break;
      }
      piece.push_back(c);
    }
    const std::string_view text = std::string_view(piece).substr(0, piece.find('\0'));
    *line = m_isUtf8 ? WidenUtf8(text) : Widen(text);
    return true;
  }

 private:
  [[nodiscard]] bool BeginsCharacter() const {
    const bool continues = (static_cast<unsigned char>(m_rest.front()) & 0xC0) == 0x80;
    return !m_isUtf8 || !continues;
  }

  // A CR before an LF belongs to the line end.
  char TakeByte() {
    if (m_rest.starts_with("\r\n")) {
      m_rest.remove_prefix(1);
    }
    const char c = m_rest.front();
    m_rest.remove_prefix(1);
    return c;
  }

  std::string_view m_rest;
  bool m_isUtf8;
};

bool Contains(std::wstring_view line, std::wstring_view text) {
  return line.find(text) != std::wstring_view::npos;
}

bool IsRelative(std::wstring_view line) {
  return Contains(line, L"IsRelative") && (Contains(line, L"= 1") || Contains(line, L"=1"));
}

}  // namespace

std::optional<std::wstring> FindDefaultProfile(std::string_view profilesIni,
                                               const std::wstring& applicationData) {
  TextLines lines(profilesIni);
  std::wstring line;
  while (lines.Next(&line)) {
    if (!EqualNoCase(line, L"Name=default")) {
      continue;
    }
    if (!lines.Next(&line)) {
      break;
    }
    const bool isRelative = IsRelative(line);
    if (!lines.Next(&line)) {
      break;
    }
    if (!Contains(line, kPathKey)) {
      continue;
    }
    const std::wstring value = line.substr(kPathKey.size());
    if (!isRelative) {
      return value;
    }
    std::wstring path = applicationData;
    path.append(L"\\Thunderbird\\").append(value);
    std::replace(path.begin(), path.end(), L'/', L'\\');
    return path;
  }
  return std::nullopt;
}

bool HasLineWith(std::string_view extensionsIni, std::wstring_view text) {
  TextLines lines(extensionsIni);
  std::wstring line;
  while (!text.empty() && lines.Next(&line)) {
    if (Contains(line, text)) {
      return true;
    }
  }
  return false;
}

}  // namespace postmarker::thunderbird
