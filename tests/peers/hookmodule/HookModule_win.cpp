// A stand-in for the suite's module inside a mail client: it owns the module's event and answers
// the commands 1 to 5 over the module's tunnel.
// Usage: hookmodule EVENT STATE.json. Sets the event of that name when clients can come. The state,
// of which all but module and tunnel may change while it runs:
//   {"module": "StoreShim.dll",       whose event and tunnel these are
//    "text": "...",                   what comes ahead of the folders
//    "folders": [{"name": "...", "firstId": "...", "secondId": "...", "flag": 1}],
//    "lookup": {"4": {...a folder...}},   what command 2 answers for an index; otherwise all empty
//    "contacts": ["..."], "sent": ["..."],
//    "created": [...]                 folders that command 5 has made, kept in the file
//    "tunnel": false                  to own the event and serve nothing
//    "deaf": true                     to connect and then take no message
//    "fault": {...}}                  see PeerServer_win.h
#include <windows.h>

#include <filesystem>
#include <fstream>

#include "PeerServer_win.h"
#include "support/Text.h"

namespace postmarker::peer {
namespace {

using nlohmann::json;

constexpr wchar_t kMark[] = L"#-#";

std::wstring Doubled(const std::wstring& field) {
  std::wstring text;
  for (const wchar_t unit : field) {
    text.append(unit == L'#' ? 2 : 1, unit);
  }
  return text;
}

std::wstring FolderText(const json& folder) {
  std::wstring text = kMark;
  text += folder.value("flag", 0) != 0 ? L"T" : L"F";
  for (const char* const field : {"firstId", "secondId", "name"}) {
    text += kMark + Doubled(WideText(folder.value(field, json(""))));
  }
  return text + kMark;
}

// A path, from a folder text.
std::wstring PathIn(const std::wstring& folderText) {
  std::wstring field;
  int marks = 0;
  for (size_t i = 0; i < folderText.size(); ++i) {
    if (folderText.compare(i, 3, kMark) == 0) {
      if (++marks == 5) {
        break;
      }
      field.clear();
      i += 2;
    } else {
      field += folderText[i];
      i += folderText.compare(i, 2, L"##") == 0 ? 1 : 0;
    }
  }
  return field;
}

// What command 5 makes of a name and the text of a parent. It stands in the file from then on.
json CreateFolder(const std::wstring& file, json state, const std::wstring& name,
                  const std::wstring& parent) {
  json& created = state["created"];
  json folder = {{"name", NarrowUtf8(PathIn(parent) + L"\\" + name)},
                 {"firstId", "new-" + std::to_string(created.size() + 1)},
                 {"secondId", "made"},
                 {"flag", 1}};
  created.push_back(folder);
  std::ofstream(std::filesystem::path(file)) << state.dump(1);
  return folder;
}

void SendFolders(PeerConversation& client, const json& state) {
  const json folders = state.value("folders", json::array());
  if (!client.SendText(WideText(state.value("text", json("")))) ||
      !client.SendNumber(static_cast<uint32_t>(folders.size()))) {
    return;
  }
  for (const json& folder : folders) {
    if (!client.SendText(FolderText(folder))) {
      return;
    }
  }
}

void SendTexts(PeerConversation& client, const json& texts) {
  if (!client.SendNumber(static_cast<uint32_t>(texts.size()))) {
    return;
  }
  for (const json& text : texts) {
    if (!client.SendText(WideText(text))) {
      return;
    }
  }
}

void SendLookedUp(PeerConversation& client, const json& state) {
  const auto index = client.ReceiveNumber();
  const json lookup = state.value("lookup", json::object());
  const std::string key = std::to_string(index.value_or(0));
  client.SendText(FolderText(lookup.value(key, json::object())));
}

void MakeFolder(PeerConversation& client, const json& state, const std::wstring& file) {
  const auto name = client.ReceiveText();
  const auto parent = client.ReceiveText();
  if (name && parent) {
    client.SendText(FolderText(CreateFolder(file, state, *name, *parent)));
  }
}

void Converse(PeerConversation& client, const json& state, const std::wstring& file) {
  if (state.value("deaf", false)) {
    ::Sleep(INFINITE);
  }
  while (const std::optional<uint32_t> command = client.NextCommand()) {
    switch (*command) {
      case 1:
        SendFolders(client, state);
        break;
      case 2:
        SendLookedUp(client, state);
        break;
      case 3:
        SendTexts(client, state.value("contacts", json::array()));
        break;
      case 4:
        SendTexts(client, state.value("sent", json::array()));
        break;
      case 5:
        MakeFolder(client, state, file);
        break;
      default:
        return;
    }
  }
}

int Run() {
  const std::optional<PeerArguments> arguments = PeerArguments::Read();
  if (!arguments) {
    return 2;
  }
  const json state = arguments->State();
  const std::wstring name = L"Local\\Kestrelon." + WideText(state.at("module"));
  const KernelHandle event(::CreateEventW(nullptr, TRUE, FALSE, (name + L".Event").c_str()));
  if (!state.value("tunnel", true)) {
    arguments->SetReady();
    ::Sleep(INFINITE);
  }
  ServeForever(name + L".Tunnel", *arguments, [&](PeerConversation& client, const json& now) {
    Converse(client, now, arguments->StateFile());
  });
}

}  // namespace
}  // namespace postmarker::peer

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) {
  return postmarker::peer::Run();
}
