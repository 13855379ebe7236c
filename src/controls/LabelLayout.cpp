#include "controls/LabelLayout.h"

#include <algorithm>
#include <span>
#include <string_view>

namespace postmarker {
namespace {

// Device contexts know no coordinates beyond this one. Two of them can be added.
constexpr int kFarthest = 1 << 27;

// The client area is by so much wider than its lines.
constexpr int kSpare = 2;

int Limited(int64_t size) {
  return static_cast<int>(std::clamp<int64_t>(size, 0, kFarthest));
}

// A word, or blanks, of one run.
struct Fragment {
  size_t item = 0;
  size_t begin = 0;
  size_t end = 0;
  int width = 0;
  bool blank = false;
  LabelFontMetrics font;
};

int Length(const Fragment& fragment) {
  return static_cast<int>(std::min<size_t>(fragment.end - fragment.begin, kFarthest));
}

int ShiftOf(const LabelStyle& style, const LabelFontMetrics& font) {
  switch (style.shift) {
    case LabelShift::kUp:
      return -font.height / 2;
    case LabelShift::kDown:
      return font.height / 2;
    case LabelShift::kNone:
      break;
  }
  return 0;
}

class LabelTypesetter {
 public:
  LabelTypesetter(const LabelMarkup& markup, const LabelArea& area, LabelSurface* surface)
      : m_markup(markup),
        m_area(area),
        m_surface(surface),
        m_width(std::max(0, area.width - area.leftMargin - area.rightMargin - kSpare)) {}

  LabelLayout Run();

 private:
  void SelectFont(const LabelFont& font);
  void AddRun(size_t index);
  void AddBlanks(const Fragment& blanks);
  void AddWord(const Fragment& word);
  void EndLine();
  void AddRule(const LabelItem& item);
  void PlaceLine(size_t count, bool justify);
  void PlacePieces(std::span<const Fragment> line, int base, int slack, int blanks);
  [[nodiscard]] LabelPiece PieceOf(std::span<const Fragment> fragments, int left, int base) const;
  void MoveDown(int height);

  const LabelMarkup& m_markup;
  const LabelArea& m_area;
  LabelSurface* m_surface;
  int m_width;  // of a line
  LabelLayout m_layout;

  std::optional<LabelFont> m_font;  // the selected one
  LabelFontMetrics m_metrics;       // of it
  int m_blankWidth = 0;             // in it

