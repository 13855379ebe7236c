#include "ui/DialogTemplate.h"

#include "support/DeviceContext_win.h"

namespace postmarker {
namespace {

// The layout of DLGTEMPLATEEX, in 16-bit words: the count of controls follows version,
// signature, help id and the two styles.
constexpr size_t kControlCountIndex = 8;

constexpr int kFontPoints = 8;
constexpr wchar_t kFontName[] = L"MS Shell Dlg";

// Rounded up, so that what fits in units also fits in pixels.
LONG UnitsFromPixels(LONG pixels, LONG base, LONG unitsInBase) {
  return (pixels * unitsInBase + base - 1) / base;
}

}  // namespace

DialogTemplate::DialogTemplate(const std::wstring& caption, DWORD style, DWORD extendedStyle,
                               SIZE size) {
  Word(1);
  Word(0xFFFF);
  Double(0);
  Double(extendedStyle);
  Double(style | DS_SHELLFONT);
  Word(0);
  Word(0);
  Word(0);
  Word(static_cast<uint16_t>(size.cx));
  Word(static_cast<uint16_t>(size.cy));
  Word(0);  // no menu
  Word(0);  // the dialog class
  Text(caption);
  Word(kFontPoints);
  Word(FW_NORMAL);
  Word(DEFAULT_CHARSET << 8);
  Text(kFontName);
}

void DialogTemplate::AddControl(ControlClass controlClass, uint16_t id, const std::wstring& text,
                                DWORD style, const RECT& place) {
  AlignToDouble();
  Double(0);
  Double(0);
  Double(style | WS_CHILD | WS_VISIBLE);
  Word(static_cast<uint16_t>(place.left));
  Word(static_cast<uint16_t>(place.top));
  Word(static_cast<uint16_t>(place.right - place.left));
  Word(static_cast<uint16_t>(place.bottom - place.top));
  Double(id);
  Word(0xFFFF);
  Word(static_cast<uint16_t>(controlClass));
  Text(text);
  Word(0);  // no creation data
  ++m_words[kControlCountIndex];
}

void DialogTemplate::Double(DWORD value) {
  Word(LOWORD(value));
  Word(HIWORD(value));
}

void DialogTemplate::Text(const std::wstring& text) {
  m_words.insert(m_words.end(), text.begin(), text.end());
  Word(0);
}

void DialogTemplate::AlignToDouble() {
  if (m_words.size() % 2 != 0) {
    Word(0);
  }
}

DialogUnits::DialogUnits() {
  const WindowDc screen(nullptr);
  const HDC dc = screen.Get();
  LOGFONTW description = {};
  description.lfHeight = -::MulDiv(kFontPoints, ::GetDeviceCaps(dc, LOGPIXELSY), 72);
  description.lfWeight = FW_NORMAL;
  description.lfCharSet = DEFAULT_CHARSET;
  ::lstrcpynW(description.lfFaceName, kFontName, LF_FACESIZE);
  m_font.Reset(::CreateFontIndirectW(&description));
  const ObjectSelection font(dc, m_font.Get());
  // The system takes the average width of these letters for a quarter of it.
  constexpr wchar_t kLetters[] = L"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
  SIZE letters = {};
  ::GetTextExtentPoint32W(dc, kLetters, 52, &letters);
  m_base = {(letters.cx / 26 + 1) / 2, letters.cy};
}

SIZE DialogUnits::TextSize(const std::wstring& text, int widest, bool prefix) const {
  const WindowDc screen(nullptr);
  const ObjectSelection font(screen.Get(), m_font.Get());
  RECT rect = {0, 0, ::MulDiv(widest, m_base.cx, 4), 0};
  ::DrawTextW(screen.Get(), text.c_str(), static_cast<int>(text.size()), &rect,
              DT_CALCRECT | DT_WORDBREAK | (prefix ? 0U : DT_NOPREFIX));
  return {UnitsFromPixels(rect.right, m_base.cx, 4), UnitsFromPixels(rect.bottom, m_base.cy, 8)};
}

}  // namespace postmarker
