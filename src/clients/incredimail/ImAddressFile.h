// The person's address book: a database, or the older client's file AddressBook.imb.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "clients/PacedStop.h"
#include "postmarker/WizardRequest.h"

namespace postmarker {

// The entries of an older address book in their order, in the code page: the non-zero bytes of a
// UTF-16 text, at most 1,023 of each. Empty ones are left out. `stop` ends the reading early.
std::vector<std::string> ParseAddressFile(std::string_view bytes, PacedStop* stop);

// Adds the entries of an identity's address book to *addresses: those of the database in lower
// case, or, without a database, those of the file as they stand. A book that can't be read adds
// nothing. `stop` ends the reading; what was read before it stays.
void CollectContactsOf(const std::wstring& identityDirectory, PacedStop* stop,
                       AddressSet* addresses);

}  // namespace postmarker
