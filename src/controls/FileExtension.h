// The names of file kinds in a list of them.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace postmarker {

// The form in which a typed file extension stands in a list: a dot and the name in lower case, from
// "TXT", ".txt" or "*.txt". Nothing for a text that can't be a file's extension: an empty one, one
// with white space inside or with a character that file names can't have, or more than 64 units.
std::optional<std::wstring> FileExtensionForm(std::wstring_view typed);

}  // namespace postmarker
