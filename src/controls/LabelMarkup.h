// The small markup language of labels: a text with tags becomes a list of runs, line ends and
// rules.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace postmarker {

// The face of <CODE>, whose letters are all of one width.
constexpr wchar_t kCodeFace[] = L"Courier New";

// How the font of a run differs from the control's own.
struct LabelFont {
  size_t face = 0;  // index in LabelMarkup::faces
  int size = 0;     // added to the font's height, in pixels at 96 per inch
  bool bold = false;
  bool italic = false;
  bool underline = false;
  bool strikethrough = false;
  int spacing = 0;  // how many times the letters are set farther apart

  bool operator==(const LabelFont&) const = default;
};

// Above, on or below its line.
enum class LabelShift { kNone, kUp, kDown };

// No link.
constexpr size_t kNoLink = std::numeric_limits<size_t>::max();

struct LabelStyle {
  LabelFont font;
  std::optional<uint32_t> color;       // as CXNamedColors::Value; none: the control's
  std::optional<uint32_t> background;  // the same
  LabelShift shift = LabelShift::kNone;
  size_t link = kNoLink;  // index in LabelMarkup::links

  bool operator==(const LabelStyle&) const = default;
};

enum class LabelItemKind { kRun, kLineEnd, kRule };

struct LabelItem {
  LabelItemKind kind = LabelItemKind::kRun;
  LabelStyle style;
  bool justify = false;  // lines that fill up from here on are justified
  size_t begin = 0;      // of a run, in LabelMarkup::text
  size_t end = 0;
  int ruleHeight = 0;  // of a rule, in pixels at 96 per inch
};

struct LabelLink {
  std::wstring target;  // as the text gives it, with its quotes if it has any
  std::wstring name;    // what can be read there, without blanks at its ends
};

struct LabelMarkup {
  std::wstring text;  // with tags, but without entities; runs refer to it
  std::vector<LabelItem> items;
  std::vector<LabelLink> links;
  std::vector<std::wstring> faces = {std::wstring()};  // the first one is the control's own
};

// The characters of a text: each entity becomes its character, and each line end and tab a blank.
// Deliberate: the values of some entities are codes of Windows-1252 and no Unicode letters, and "<"
// made from an entity begins a tag like any other.
std::wstring LabelCharacters(std::wstring_view text);

// Reads a text. Never fails: what is no tag is text. Time and memory are linear in its length.
LabelMarkup ParseLabel(std::wstring_view text);

// What can be read, for those who hear it: the text without tags, where line ends and rules are
// blanks, without blanks at its ends.
std::wstring LabelPlainText(const LabelMarkup& markup);

}  // namespace postmarker
