#include "peers/thunderbird/Mailbox.h"

#include <windows.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <utility>

#include "support/Text.h"

namespace postmarker::peer {
namespace {

constexpr wchar_t kSeparator[] = L"######";

std::wstring Text(const Json& object, const char* key) {
  return WidenUtf8(object.value(key, std::string()));
}

std::wstring Record(const std::wstring& path, const Json& folder) {
  std::wstring record = path;
  for (const char* key : {"id", "store"}) {
    record.append(kSeparator).append(Text(folder, key));
  }
  return record.append(kSeparator).append(folder.value("flag", true) ? L"true" : L"false");
}

struct OpenFolder {
  std::wstring path;
  const Json* folder;
};

// The folders of `siblings` onto the stack, so that the first is taken first.
void Push(const Json& siblings, const std::wstring& above, std::vector<OpenFolder>* open) {
  for (size_t i = siblings.size(); i-- > 0;) {
    open->push_back({above + Text(siblings[i], "name"), &siblings[i]});
  }
}

std::wstring RawMessage(const Json& raw) {
  if (raw.is_string()) {
    return WidenUtf8(raw.get<std::string>());
  }
  std::wstring message;
  const std::wstring part = Text(raw, "text");
  for (int i = raw.value("times", 1); i > 0; --i) {
    message += part;
  }
  return message;
}

}  // namespace

void Mailbox::Load() {
  std::ifstream file(std::filesystem::path(m_path), std::ios::binary);
  m_json = Json::parse(file);
}

std::vector<std::wstring> Mailbox::FolderRecords() const {
  std::vector<std::wstring> records;
  const Json folders = m_json.value("folders", Json::array());
  std::vector<OpenFolder> open;
  Push(folders, PathPrefix(), &open);
  while (!open.empty()) {
    const OpenFolder next = open.back();
    open.pop_back();
    records.push_back(Record(next.path, *next.folder));
    if (next.folder->contains("children")) {
      Push(next.folder->at("children"), next.path + L"\\", &open);
    }
  }
  return records;
}

std::wstring Mailbox::AddFolder(const std::wstring& path, const std::wstring& store) {
  Json* siblings = &m_json["folders"];
  size_t start = path.starts_with(PathPrefix()) ? PathPrefix().size() : 0;
  for (size_t cut; (cut = path.find(L'\\', start)) != std::wstring::npos; start = cut + 1) {
    const std::wstring name = path.substr(start, cut - start);
    for (Json& folder : *siblings) {
      if (Text(folder, "name") == name) {
        siblings = &folder["children"];
        break;
      }
    }
  }
  Json folder = {{"name", NarrowUtf8(path.substr(start))},
                 {"id", "new-" + NarrowUtf8(path.substr(start))},
                 {"store", NarrowUtf8(store)},
                 {"flag", true}};
  std::wstring record = path;
  for (const char* key : {"id", "store"}) {
    record.append(kSeparator).append(Text(folder, key));
  }
  siblings->push_back(std::move(folder));
  Save();
  return record;
}

std::wstring Mailbox::PathPrefix() const {
  return Text(m_json, "pathPrefix");
}

void Mailbox::SetMoveMails(bool move) {
  m_json["moveMails"] = move;
  Save();
}

unsigned Mailbox::StartDelay() const {
  return m_json.value("start", Json::object()).value("delayMs", 0U);
}

bool Mailbox::Serves() const {
  return m_json.value("start", Json::object()).value("serve", true);
}

Script Mailbox::ScriptOf(const std::wstring& command) const {
  const Json commands = m_json.value("commands", Json::object());
  const Json json = commands.value(NarrowUtf8(command), Json::object());
  Script script;
  script.hasRaw = json.contains("raw");
  script.repeat = json.value("repeat", false);
  for (const Json& raw : json.value("raw", Json::array())) {
    script.raw.push_back(RawMessage(raw));
  }
  script.stopAfter = json.value("stopAfter", -1);
  script.closeAfter = json.value("closeAfter", -1);
  script.dieAfter = json.value("dieAfter", -1);
  script.pauseAfter = json.value("pauseAfter", -1);
  script.pauseMs = json.value("pauseMs", 0U);
  return script;
}

std::vector<std::wstring> Mailbox::Texts(const char* key) const {
  std::vector<std::wstring> texts;
  for (const Json& text : m_json.value(key, Json::array())) {
    texts.push_back(WidenUtf8(text.get<std::string>()));
  }
  return texts;
}

// Readers see the old file or the new one and nothing between.
void Mailbox::Save() const {
  const std::wstring draft = m_path + L".new";
  {
    std::ofstream file(std::filesystem::path(draft), std::ios::binary | std::ios::trunc);
    file << m_json.dump(1);
  }
  if (!::MoveFileExW(draft.c_str(), m_path.c_str(), MOVEFILE_REPLACE_EXISTING)) {
    throw std::runtime_error("the mailbox could not be written");
  }
}

}  // namespace postmarker::peer
