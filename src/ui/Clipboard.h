// Text on the clipboard.
#pragma once

#include <windows.h>

#include <string>

namespace postmarker {

// Puts a text there in the name of a window. False if somebody else holds the clipboard.
bool SetClipboardText(HWND owner, const std::wstring& text);

// The text that is there. Empty for none, or if somebody else holds the clipboard.
std::wstring ClipboardText(HWND owner);

}  // namespace postmarker
