// Labels on a device context.
#pragma once

#include <windows.h>

#include <vector>

#include "controls/LabelSurface.h"
#include "support/DeviceContext_win.h"
#include "support/Handles_win.h"

namespace postmarker {

// Measures with and draws on a device context, which gets its state back at the end. Belongs to the
// thread of the device context.
class GdiLabelSurface final : public LabelSurface {
 public:
  // `font` is the control's own, null for the system's.
  GdiLabelSurface(HDC dc, HFONT font);

  LabelFontMetrics SelectFont(const std::wstring& face, const LabelFont& font) override;
  int TextWidth(std::wstring_view text) override;
  int Scale(int size) override;
  void SetJustification(int extra, int blanks) override;
  void PutText(int left, int top, std::wstring_view text, uint32_t color,
               std::optional<uint32_t> background) override;
  void FillRectangle(const LabelRect& rect, uint32_t color) override;

 private:
  struct MadeFont {
    LOGFONTW description;
    FontHandle font;
  };

  HFONT FontLike(const LOGFONTW& description);

  HDC m_dc;
  LOGFONTW m_base = {};           // its height is that of the characters: negative
  std::vector<MadeFont> m_fonts;  // before the saved state, which comes back first
  SavedDcState m_saved;
};

}  // namespace postmarker
