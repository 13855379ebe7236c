// Where the module's texts and dialogs come from.
#pragma once

#include <string>

namespace postmarker {

// The language of the resource module, such as "en": the suite's setting if it is a text of at most
// two characters; else the first two-letter folder below the host's \res; else "en".
std::wstring FindResourceLanguage();

// The suite's setting alone, and the folder scan alone; empty for none. `executable` is a file's
// full path: the folders looked at lie in "res" beside it, in the order of the file system.
std::wstring ReadLanguageSetting();
std::wstring ScanForLanguage(const std::wstring& executable);

// The path cut at its last backslash `levels` times. Empty if it has fewer.
std::wstring FolderAbove(const std::wstring& path, int levels);

}  // namespace postmarker
