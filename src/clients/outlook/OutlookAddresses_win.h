// Addresses in Microsoft Outlook: those the person has written to, and the contacts.
#pragma once

#include <windows.h>

#include "clients/outlook/OutlookFolderList_win.h"
#include "postmarker/ProgressCallbacks.h"
#include "postmarker/WizardRequest.h"
#include "support/Results.h"
#include "support/StopQuery.h"

namespace postmarker {

// See OutlookFolderList_win.h for `application` and for who may answer. Each item costs a few calls
// to another program, so `stop` is asked at each, besides the callbacks' cancel; a stop ends the
// operation with 0, and what was found stays.

// Adds the recipients of all mail in the stores' folders of sent items, as NormaliseOutlookAddress
// has them. `callbacks` may be null; it is told how many items each folder has, and each item. An
// item or store that can't be read is skipped. E_POINTER without an application.
ResultCode CollectOutlookSentAddresses(IUnknown* application, const ProgressCallbacks* callbacks,
                                       UseHook useHook, const StopQuery& stop,
                                       AddressSet* addresses);

// Adds the first e-mail address of each contact in the default folder of contacts. E_POINTER
// without an application; a folder that can't be opened is a failure, a contact is skipped.
ResultCode CollectOutlookContacts(IUnknown* application, UseHook useHook, const StopQuery& stop,
                                  AddressSet* addresses);

// Collect, with the add-in, and put what was found on the person's whitelist, also if the
// collection failed in between. Its result.
ResultCode HarvestOutlookSentAddresses(IUnknown* application);
ResultCode HarvestOutlookContacts(IUnknown* application);

}  // namespace postmarker
