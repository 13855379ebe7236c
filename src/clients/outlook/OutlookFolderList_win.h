// Folders of Microsoft Outlook: the list, the default folders, and a new one.
#pragma once

#include <windows.h>

#include <string>

#include "clients/outlook/OutlookObjects_win.h"
#include "postmarker/MailFolderRef.h"
#include "support/Results.h"
#include "support/StopQuery.h"

namespace postmarker {

// The suite's add-in inside Outlook, which each operation asks first.
inline constexpr wchar_t kOutlookAddIn[] = L"MailSieveAddin.dll";

// May the add-in be asked.
enum class UseHook { kNo, kYes };

// `application` is Outlook's application object as the calling thread may call it, or null. Each
// operation reaches it and MAPI by itself and drops both before it returns. Nothing throws but for
// want of memory.

// Appends the folders to *folders: of each store its root, and below that all folders for mail
// whose parents are. `firstId` and `secondId` are hexadecimal ids of the folder and of the store;
// `flag` is set in the default store. An add-in that answers has the last word, even with an empty
// list; *text is what it sends ahead of its folders. E_FAIL without an application. Ends early, and
// with 0, when `stop` says so.
ResultCode ListOutlookFolders(IUnknown* application, UseHook useHook, const StopQuery& stop,
                              std::wstring* text, MailFolderList* folders);

// Appends the default folder of a type (kOlFolder...) to *folders, with its flag set. E_POINTER
// without an application.
ResultCode GetOutlookDefaultFolderRef(IUnknown* application, LONG type, UseHook useHook,
                                      const StopQuery& stop, MailFolderList* folders);

// Creates a folder for mail below `parent`, and fills *created. Starts Outlook if there is no
// application. On failure *created is as it was.
ResultCode CreateOutlookFolder(IUnknown* application, const MailFolderRef& parent,
                               const std::wstring& name, UseHook useHook, const StopQuery& stop,
                               MailFolderRef* created);

// The path of a folder, such as "\\Personal Folders\Inbox\Spam", by the names of its parents.
HRESULT BuildOutlookFolderPath(const OutlookFolder& folder, std::wstring* path);

}  // namespace postmarker
