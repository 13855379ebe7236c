// Which of the mail clients are there, and which of them this version can serve. Every function
// looks at the machine each time; a failure reads as absence. Any thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "clients/MachineView.h"

namespace postmarker {

// By display name, case ignored, through the table of clients. A name without a row is not
// installed, but supported and ready.
//
// Installed: the client is on the machine. Windows Mail and Outlook Express always count as
// installed: whether one of them is there is a matter of support.
bool IsClientInstalled(std::wstring_view displayName, const MachineView& machine = ThisMachine());

// Supported: the client can exist on this platform, and what the suite needs for it is there.
// Clients that are not supported are not offered at all.
bool IsClientSupported(std::wstring_view displayName, const MachineView& machine = ThisMachine());

// Ready: what has to be within the client is there, such as an extension.
bool IsClientReady(std::wstring_view displayName, const MachineView& machine = ThisMachine());

// Has the user a profile of Outlook with a store in it.
bool IsOutlookConfigured(const MachineView& machine = ThisMachine());

// The folder in which Windows Mail is installed, variables put in; nothing if the system knows
// none.
std::optional<std::wstring> GetMailInstallRoot(const MachineView& machine = ThisMachine());

// Has the user an identity of Outlook Express, or used Windows Mail.
bool HasMailIdentity(const MachineView& machine = ThisMachine());

// The generation of the store that Outlook Express and Windows Mail share, as a digit.
struct MailStoreVersion {
  wchar_t digit = L'6';  // below '7': Outlook Express
  bool found = false;    // false: nothing told it, and the digit is a guess
};
MailStoreVersion GetMailStoreVersion(const MachineView& machine = ThisMachine());

// Can Windows Mail, or Outlook Express, be served on this platform.
bool IsWindowsMailSupported(const MachineView& machine = ThisMachine());
bool IsOutlookExpressSupported(const MachineView& machine = ThisMachine());

// Has the suite its module for the inside of Windows Live Mail, and does that load.
bool IsWindowsLiveMailSupported(const MachineView& machine = ThisMachine());

}  // namespace postmarker
