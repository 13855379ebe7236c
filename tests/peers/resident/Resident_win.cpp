// A stand-in for the suite's resident process: it answers the command 21, which turns one web
// address into another.
// Usage: resident EVENT STATE.json. Sets the event of that name when clients can come. The state,
// of which all but the rendezvous may change while it runs:
//   {"rendezvous": "...",             otherwise the one of the suite
//    "links": {"http://a/": "http://b/"},   answers; an address that is not there gets "default"
//    "default": "",
//    "fault": {...}}                  see PeerServer_win.h
#include <windows.h>

#include "PeerServer_win.h"
#include "support/Text.h"

namespace postmarker::peer {
namespace {

constexpr uint32_t kResolveLink = 21;
constexpr char kSuiteRendezvous[] = "Global\\Kestrelon.KsMain.AccountTools";

void Converse(PeerConversation& client, const nlohmann::json& state) {
  while (client.NextCommand() == kResolveLink) {
    const auto address = client.ReceiveText();
    if (!address) {
      return;
    }
    const nlohmann::json links = state.value("links", nlohmann::json::object());
    const std::string fallback = state.value("default", "");
    client.SendText(WideText(links.value(NarrowUtf8(*address), fallback)));
  }
}

int Run() {
  const std::optional<PeerArguments> arguments = PeerArguments::Read();
  if (!arguments) {
    return 2;
  }
  ServeForever(WideText(arguments->State().value("rendezvous", kSuiteRendezvous)), *arguments,
               Converse);
}

}  // namespace
}  // namespace postmarker::peer

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) {
  return postmarker::peer::Run();
}
