// The object model of the stand-in's Outlook.
#pragma once

#include <windows.h>

#include <oaidl.h>

namespace postmarker::peer {

// "Outlook.Application".
inline constexpr CLSID kOutlookClass = {0x0006F03A, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

// An application object over the mailbox; the caller releases it.
IDispatch* MakeApplication();

// The factory of such objects; the caller releases it.
IUnknown* MakeFactory();

}  // namespace postmarker::peer
