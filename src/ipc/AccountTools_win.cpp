#include "ipc/AccountTools_win.h"

#include <exception>

#include "ipc/ChannelClient_win.h"
#include "support/CommandTrace_win.h"

namespace postmarker {
namespace {

constexpr uint32_t kResolveLink = 21;

bool Converse(const AccountToolsRoute& route, uint32_t command, const std::wstring& argument,
              std::wstring* answer) {
  try {
    std::unique_ptr<ShmChannel> channel;
    const ConnectOptions options = {nullptr, route.timeout, route.handshakeTimeout};
    return ChannelConnectRetry(route.rendezvous, &channel, options) &&
           channel->SendNumber(command, route.exchangeTimeout) &&
           channel->SendText(argument.c_str(), route.exchangeTimeout) &&
           channel->ReceiveText(answer, route.exchangeTimeout);
  } catch (const std::exception&) {
    return false;  // no memory for the answer: a failed step like any other
  }
}

}  // namespace

uint32_t RunTextCommand(const AccountToolsRoute& route, uint32_t command,
                        const std::wstring& argument, std::wstring& answer) {
  FILETIME start = {};
  ::GetSystemTimeAsFileTime(&start);
  std::wstring text;
  const bool arrived = Converse(route, command, argument, &text);
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

}  // namespace postmarker
