#include "ipc/AccountTools_win.h"

#include <exception>

#include "ipc/ChannelClient_win.h"
#include "ipc/ChannelWaits_win.h"
#include "ipc/WebAddress.h"
#include "support/CommandTrace_win.h"

namespace postmarker {
namespace {

constexpr uint32_t kResolveLink = 21;

bool Converse(const AccountToolsRoute& route, uint32_t command, const std::wstring& argument,
              HANDLE cancel, std::wstring* answer) {
  try {
    std::unique_ptr<ShmChannel> channel;
    const ConnectOptions options = {cancel, route.timeout, route.handshakeTimeout};
    const StopQuery stop = [cancel] { return IsSignalled(cancel); };
    return ChannelConnectRetry(route.rendezvous, &channel, options) &&
           channel->SendNumber(command, route.exchangeTimeout, stop) &&
           channel->SendText(argument.c_str(), route.exchangeTimeout, stop) &&
           channel->ReceiveText(answer, route.exchangeTimeout, stop);
  } catch (const std::exception&) {
    return false;  // no memory for the answer: a failed step like any other
  }
}

}  // namespace

uint32_t RunTextCommand(const AccountToolsRoute& route, uint32_t command,
                        const std::wstring& argument, std::wstring& answer, HANDLE cancel) {
  FILETIME start = {};
  ::GetSystemTimeAsFileTime(&start);
  std::wstring text;
  const bool arrived = Converse(route, command, argument, cancel, &text);
  TraceCommand(command, start);
  if (!arrived || text.empty()) {
    return 0;
  }
  answer = std::move(text);
  return 1;
}

uint32_t ResolveLink(const std::wstring& address, std::wstring& target) {
  return RunTextCommand(kResidentProcess, kResolveLink, address, target);
}

std::wstring ResolveWebLink(const AccountToolsRoute& route, const std::wstring& address,
                            HANDLE cancel) {
  std::wstring target;
  const bool found = RunTextCommand(route, kResolveLink, address, target, cancel) != 0;
  return found && IsWebAddress(target) ? target : address;
}

}  // namespace postmarker
