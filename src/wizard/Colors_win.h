// The colors that the sheet, its pages and its dialogs share: black on white, headings red.
#pragma once

#include <windows.h>

#include "resource.h"
#include "ui/MessageTable.h"

namespace postmarker {

// The white brush of all backgrounds. Never to be deleted.
HBRUSH BackgroundBrush();

// Answers a WM_CTLCOLORxxx message: sets the device's colors and returns the brush. `headingId` is
// the control whose text is red.
LRESULT ColorForControl(const MessageArgs& args, int headingId = IDC_HEADING);

}  // namespace postmarker
