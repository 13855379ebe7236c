#include "controls/LabelSurface_win.h"

#include <algorithm>
#include <cstring>
#include <numeric>

namespace postmarker {
namespace {

// The platform takes no longer texts at a time.
constexpr size_t kMaxTextChars = 8192;

// Fonts are made again beyond so many: a process has few thousands of them.
constexpr size_t kMaxFonts = 32;

// Heights of characters, in pixels.
constexpr LONG kMinHeightPx = 4;
constexpr LONG kMaxHeightPx = 2000;

// More space between letters than this helps nobody.
constexpr int kMaxSpacing = 100;

// The part of a text that the platform takes at a time. Pairs of surrogates are kept together.
std::wstring_view NextPart(std::wstring_view text) {
  std::wstring_view part = text.substr(0, kMaxTextChars);
  if (part.size() < text.size() && (part.back() & 0xFC00) == 0xD800) {
    part.remove_suffix(1);
  }
  return part;
}

SIZE Extent(HDC dc, std::wstring_view text) {
  SIZE size = {};
  ::GetTextExtentPoint32W(dc, text.data(), static_cast<int>(text.size()), &size);
  return size;
}

}  // namespace

GdiLabelSurface::GdiLabelSurface(HDC dc, HFONT font) : m_dc(dc), m_saved(dc) {
  const HGDIOBJ own = font != nullptr ? font : ::GetStockObject(SYSTEM_FONT);
  ::GetObjectW(own, sizeof(m_base), &m_base);
  if (m_base.lfHeight >= 0) {
    TEXTMETRICW metrics = {};
    const ObjectSelection selection(dc, own);
    ::GetTextMetricsW(dc, &metrics);
    m_base.lfHeight = -(metrics.tmHeight - metrics.tmInternalLeading);
  }
  ::SetTextAlign(dc, TA_LEFT | TA_TOP | TA_NOUPDATECP);
}

HFONT GdiLabelSurface::FontLike(const LOGFONTW& description) {
  const auto known =
      std::find_if(m_fonts.begin(), m_fonts.end(), [&description](const MadeFont& made) {
        return std::memcmp(&made.description, &description, sizeof(description)) == 0;
      });
  if (known != m_fonts.end()) {
    return known->font.Get();
  }
  if (m_fonts.size() == kMaxFonts) {
    ::SelectObject(m_dc, ::GetStockObject(SYSTEM_FONT));  // owner: m_saved
    m_fonts.clear();
  }
  m_fonts.push_back({description, FontHandle(::CreateFontIndirectW(&description))});
  return m_fonts.back().font.Get();
}

LabelFontMetrics GdiLabelSurface::SelectFont(const std::wstring& face, const LabelFont& font) {
  LOGFONTW description = m_base;
  const LONG height = Scale(font.size) - m_base.lfHeight;
  description.lfHeight = -std::clamp(height, kMinHeightPx, kMaxHeightPx);
  description.lfWidth = 0;
  description.lfWeight = font.bold ? FW_BOLD : FW_NORMAL;
  description.lfItalic = font.italic ? TRUE : FALSE;
  description.lfUnderline = font.underline ? TRUE : FALSE;
  description.lfStrikeOut = font.strikethrough ? TRUE : FALSE;
  if (!face.empty()) {
    // All of it, as descriptions are compared as bytes.
    std::fill(std::begin(description.lfFaceName), std::end(description.lfFaceName), L'\0');
    face.copy(description.lfFaceName, LF_FACESIZE - 1);
    // Where the face is missing, one of its kind takes its place.
    description.lfPitchAndFamily = face == kCodeFace ? FIXED_PITCH | FF_MODERN : DEFAULT_PITCH;
  }
  ::SelectObject(m_dc, FontLike(description));  // owner: m_saved
  ::SetTextCharacterExtra(m_dc, Scale(std::min(font.spacing, kMaxSpacing)));
  TEXTMETRICW metrics = {};
  ::GetTextMetricsW(m_dc, &metrics);
  return {static_cast<int>(Extent(m_dc, L"abcdefgABCDEFG").cy), static_cast<int>(metrics.tmAscent)};
}

int GdiLabelSurface::TextWidth(std::wstring_view text) {
  int64_t width = 0;
  while (!text.empty()) {
    const std::wstring_view part = NextPart(text);
    width += Extent(m_dc, part).cx;
    text.remove_prefix(part.size());
  }
  return static_cast<int>(std::min<int64_t>(width, std::numeric_limits<int>::max()));
}

int GdiLabelSurface::Scale(int size) {
  return ::MulDiv(size, ::GetDeviceCaps(m_dc, LOGPIXELSY), 96);
}

void GdiLabelSurface::SetJustification(int extra, int blanks) {
  ::SetTextJustification(m_dc, extra, blanks);
}

void GdiLabelSurface::PutText(int left, int top, std::wstring_view text, uint32_t color,
                              std::optional<uint32_t> background) {
  ::SetTextColor(m_dc, color);
  ::SetBkMode(m_dc, background ? OPAQUE : TRANSPARENT);
  if (background) {
    ::SetBkColor(m_dc, *background);
  }
  const int spacing = ::GetTextCharacterExtra(m_dc);
  while (!text.empty()) {
    const std::wstring_view part = NextPart(text);
    const auto length = static_cast<int>(part.size());
    // Each letter stands where it was measured: by itself a device can draw them closer together.
    std::vector<int> advances(part.size());
    SIZE size = {};
    ::GetTextExtentExPointW(m_dc, part.data(), length, 0, nullptr, advances.data(), &size);
    std::adjacent_difference(advances.begin(), advances.end(), advances.begin());
    // The advances hold the spacing already.
    ::SetTextCharacterExtra(m_dc, 0);
    ::ExtTextOutW(m_dc, left, top, 0, nullptr, part.data(), static_cast<UINT>(length),
                  advances.data());
    ::SetTextCharacterExtra(m_dc, spacing);
    text.remove_prefix(part.size());
    left += static_cast<int>(size.cx);
  }
}

void GdiLabelSurface::FillRectangle(const LabelRect& rect, uint32_t color) {
  const RECT area = {rect.left, rect.top, rect.right, rect.bottom};
  const BrushHandle brush(::CreateSolidBrush(color));
  ::FillRect(m_dc, &area, brush.Get());
}

}  // namespace postmarker
