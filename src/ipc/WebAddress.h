// Which texts of other processes may become the target of a link.
#pragma once

#include <string_view>

namespace postmarker {

// Is the text an address of the Web: "http://" or "https://", case ignored, and something after it,
// without control characters, blanks, angle brackets and double quotes. None of these is ever part
// of an address, and they could end the markup or the command line that the address is put into.
bool IsWebAddress(std::wstring_view text);

}  // namespace postmarker
