#include "controls/LabelMarkup.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "controls/CXNamedColors.h"
#include "support/Text.h"

namespace postmarker {
namespace {

// Pixels at 96 per inch.
constexpr int kSizeStep = 2;
constexpr int kMaxNumber = 1000;
constexpr int kDefaultRuleHeight = 1;

// Faces of fonts are at most this long on the platform.
constexpr size_t kMaxFaceChars = 31;

bool StartsWithNoCase(std::wstring_view text, std::wstring_view head) {
  return text.size() >= head.size() && EqualNoCase(text.substr(0, head.size()), head);
}

void SkipBlanks(std::wstring_view* text) {
  text->remove_prefix(std::min(text->find_first_not_of(L' '), text->size()));
}

// The whole number that the text begins with, within +-kMaxNumber; nothing if there is none.
std::optional<int> LeadingNumber(std::wstring_view text) {
  SkipBlanks(&text);
  const bool negative = text.starts_with(L'-');
  if (negative || text.starts_with(L'+')) {
    text.remove_prefix(1);
  }
  std::optional<int> number;
  for (const wchar_t unit : text) {
    if (unit < L'0' || unit > L'9') {
      break;
    }
    number = std::min(number.value_or(0) * 10 + (unit - L'0'), kMaxNumber);
  }
  return negative && number ? -*number : number;
}

// The attributes of a FONT tag, as far as they were read.
struct FontAttributes {
  std::optional<std::wstring_view> color;
  std::optional<std::wstring_view> background;
  std::optional<std::wstring_view> face;
  std::optional<std::wstring_view> size;
};

struct FontAttribute {
  std::wstring_view head;
  std::optional<std::wstring_view> FontAttributes::*value;
};

constexpr FontAttribute kFontAttributes[] = {
    {L"COLOR=", &FontAttributes::color},
    {L"BGCOLOR=", &FontAttributes::background},
    {L"FACE=", &FontAttributes::face},
    {L"SIZE=", &FontAttributes::size},
};

FontAttributes ReadFontAttributes(std::wstring_view text) {
  FontAttributes attributes;
  for (SkipBlanks(&text); !text.empty(); SkipBlanks(&text)) {
    const auto* const known = std::find_if(
        std::begin(kFontAttributes), std::end(kFontAttributes),
        [text](const FontAttribute& attribute) { return StartsWithNoCase(text, attribute.head); });
    if (known == std::end(kFontAttributes)) {
      text.remove_prefix(std::min(text.find(L' '), text.size()));
      continue;
    }
    text.remove_prefix(known->head.size());
    const size_t end = text.starts_with(L'"') ? text.find(L'"', 1) : std::wstring_view::npos;
    if (end == std::wstring_view::npos) {
      break;
    }
    attributes.*known->value = text.substr(1, end - 1);
    text.remove_prefix(end + 1);
  }
  return attributes;
}

// The height that an HR tag asks for.
int RuleHeight(std::wstring_view attributes) {
  constexpr std::wstring_view kSize = L"SIZE=";
  const auto found = std::search(attributes.begin(), attributes.end(), kSize.begin(), kSize.end(),
                                 [](wchar_t a, wchar_t b) { return ToLower(a) == ToLower(b); });
  if (found == attributes.end()) {
    return kDefaultRuleHeight;
  }
  attributes.remove_prefix(static_cast<size_t>(found - attributes.begin()) + kSize.size());
  if (attributes.starts_with(L'"')) {
    attributes.remove_prefix(1);
  }
  const int height = LeadingNumber(attributes).value_or(kDefaultRuleHeight);
  return height >= 0 ? height : kDefaultRuleHeight;
}

// Reads one text, in one pass.
class LabelParser {
 public:
  explicit LabelParser(std::wstring_view text) { m_markup.text = LabelCharacters(text); }

  LabelMarkup Parse();

 private:
  struct Tag {
    std::wstring_view head;
    void (LabelParser::*act)(std::wstring_view rest);  // what stands between the head and ">"
  };
  static const Tag kTags[];

  // What FONT and CODE change, and give back at their ends.
  struct Look {
    size_t face = 0;
    int64_t size = 0;
    std::optional<uint32_t> color;
    std::optional<uint32_t> background;
  };
  enum Element { kFont, kCode };
  struct OpenElement {
    Element element;
    bool sized;
    Look before;
  };

  template <int LabelParser::*counter>
  void Open(std::wstring_view /*rest*/) {
    ++(this->*counter);
  }
  template <int LabelParser::*counter>
  void Close(std::wstring_view /*rest*/) {
    this->*counter = std::max(0, this->*counter - 1);
  }
  void Enlarge(std::wstring_view /*rest*/) { m_look.size += kSizeStep; }
  void Reduce(std::wstring_view /*rest*/) { m_look.size -= kSizeStep; }
  void Justify(std::wstring_view /*rest*/) { m_justify = true; }
  void OpenFont(std::wstring_view rest);
  void CloseFont(std::wstring_view rest);
  void OpenCode(std::wstring_view rest);
  void CloseCode(std::wstring_view rest);
  void OpenLink(std::wstring_view rest);
  void CloseLink(std::wstring_view /*rest*/) { m_link = kNoLink; }
  void AddRule(std::wstring_view rest);
  void AddLineEnd(std::wstring_view /*rest*/) { AddItem(LabelItemKind::kLineEnd); }

