#include "StoreState_win.h"

#include <algorithm>
#include <cstring>

namespace postmarker::peer {
namespace {

using nlohmann::json;

std::string FromHex(const std::string& digits) {
  std::string bytes;
  for (size_t i = 0; i + 1 < digits.size(); i += 2) {
    bytes.push_back(static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16)));
  }
  return bytes;
}

void CopyName(const std::string& name, char (&room)[storeapi::kFolderNameRoom]) {
  std::memset(room, 0, sizeof(room));
  name.copy(room, sizeof(room));
}

}  // namespace

StoreState& State() {
  static StoreState state;
  return state;
}

void StoreState::Set(const json& state) {
  m_folders.clear();
  m_calls.clear();
  m_allCalls = m_failingNumber = 0;
  m_journal.clear();
  largestRead = 0;
  m_form = state.value("form", 280U);
  isEndless = state.value("endless", false);
  shortReads = state.value("shortReads", 0U);
  root.reset();
  if (state.contains("root")) {
    root = AddTree(state["root"]);
  }
  contacts.reset();
  if (state.contains("contacts")) {
    contacts = state["contacts"].get<std::vector<json>>();
  }
}

uint32_t StoreState::AddTree(const json& tree) {
  if (tree.contains("again")) {
    return tree["again"];
  }
  PeerFolder folder;
  folder.id = tree.value("id", 0U);
  folder.name = tree.contains("bytes") ? FromHex(tree["bytes"]) : tree.value("name", "");
  folder.type = tree.value("type", -1);
  folder.messages = tree.value("messages", std::vector<std::string>());
  folder.repeat = tree.value("repeat", 1U);
  for (const json& child : tree.value("children", json::array())) {
    folder.children.push_back(AddTree(child));
  }
  const uint32_t id = folder.id;
  m_folders[id] = std::move(folder);
  return id;
}

HRESULT StoreState::Enter(const char* method) {
  const int ofMethod = ++m_calls[method];
  ++m_allCalls;
  const bool fails = m_failingMethod.empty()
                         ? m_allCalls == m_failingNumber
                         : m_failingMethod == method && ofMethod == m_failingNumber;
  return fails ? m_failure : S_OK;
}

void StoreState::FailCall(const std::string& method, int number, HRESULT result) {
  m_failingMethod = method;
  m_failingNumber = number;
  m_failure = result;
}

int StoreState::CountCalls(const std::string& method) const {
  if (method.empty()) {
    return m_allCalls;
  }
  const auto found = m_calls.find(method);
  return found == m_calls.end() ? 0 : found->second;
}

PeerFolder* StoreState::Find(uint32_t id) {
  // The store knows its root as 0 as well, whatever its id is.
  const auto found = m_folders.find(id == 0 ? root.value_or(0) : id);
  return found == m_folders.end() ? nullptr : &found->second;
}

PeerFolder* StoreState::FindSpecial(int32_t type) {
  const auto found = std::find_if(m_folders.begin(), m_folders.end(),
                                  [type](const auto& entry) { return entry.second.type == type; });
  return found == m_folders.end() ? nullptr : &found->second;
}

uint32_t StoreState::AddFolder(PeerFolder* parent, const std::string& name) {
  PeerFolder folder;
  folder.id = m_folders.rbegin()->first + 1;
  folder.name = name;
  parent->children.push_back(folder.id);
  Note("create " + std::to_string(folder.id) + " below " + std::to_string(parent->id) + " " + name);
  const uint32_t id = folder.id;
  m_folders[id] = std::move(folder);
  return id;
}

HRESULT StoreState::Fill(const PeerFolder& folder, storeapi::StoreFolderProps* props) const {
  if (!Takes(*props)) {
    return storeapi::kWrongStructSize;
  }
  const auto fill = [&folder](auto* record) {
    record->dwFolderId = folder.id;
    record->cSubFolders = static_cast<uint32_t>(folder.children.size());
    record->sfType = folder.type;
    record->cUnread = 0;
    record->cMessage = folder.CountMessages();
    CopyName(folder.name, record->szName);
  };
  if (m_form == sizeof(storeapi::StoreFolderPropsLong)) {
    fill(reinterpret_cast<storeapi::StoreFolderPropsLong*>(props));
  } else {
    fill(props);
  }
  return S_OK;
}

}  // namespace postmarker::peer
