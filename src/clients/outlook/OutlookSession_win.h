// How the wizard starts Microsoft Outlook, logs on to it, and passes it from one thread to another.
#pragma once

#include <windows.h>

#include <oaidl.h>
#include <objidl.h>

#include <string>

#include "clients/outlook/OutlookObjects_win.h"
#include "support/ComPtr_win.h"
#include "support/Results.h"

namespace postmarker {

// The name of the default MAPI profile of the current user. E_FAIL, and an empty name, if there is
// none. Any thread.
ResultCode GetOutlookDefaultProfile(std::wstring* name);

// Starts Outlook, or finds the one that runs. The calling thread must be in an apartment, as with
// all that follows.
ResultCode StartOutlook(ComPtr<IDispatch>* application);

// Logs on with the default profile, with an empty name if there is none, and returns the logged-on
// namespace. E_POINTER for a null argument; a failure leaves *nameSpace empty.
ResultCode GetOutlookNamespace(IDispatch* application, ComPtr<IDispatch>* nameSpace);

// The namespace of mail, without a logon. E_POINTER for a null application.
ResultCode OpenOutlookNamespace(IUnknown* application, OutlookNameSpace* nameSpace);

// The name of the application's release, such as "2003"; see OutlookVersionName. E_POINTER for a
// null application.
ResultCode GetOutlookVersionName(IUnknown* application, std::wstring* name);

// Ends the logon.
void LogOffOutlook(IDispatch* nameSpace);

// The process's table by which interfaces pass from one apartment to another; null if there is
// none.
ComPtr<IGlobalInterfaceTable> GetGlobalInterfaceTable();

// The application that was registered under `cookie`, for the calling thread. E_FAIL without a
// table or a cookie.
ResultCode GetOutlookApplication(DWORD cookie, ComPtr<IDispatch>* application);

}  // namespace postmarker
