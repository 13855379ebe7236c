// What Outlook's texts mean: addresses of recipients, and the version of the program.
#pragma once

#include <string_view>

#include "postmarker/WizardRequest.h"
#include "support/Results.h"

namespace postmarker {

// Adds the address of a recipient or contact to *addresses, in lower case and without white space
// at its ends, if it is an address of Internet mail. Of an Exchange address ("/o=...") only what
// follows the second "/cn=" counts. A text without "@" adds nothing and is no failure; E_FAIL for
// an empty text. Any thread.
ResultCode NormaliseOutlookAddress(std::wstring_view text, AddressSet* addresses);

// The name of the release that a version text such as "11.0.0.8002" belongs to: "97", "98", "2000",
// "2002", "2003", or "2007" for 12.0 and above. A text that begins with no number counts as 0.
std::wstring_view OutlookVersionName(std::wstring_view version);

}  // namespace postmarker
