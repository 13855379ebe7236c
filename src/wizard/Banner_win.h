// The picture of the wizard's first and last page, and of the progress window.
#pragma once

#include <windows.h>

#include "support/Handles_win.h"

namespace postmarker {

// The banner of the resource module in this size; none if there is no such picture or the size is
// empty.
BitmapHandle LoadBanner(SIZE size);

// Shows a picture in a static control, which does not own it. A null control is passed over.
void ShowBanner(HWND control, HBITMAP picture);

}  // namespace postmarker
