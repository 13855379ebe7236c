// What Thunderbird's extension and the pipe's clients say: the bridge tells clients only messages
// that the pipe can carry, asks the extension only what fits into a frame, and always ends a reply.
#include <algorithm>
#include <optional>
#include <string>

#include "Bridge.h"
#include "FuzzTarget.h"
#include "NativeFrames.h"
#include "PipeTexts.h"
#include "support/Text.h"

namespace {

using namespace postmarker;

constexpr size_t kClient = 0;

bridge::BridgeEdges CheckedEdges() {
  return {[](const std::string& message) { fuzz::Require(!bridge::MakeFrame(message).empty()); },
          [](const std::string& /*line*/) {},
          [] { return std::string("0123456789abcdef0123456789abcdef"); }};
}

// The last of the texts that are there for the client.
std::wstring TakeTexts(bridge::Bridge* bridge) {
  std::wstring last;
  while (const std::wstring* text = bridge->NextText(kClient)) {
    last = *text;
    fuzz::Require(!last.empty() && last.size() <= bridge::kMaxPipeText);
    fuzz::Require(last.find(L'\0') == std::wstring::npos);
    bridge->DropText(kClient);
  }
  return last;
}

void Converse(std::string_view command, std::string_view input) {
  bridge::Bridge bridge(CheckedEdges(), 2);
  bridge.TakeText(kClient, WidenUtf8(command));
  TakeTexts(&bridge);
  if (bridge.WantsText(kClient)) {
    bridge.TakeText(kClient, WidenUtf8(input));
  }
  bridge.TakeMessage(input);
  std::wstring last = TakeTexts(&bridge);
  if (!bridge.WantsText(kClient)) {
    bridge.TakeMessage(R"({"id": 1, "error": "end"})");
    last = TakeTexts(&bridge);
  }
  fuzz::Require(bridge.WantsText(kClient));
  const bool hasReply = command != "ExitThunderbird";
  fuzz::Require(last == (hasReply ? bridge::EndText(command) : std::wstring()));
  bridge.Reset(kClient);
}

void ReadFrames(std::string_view input) {
  bridge::FrameReader whole;
  bridge::FrameReader cut;
  const size_t half = input.size() / 2;
  whole.Append(input);
  cut.Append(input.substr(0, half));
  std::optional<std::string> message = cut.Next();
  cut.Append(input.substr(half));
  for (std::optional<std::string> expected = whole.Next(); expected; expected = whole.Next()) {
    if (!message) {
      message = cut.Next();
    }
    fuzz::Require(message == expected && !expected->empty());
    message = cut.Next();
  }
  // A wrong length shows when it comes to it.
  fuzz::Require(!message && whole.Append({}) == cut.Append({}));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view input = fuzz::Bytes(data, size);
  for (const std::string_view command :
       {"GiveAllFolders", "GiveContacts", "SentItemsEntries", "GiveAddressesFromSentItems",
        "AddNewFolder", "SetMoveMails", "ExitThunderbird"}) {
    Converse(command, input);
  }
  ReadFrames(input);
  return 0;
}
