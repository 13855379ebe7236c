// The text in which a folder crosses to the modules inside the clients and back.
#pragma once

#include <string>
#include <string_view>

#include "postmarker/MailFolderRef.h"

namespace postmarker {

// "#-#", then flag ("T" or "F"), first id, second id and path, each followed by "#-#". In ids and
// path each "#" is doubled, so the mark never stands inside a field. The ids are widened by the
// thread's code page. Any thread.
std::wstring EncodeFolderText(const MailFolderRef& folder);

// The folder of such a text. Fields that are missing or have no mark after them stay empty; the
// flag is set only by "T" or "t". Any text gives a folder, at a cost that grows with its length.
MailFolderRef DecodeFolderText(std::wstring_view text);

}  // namespace postmarker
