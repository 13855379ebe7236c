// Wide and narrow text, and comparison without regard to case. The same results on every platform,
// but for the code page of the conversions.
#pragma once

#include <string>
#include <string_view>

#include "support/Bytes.h"

namespace postmarker {

// Bytes to UTF-16 units, in the thread's ANSI code page on Windows and in Windows-1252 elsewhere.
// Bytes that the code page does not define become what the platform puts for them. An embedded NUL
// stays.
std::wstring Widen(std::string_view narrow);

// UTF-16 units to bytes, in the same code page. What it can't hold becomes "?".
std::string Narrow(std::wstring_view wide);

// UTF-8 to UTF-16 units and back. Ill-formed parts become U+FFFD.
std::wstring WidenUtf8(std::string_view utf8);
std::string NarrowUtf8(std::wstring_view wide);

// Is the whole text well-formed UTF-8. ASCII is, and so is an empty text.
bool IsUtf8(std::string_view text);

// The lower-case form of one UTF-16 unit: every letter of the Windows code pages, and further
// Latin, Greek and Cyrillic ones; all others are unchanged.
wchar_t ToLower(wchar_t unit);

std::wstring ToLower(std::wstring_view text);

// Ordinal comparison of the lower-case forms: negative, 0 or positive.
int CompareNoCase(std::wstring_view a, std::wstring_view b);

// The one for bytes is in Bytes.h.
bool EqualNoCase(std::wstring_view a, std::wstring_view b);

// The text without ASCII white space at its ends.
std::wstring_view TrimWhiteSpace(std::wstring_view text);

}  // namespace postmarker
