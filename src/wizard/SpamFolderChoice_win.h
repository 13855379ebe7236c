// Which folder is the spam folder: what was saved, and what the user chooses.
#pragma once

#include "postmarker/MailFolderRef.h"

namespace postmarker {

class WizardServices;

// The folder saved for the request's client, with the store id that the client gives today; the
// client's default folder if none was saved. It becomes the request's spam folder.
MailFolderRef ReadConfiguredSpamFolder(WizardServices* wizard);

// Makes `chosen` the request's spam folder. For clients with local folder ids the default folder
// gets the id "0".
void TakeSpamFolder(WizardServices* wizard, const MailFolderRef& chosen);

}  // namespace postmarker
