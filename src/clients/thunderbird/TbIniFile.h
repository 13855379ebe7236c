// The two files that tell where Thunderbird keeps its data and which extensions it has.
// A file that is valid UTF-8 as a whole is read as such, another in the code page.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace postmarker::thunderbird {

// The path of the default profile from the bytes of profiles.ini; nothing if they name none. The
// lines that count are three in a row: the name "default" in any case, IsRelative, Path. A relative
// path is one below the folder "Thunderbird" of `applicationData`, and gets backslashes; another is
// taken as it stands.
std::optional<std::wstring> FindDefaultProfile(std::string_view profilesIni,
                                               const std::wstring& applicationData);

// Does a line of the bytes of extensions.ini contain `text`, in the same case. An empty text is in
// none.
bool HasLineWith(std::string_view extensionsIni, std::wstring_view text);

}  // namespace postmarker::thunderbird
