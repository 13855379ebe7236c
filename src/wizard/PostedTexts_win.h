// Texts that travel to a window as the first parameter of a posted message, as BSTR values that the
// window frees.
#pragma once

#include <windows.h>

#include <string>

#include "ui/MessageTable.h"

namespace postmarker {

// The text of such a message, which is freed. Empty for a null one.
std::wstring ReadPostedText(const MessageArgs& args);

// Frees the texts of all messages of this kind that wait for the window: nobody would when it is
// destroyed. REQUIRES: the window's own thread, and nobody who posts any more.
void DropPostedTexts(HWND window, UINT message);

}  // namespace postmarker
