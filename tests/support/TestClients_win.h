// Mail clients made up by tests.
#pragma once

#include <windows.h>

#include <array>
#include <atomic>
#include <functional>
#include <string>

#include "clients/ClientTable.h"

namespace postmarker::test {

// Answers with what its fields hold.
class ScriptedClient : public MailClientAdapter {
 public:
  MailFolderList folders;
  MailFolderRef defaultFolder;
  bool canCreate = true;
  ResultCode createResult = kOk;
  std::string storeId;                  // empty: can't be read
  std::function<void()> beforeListing;  // on the listing thread
  mutable std::atomic<int> listings = 0;
  mutable std::atomic<int> creations = 0;
  mutable std::atomic<int> moveSwitches = 0;

  void ListFolders(MailFolderList* out, const ClientSession& /*session*/) const override {
    if (beforeListing) {
      beforeListing();
    }
    out->insert(out->end(), folders.begin(), folders.end());
    ++listings;
  }
  [[nodiscard]] MailFolderRef FindDefaultFolder(const MailFolderList& /*list*/,
                                                const ClientSession& /*session*/) const override {
    return defaultFolder;
  }
  [[nodiscard]] bool CanCreateFolder() const override { return canCreate; }
  ResultCode CreateFolder(const std::wstring& name, const MailFolderRef& parent,
                          const ClientSession& /*session*/, MailFolderRef* created) const override {
    if (Failed(createResult)) {
      return createResult;
    }
    ++creations;
    std::wstring path = parent.name;
    path.append(L"\\").append(name);
    *created = {path, "new-" + std::to_string(creations), parent.secondId, 1};
    return createResult;
  }
  bool ReadStoreId(std::string* out) const override {
    *out = storeId;
    return !storeId.empty();
  }
  void SetMoveMails(bool /*move*/) const override { ++moveSwitches; }
};

// A store with a root, an inbox with a folder in it, and a trash.
inline MailFolderList SmallStore() {
  return {{L"\\\\Post", "root", "store", 1},
          {L"\\\\Post\\Inbox", "1", "store", 1},
          {L"\\\\Post\\Inbox\\Friends", "2", "store", 1},
          {L"\\\\Post\\Trash", "4", "store", 1}};
}

// While it lives, the table of clients has one scripted client in four kinds: "Plain", "Local" with
// local folder ids, "Windows Mail" that shares its settings with "Outlook Express", and "Still",
// which can't be told to move mails.
class TestClients {
 public:
  ScriptedClient client;

 private:
  std::array<ClientRow, 5> m_rows = {{
      {L"Plain", L"Plain", L"", false, true, false, &client},
      {L"Local", L"Local", L"", true, true, false, &client},
      {L"Windows Mail", L"Outlook Express", L"", true, true, false, &client},
      {L"Outlook Express", L"Outlook Express", L"", true, true, false, &client},
      {L"Still", L"Still", L"", false, false, false, &client},
  }};
  ScopedClientTable m_table{m_rows};
};

}  // namespace postmarker::test
