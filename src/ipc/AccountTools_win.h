// The commands that the suite's resident process answers.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>

namespace postmarker {

// Where a command goes, and the time limits of one call in milliseconds.
struct AccountToolsRoute {
  const wchar_t* rendezvous;
  uint32_t timeout;           // for the connection
  uint32_t handshakeTimeout;  // for each step of it
  uint32_t exchangeTimeout;   // for each message
};

// The resident process, as all callers reach it.
inline constexpr AccountToolsRoute kResidentProcess = {L"Global\\Kestrelon.KsMain.AccountTools",
                                                       10'000, 4'000, 10'000};

// Asks the resident process which web address to open instead of `address`. 1 if a text that is not
// empty came back in `target`; otherwise 0, and `target` is as it was. Every call writes a line to
// the trace of commands. Want of memory is a failure like others. Blocks for 10 seconds if there is
// no resident process, and for about a minute at most if it hangs halfway. Calls share nothing; any
// thread.
uint32_t ResolveLink(const std::wstring& address, std::wstring& target);

// The address that the suite wants the user to open instead of `address`: what ResolveLink finds if
// that is a web address (WebAddress.h), otherwise `address` itself. Blocks as long; `cancel`, an
// event that may be null, ends every wait, and then `address` is returned.
std::wstring ResolveWebLink(const AccountToolsRoute& route, const std::wstring& address,
                            HANDLE cancel);

// The same conversation by another route, with any command that takes and gives one text.
uint32_t RunTextCommand(const AccountToolsRoute& route, uint32_t command,
                        const std::wstring& argument, std::wstring& answer,
                        HANDLE cancel = nullptr);

}  // namespace postmarker
