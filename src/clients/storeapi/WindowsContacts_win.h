// The address book of Windows Mail.
#pragma once

#include "postmarker/WizardRequest.h"
#include "support/Results.h"
#include "support/StopQuery.h"

namespace postmarker::storeapi {

// Adds the first address of each contact. `stop` is asked before each. Returns the code with which
// the contacts could not be opened, otherwise 0: a contact without an address adds nothing. Called
// in an apartment.
ResultCode ReadWindowsContacts(const StopQuery& stop, AddressSet* addresses);

}  // namespace postmarker::storeapi
