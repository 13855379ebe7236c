// The client's special folders in the person's language.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "support/Results.h"

namespace postmarker::incredimail {

// Appends the names of the client's first special folders, in the order of their places in the
// root, from the message table in the client's program folder. `language` is a primary language
// number. On failure *names holds what was read before it.
ResultCode ReadLocalisedFolderNames(uint32_t language, std::vector<std::wstring>* names);

}  // namespace postmarker::incredimail