  std::vector<Fragment> m_line;  // begins with a word
  size_t m_lastWord = 0;  // where the last word of the line begins, which can be of many runs
  int64_t m_lineWidth = 0;
  bool m_justify = false;
  int m_y = 0;  // the line's top
};

LabelLayout LabelTypesetter::Run() {
  for (size_t i = 0; i < m_markup.items.size() && m_y < kFarthest; ++i) {
    const LabelItem& item = m_markup.items[i];
    m_justify = item.justify;
    SelectFont(item.style.font);
    switch (item.kind) {
      case LabelItemKind::kRun:
        AddRun(i);
        break;
      case LabelItemKind::kLineEnd:
        EndLine();
        break;
      case LabelItemKind::kRule:
        AddRule(item);
        break;
    }
  }
  if (!m_line.empty()) {
    EndLine();
  }
  m_layout.height = m_y;
  return std::move(m_layout);
}

void LabelTypesetter::SelectFont(const LabelFont& font) {
  if (m_font != font) {
    m_metrics = m_surface->SelectFont(m_markup.faces[font.face], font);
    m_metrics.height = Limited(m_metrics.height);
    m_metrics.ascent = std::clamp(m_metrics.ascent, 0, m_metrics.height);
    m_blankWidth = m_surface->TextWidth(L" ");
    m_font = font;
  }
}

void LabelTypesetter::AddRun(size_t index) {
  const LabelItem& item = m_markup.items[index];
  // Nothing beyond the run is searched: many runs without a blank would cost a look at all others.
  const std::wstring_view text = std::wstring_view(m_markup.text).substr(0, item.end);
  for (size_t begin = item.begin; begin < item.end && m_y < kFarthest;) {
    Fragment next{index, begin, item.end, 0, text[begin] == L' ', m_metrics};
    const size_t end = next.blank ? text.find_first_not_of(L' ', begin) : text.find(L' ', begin);
    next.end = std::min(end, item.end);
    if (next.blank) {
      next.width = Limited(int64_t{m_blankWidth} * Length(next));
      AddBlanks(next);
    } else {
      next.width = Limited(m_surface->TextWidth(text.substr(begin, next.end - begin)));
      AddWord(next);
    }
    begin = next.end;
  }
}

// Blanks are kept where they continue a line. They never break it: the next word does.
void LabelTypesetter::AddBlanks(const Fragment& blanks) {
  if (!m_line.empty()) {
    m_line.push_back(blanks);
    m_lineWidth += blanks.width;
  }
}

// A word, or the part of one that is of this run.
void LabelTypesetter::AddWord(const Fragment& word) {
  if (!m_line.empty() && m_line.back().blank) {
    m_lastWord = m_line.size();
  }
  // A word that doesn't fit takes along its parts that stand on the line. A word that the line
  // begins with stays, so each part moves only once.
  if (m_area.wrap && m_lastWord > 0 && m_lineWidth + word.width > m_width) {
    PlaceLine(m_lastWord, m_justify);
    for (const Fragment& part : m_line) {
      m_lineWidth += part.width;
    }
  }
  m_line.push_back(word);
  m_lineWidth += word.width;
}

// Ends the line though it isn't full.
void LabelTypesetter::EndLine() {
  if (m_line.empty()) {
    MoveDown(m_metrics.height + m_area.lineSpacing);
  } else {
    PlaceLine(m_line.size(), false);
  }
}

void LabelTypesetter::AddRule(const LabelItem& item) {
  if (!m_line.empty()) {
    EndLine();
  }
  const int height = Limited(m_surface->Scale(item.ruleHeight));
  const int right = std::max(m_area.leftMargin, m_area.width - m_area.rightMargin);
  m_layout.rules.push_back(
      {{m_area.leftMargin, m_y, right, Limited(m_y + height)}, item.style.color});
  MoveDown(height);
}

// Gives the first fragments of the line their places and begins the next line with the others.
void LabelTypesetter::PlaceLine(size_t count, bool justify) {
  std::span<const Fragment> line(m_line.data(), count);
  while (line.back().blank) {
    line = line.first(line.size() - 1);
  }
  int64_t width = 0;
  int blanks = 0;
  int ascent = 0;
  int descent = 0;
  for (const Fragment& fragment : line) {
    width += fragment.width;
    blanks = Limited(int64_t{blanks} + (fragment.blank ? Length(fragment) : 0));
    const int shift = ShiftOf(m_markup.items[fragment.item].style, fragment.font);
    ascent = std::max(ascent, fragment.font.ascent + std::max(0, -shift));
    descent = std::max(descent, fragment.font.height - fragment.font.ascent + std::max(0, shift));
  }
  const int slack = justify && width < m_width ? static_cast<int>(m_width - width) : 0;
  PlacePieces(line, m_y + ascent, slack, blanks);
  MoveDown(ascent + descent + m_area.lineSpacing);
  m_line.erase(m_line.begin(), m_line.begin() + static_cast<ptrdiff_t>(count));
  m_lineWidth = 0;
  m_lastWord = 0;
}

// Fragments of one run that follow each other are drawn as one piece.
void LabelTypesetter::PlacePieces(std::span<const Fragment> line, int base, int slack, int blanks) {
  int left = m_area.leftMargin;
  int64_t seen = 0;  // of the blanks
  while (!line.empty()) {
    size_t count = 1;
    while (count < line.size() && line[count].item == line[0].item) {
      ++count;
    }
    LabelPiece piece = PieceOf(line.first(count), left, base);
    // Shares are differences of rounded sums, so that they add up to the slack.
    if (blanks > 0) {
      const int64_t given = seen * slack / blanks;
      seen += piece.blanks;
      piece.extra = static_cast<int>(seen * slack / blanks - given);
      piece.place.right = Limited(piece.place.right + piece.extra);
    }
    left = piece.place.right;
    const size_t link = m_markup.items[piece.item].style.link;
    if (link != kNoLink) {
      m_layout.links.push_back({piece.place, link});
    }
    m_layout.pieces.push_back(piece);
    line = line.subspan(count);
  }
}

LabelPiece LabelTypesetter::PieceOf(std::span<const Fragment> fragments, int left, int base) const {
  const Fragment& first = fragments.front();
  LabelPiece piece;
  piece.item = first.item;
  piece.begin = first.begin;
  piece.end = fragments.back().end;
  int64_t right = left;
  for (const Fragment& fragment : fragments) {
    right += fragment.width;
    piece.blanks = Limited(int64_t{piece.blanks} + (fragment.blank ? Length(fragment) : 0));
  }
  const int top = base - first.font.ascent + ShiftOf(m_markup.items[first.item].style, first.font);
  piece.place = {left, top, Limited(right), top + first.font.height};
  return piece;
}

void LabelTypesetter::MoveDown(int height) {
  m_y = Limited(int64_t{m_y} + height);
}

bool Overlap(const LabelRect& a, const LabelRect& b) {
  return a.left < b.right && b.left < a.right && a.top < b.bottom && b.top < a.bottom;
}

}  // namespace

LabelLayout LayOutLabel(const LabelMarkup& markup, const LabelArea& area, LabelSurface* surface) {
  return LabelTypesetter(markup, area, surface).Run();
}

void DrawLabel(const LabelMarkup& markup, const LabelLayout& layout, const LabelRect& clip,
               uint32_t color, LabelSurface* surface) {
  const std::wstring_view text = markup.text;
  for (const LabelPiece& piece : layout.pieces) {
    if (Overlap(piece.place, clip)) {
      const LabelStyle& style = markup.items[piece.item].style;
      surface->SelectFont(markup.faces[style.font.face], style.font);
      surface->SetJustification(piece.extra, piece.extra > 0 ? piece.blanks : 0);
      surface->PutText(piece.place.left, piece.place.top,
                       text.substr(piece.begin, piece.end - piece.begin),
                       style.color.value_or(color), style.background);
    }
  }
  surface->SetJustification(0, 0);
  for (const LabelRule& rule : layout.rules) {
    if (Overlap(rule.place, clip)) {
      surface->FillRectangle(rule.place, rule.color.value_or(color));
    }
  }
}

size_t LabelLinkAt(const LabelLayout& layout, int x, int y) {
  const LabelRect point = {x, y, x + 1, y + 1};
  const auto found =
      std::find_if(layout.links.begin(), layout.links.end(),
                   [&point](const LabelLinkPlace& link) { return Overlap(link.place, point); });
  return found != layout.links.end() ? found->link : kNoLink;
}

std::vector<size_t> VisibleLabelLinks(const LabelLayout& layout) {
  std::vector<size_t> links;
  for (const LabelLinkPlace& place : layout.links) {
    if (links.empty() || links.back() != place.link) {
      links.push_back(place.link);
    }
  }
  return links;
}

}  // namespace postmarker
