#include "wizard/HeadingFont_win.h"

namespace postmarker {
namespace {

constexpr int kNumerator = 3;
constexpr int kDenominator = 2;

}  // namespace

FontHandle SetHeadingFont(HWND dialog, HWND heading) {
  LOGFONTW description = {};
  const auto font = reinterpret_cast<HFONT>(::SendMessageW(dialog, WM_GETFONT, 0, 0));
  if (heading == nullptr || ::GetObjectW(font, sizeof(description), &description) == 0) {
    return {};
  }
  description.lfHeight = ::MulDiv(description.lfHeight, kNumerator, kDenominator);
  description.lfWidth = 0;
  FontHandle larger(::CreateFontIndirectW(&description));
  ::SendMessageW(heading, WM_SETFONT, reinterpret_cast<WPARAM>(larger.Get()), TRUE);
  return larger;
}

}  // namespace postmarker
