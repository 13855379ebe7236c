// The list in a profile that tells which extensions it has.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace postmarker::install {

// The bytes of extensions.ini with a line more that contains `path`, in the file's own encoding and
// line ends; as they are if a line contains it already. Nothing if no reader would find the path
// there: it is too long, or the encoding can't express it.
std::optional<std::string> WithExtension(std::string_view extensionsIni, std::wstring_view path);

}  // namespace postmarker::install
