// The font of headings, on the wizard's pages and in the progress window.
#pragma once

#include <windows.h>

#include "support/Handles_win.h"

namespace postmarker {

// Gives a heading the font of its dialog, half as large again. The font is returned and must live
// as long as the control. None, and the control as it was, if the heading is null or the dialog has
// no font.
FontHandle SetHeadingFont(HWND dialog, HWND heading);

}  // namespace postmarker
