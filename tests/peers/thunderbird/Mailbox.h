// What the stand-in's Thunderbird holds, and how it is to misbehave, from a JSON file:
//
// {"pathPrefix": "\\\\",
//  "folders": [{"name": "Local Folders", "id": "1", "store": "s", "flag": true, "children":
// [...]}],
//  "contacts": ["address", ...],
//  "sent": ["list of recipients of one mail", ...],
//  "moveMails": false,
//  "start": {"delayMs": 0, "serve": true},
//  "commands": {"GiveAllFolders": {"raw": [...], "stopAfter": 2}}}
//
// Everything may be left out. The prefix stands before every path that goes over the pipe. Each
// command may have a script:
//   raw         messages instead of those of the mailbox; {"text": "a", "times": 1024} repeats a
//   text stopAfter   says nothing more after so many messages, with the connection open closeAfter
//   closes the connection after so many messages dieAfter    ends the process without a word after
//   so many messages pauseAfter  pauses after so many messages, for pauseMs
// The end marker is one of the messages.
#pragma once

#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

namespace postmarker::peer {

using Json = nlohmann::ordered_json;

struct Script {
  bool hasRaw = false;
  bool repeat = false;
  std::vector<std::wstring> raw;
  int stopAfter = -1;
  int closeAfter = -1;
  int dieAfter = -1;
  int pauseAfter = -1;
  unsigned pauseMs = 0;
};

// For one thread at a time. Texts are UTF-8 in the file and UTF-16 here.
class Mailbox {
 public:
  explicit Mailbox(std::wstring path) : m_path(std::move(path)) { Load(); }

  // Reads the file as it is now. Throws where it can't be read or is no JSON.
  void Load();

  // Every folder as the record that goes over the pipe, parents first.
  [[nodiscard]] std::vector<std::wstring> FolderRecords() const;
  [[nodiscard]] std::vector<std::wstring> Contacts() const { return Texts("contacts"); }
  [[nodiscard]] std::vector<std::wstring> Sent() const { return Texts("sent"); }

  // Adds a folder with this path and gives its record. Its parent is the folder with the path in
  // front of the last backslash; without one it is a folder at the top. The file is written.
  std::wstring AddFolder(const std::wstring& path, const std::wstring& store);

  void SetMoveMails(bool move);

  [[nodiscard]] unsigned StartDelay() const;
  [[nodiscard]] bool Serves() const;
  [[nodiscard]] Script ScriptOf(const std::wstring& command) const;

 private:
  [[nodiscard]] std::vector<std::wstring> Texts(const char* key) const;
  [[nodiscard]] std::wstring PathPrefix() const;
  void Save() const;

  std::wstring m_path;
  Json m_json;
};

}  // namespace postmarker::peer