  bool ReadTag();
  size_t FindTagEnd(size_t from);
  void AddText(size_t end);
  LabelItem& AddItem(LabelItemKind kind);
  [[nodiscard]] LabelStyle Style() const;
  void OpenElementOf(Element element, bool sized);
  std::optional<OpenElement> CloseElement(Element element);
  void FinishLinks();

  LabelMarkup m_markup;
  size_t m_position = 0;
  size_t m_tagEnd = 0;  // the first ">" at or after the place of the last search

  int m_bold = 0;
  int m_italic = 0;
  int m_underline = 0;
  int m_strikethrough = 0;
  int m_subscript = 0;
  int m_superscript = 0;
  int m_spacing = 0;
  bool m_justify = false;
  Look m_look;
  size_t m_link = kNoLink;
  std::vector<OpenElement> m_open;
  std::array<size_t, 2> m_openCounts = {};  // of each element
};

// A head without ">" takes attributes.
const LabelParser::Tag LabelParser::kTags[] = {
    {L"<B>", &LabelParser::Open<&LabelParser::m_bold>},
    {L"</B>", &LabelParser::Close<&LabelParser::m_bold>},
    {L"<I>", &LabelParser::Open<&LabelParser::m_italic>},
    {L"</I>", &LabelParser::Close<&LabelParser::m_italic>},
    {L"<U>", &LabelParser::Open<&LabelParser::m_underline>},
    {L"</U>", &LabelParser::Close<&LabelParser::m_underline>},
    {L"<STRIKE>", &LabelParser::Open<&LabelParser::m_strikethrough>},
    {L"</STRIKE>", &LabelParser::Close<&LabelParser::m_strikethrough>},
    {L"<BIG>", &LabelParser::Enlarge},
    {L"</BIG>", &LabelParser::Reduce},
    {L"<SMALL>", &LabelParser::Reduce},
    {L"</SMALL>", &LabelParser::Enlarge},
    {L"<JUSTIFY>", &LabelParser::Justify},
    // Deliberate: the closing tag does not end it, as a text is either justified or not.
    {L"</JUSTIFY>", &LabelParser::Justify},
    {L"<SPACING>", &LabelParser::Open<&LabelParser::m_spacing>},
    {L"</SPACING>", &LabelParser::Close<&LabelParser::m_spacing>},
    {L"<SUB>", &LabelParser::Open<&LabelParser::m_subscript>},
    {L"</SUB>", &LabelParser::Close<&LabelParser::m_subscript>},
    {L"<SUP>", &LabelParser::Open<&LabelParser::m_superscript>},
    {L"</SUP>", &LabelParser::Close<&LabelParser::m_superscript>},
    {L"<FONT", &LabelParser::OpenFont},
    {L"</FONT>", &LabelParser::CloseFont},
    {L"<CODE>", &LabelParser::OpenCode},
    {L"</CODE>", &LabelParser::CloseCode},
    {L"<A HREF=", &LabelParser::OpenLink},
    {L"</A>", &LabelParser::CloseLink},
    {L"<HR", &LabelParser::AddRule},
    {L"<BR>", &LabelParser::AddLineEnd},
};

LabelMarkup LabelParser::Parse() {
  const std::wstring& text = m_markup.text;
  while (m_position < text.size()) {
    if (text[m_position] != L'<' || !ReadTag()) {
      // A "<" that begins no tag is text.
      AddText(std::min(text.find(L'<', m_position + 1), text.size()));
    }
  }
  FinishLinks();
  return std::move(m_markup);
}

// Reads the tag at the current position; false if there is none.
bool LabelParser::ReadTag() {
  const std::wstring_view text = std::wstring_view(m_markup.text).substr(m_position);
  const auto* const tag = std::find_if(std::begin(kTags), std::end(kTags), [text](const Tag& row) {
    return StartsWithNoCase(text, row.head);
  });
  if (tag == std::end(kTags)) {
    return false;
  }
  if (tag->head.ends_with(L'>')) {
    m_position += tag->head.size();
    (this->*tag->act)({});
    return true;
  }
  const size_t end = FindTagEnd(m_position + tag->head.size());
  if (end == std::wstring::npos) {
    return false;
  }
  const size_t rest = tag->head.size();
  const size_t length = end - m_position - rest;
  m_position = end + 1;
  (this->*tag->act)(text.substr(rest, length));
  return true;
}

// The first ">" at or after a place. It is kept, so that many tags without one cost one search.
size_t LabelParser::FindTagEnd(size_t from) {
  if (m_tagEnd < from) {
    m_tagEnd = m_markup.text.find(L'>', from);
  }
  return m_tagEnd;
}

LabelStyle LabelParser::Style() const {
  LabelStyle style;
  style.font.face = m_look.face;
  style.font.size = static_cast<int>(std::clamp<int64_t>(m_look.size, -kMaxNumber, kMaxNumber));
  style.font.bold = m_bold > 0;
  style.font.italic = m_italic > 0;
  style.font.underline = m_underline > 0;
  style.font.strikethrough = m_strikethrough > 0;
  style.font.spacing = m_spacing;
  style.color = m_look.color;
  style.background = m_look.background;
  // Each moves a run by the same distance, so both together leave it where it is.
  if (m_subscript > 0 && m_superscript == 0) {
    style.shift = LabelShift::kDown;
  } else if (m_superscript > 0 && m_subscript == 0) {
    style.shift = LabelShift::kUp;
  }
  style.link = m_link;
  return style;
}

LabelItem& LabelParser::AddItem(LabelItemKind kind) {
  LabelItem& item = m_markup.items.emplace_back();
  item.kind = kind;
  item.style = Style();
  item.justify = m_justify;
  return item;
}

// Adds the text from the current position on. Without a tag between it and the last run, it belongs
// to that run.
void LabelParser::AddText(size_t end) {
  const std::vector<LabelItem>& items = m_markup.items;
  if (!items.empty() && items.back().kind == LabelItemKind::kRun &&
      items.back().end == m_position) {
    m_markup.items.back().end = end;
  } else {
    LabelItem& run = AddItem(LabelItemKind::kRun);
    run.begin = m_position;
    run.end = end;
  }
  m_position = end;
}

void LabelParser::OpenElementOf(Element element, bool sized) {
  m_open.push_back({element, sized, m_look});
  ++m_openCounts[element];
}

// Ends the element opened last, and with it what was opened inside of it and never closed. Nothing
// if none is open.
std::optional<LabelParser::OpenElement> LabelParser::CloseElement(Element element) {
  if (m_openCounts[element] == 0) {
    return std::nullopt;
  }
  for (;;) {
    const OpenElement closed = m_open.back();
    m_open.pop_back();
    --m_openCounts[closed.element];
    m_look = closed.before;
    if (closed.element == element) {
      return closed;
    }
  }
}

void LabelParser::OpenFont(std::wstring_view rest) {
  const FontAttributes attributes = ReadFontAttributes(rest);
  const std::optional<int> size = attributes.size ? LeadingNumber(*attributes.size) : std::nullopt;
  OpenElementOf(kFont, size.has_value());
  m_look.size += size.value_or(0);
  if (attributes.color) {
    m_look.color = CXNamedColors(*attributes.color).Value();
  }
  if (attributes.background) {
    m_look.background = CXNamedColors(*attributes.background).Value();
  }
  if (attributes.face) {
    m_look.face = m_markup.faces.size();
    m_markup.faces.emplace_back(attributes.face->substr(0, kMaxFaceChars));
  }
}

void LabelParser::CloseFont(std::wstring_view /*rest*/) {
  // The line that a size ends is as high as that size, so its style is taken before.
  const LabelStyle style = Style();
  const std::optional<OpenElement> closed = CloseElement(kFont);
  if (closed && closed->sized) {
    AddItem(LabelItemKind::kLineEnd).style = style;
  }
}

void LabelParser::OpenCode(std::wstring_view /*rest*/) {
  OpenElementOf(kCode, false);
  m_look.face = m_markup.faces.size();
  m_markup.faces.emplace_back(kCodeFace);
}

void LabelParser::CloseCode(std::wstring_view /*rest*/) {
  CloseElement(kCode);
}

void LabelParser::OpenLink(std::wstring_view rest) {
  m_link = m_markup.links.size();
  m_markup.links.push_back({std::wstring(rest), std::wstring()});
}

void LabelParser::AddRule(std::wstring_view rest) {
  AddItem(LabelItemKind::kRule).ruleHeight = RuleHeight(rest);
}

// Names each link by its runs.
void LabelParser::FinishLinks() {
  for (const LabelItem& item : m_markup.items) {
    if (item.style.link != kNoLink && item.kind == LabelItemKind::kRun) {
      m_markup.links[item.style.link].name.append(m_markup.text, item.begin, item.end - item.begin);
    }
  }
  for (LabelLink& link : m_markup.links) {
    link.name = TrimWhiteSpace(link.name);
  }
}

}  // namespace

LabelMarkup ParseLabel(std::wstring_view text) {
  return LabelParser(text).Parse();
}

std::wstring LabelPlainText(const LabelMarkup& markup) {
  std::wstring plain;
  for (const LabelItem& item : markup.items) {
    if (item.kind == LabelItemKind::kRun) {
      plain.append(markup.text, item.begin, item.end - item.begin);
    } else {
      plain += L' ';
    }
  }
  return std::wstring(TrimWhiteSpace(plain));
}

}  // namespace postmarker
