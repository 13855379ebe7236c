// Mail clients made up by tests.
#pragma once

#include <windows.h>

#include <array>
#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "clients/ClientTable.h"

namespace postmarker::test {

// What reading a mapped file does when the drive with it goes away.
inline void LoseDrive() {
  ::RaiseException(EXCEPTION_IN_PAGE_ERROR, 0, 0, nullptr);
}

// Answers with what its fields hold.
class ScriptedClient : public MailClientAdapter {
 public:
  MailFolderList folders;
  MailFolderRef defaultFolder;
  bool canCreate = true;
  ResultCode createResult = kOk;
  std::string storeId;                  // empty: can't be read
  std::function<void()> beforeListing;  // on the listing thread
  // The same, with the session of the listing.
  std::function<void(const ClientSession& session)> whileListing;
  std::function<void()> whenAskedForCreation;  // of CanCreateFolder
  std::function<void()> whileConnecting;       // of the hold
  std::function<void()> whileSwitching;        // of SetMoveMails
  bool createsWithoutId = false;
  AddressSet addresses;
  ResultCode collectResult = kOk;
  // On the collecting thread, before the addresses are given.
  std::function<void(const ProgressCallbacks* callbacks)> whileCollecting;
  mutable std::atomic<int> listings = 0;
  mutable std::atomic<int> defaultFolders = 0;  // that were asked for, which a worker does last
  mutable std::atomic<int> creations = 0;
  mutable std::atomic<int> moveSwitches = 0;
  mutable std::atomic<int> collections = 0;
  bool needsHold = false;
  mutable std::atomic<int> holds = 0;  // that are there now
  mutable std::atomic<int> connections = 0;

  void ListFolders(const ClientSession& session, MailFolderList* out) const override {
    if (beforeListing) {
      beforeListing();
    }
    if (whileListing) {
      whileListing(session);
    }
    out->insert(out->end(), folders.begin(), folders.end());
    ++listings;
  }
  [[nodiscard]] MailFolderRef FindDefaultFolder(const ClientSession& /*session*/,
                                                const MailFolderList& /*list*/) const override {
    MailFolderRef found = defaultFolder;
    ++defaultFolders;
    return found;
  }
  [[nodiscard]] bool CanCreateFolder() const override {
    if (whenAskedForCreation) {
      whenAskedForCreation();
    }
    return canCreate;
  }
  ResultCode CreateFolder(const ClientSession& /*session*/, const std::wstring& name,
                          const MailFolderRef& parent, MailFolderRef* created) const override {
    if (Failed(createResult)) {
      return createResult;
    }
    ++creations;
    if (createsWithoutId) {
      return kOk;
    }
    std::wstring path = parent.name;
    path.append(L"\\").append(name);
    *created = {path, "new-" + std::to_string(creations), parent.secondId, 1};
    return createResult;
  }
  ResultCode CollectSentAddresses(const ClientSession& /*session*/,
                                  const ProgressCallbacks* callbacks,
                                  AddressSet* out) const override {
    ++collections;
    if (whileCollecting) {
      whileCollecting(callbacks);
    }
    out->insert(addresses.begin(), addresses.end());
    return collectResult;
  }
  bool ReadStoreId(std::string* out) const override {
    *out = storeId;
    return !storeId.empty();
  }
  void SetMoveMails(bool /*move*/) const override {
    ++moveSwitches;
    if (whileSwitching) {
      whileSwitching();
    }
  }
  [[nodiscard]] std::shared_ptr<ClientHold> MakeHold(WizardRequest* /*request*/) const override {
    return needsHold ? std::make_shared<Hold>(this) : nullptr;
  }

 private:
  class Hold : public ClientHold {
   public:
    explicit Hold(const ScriptedClient* client) : m_client(client) { ++client->holds; }
    void Connect() override {
      ++m_client->connections;
      if (m_client->whileConnecting) {
        m_client->whileConnecting();
      }
    }
    void Disconnect() override { m_client->holds -= std::exchange(m_isHeld, false) ? 1 : 0; }

   private:
    const ScriptedClient* m_client;
    bool m_isHeld = true;
  };
};

// A store with a root, an inbox with a folder in it, and a trash.
inline MailFolderList SmallStore() {
  return {{L"\\\\Post", "root", "store", 1},
          {L"\\\\Post\\Inbox", "1", "store", 1},
          {L"\\\\Post\\Inbox\\Friends", "2", "store", 1},
          {L"\\\\Post\\Trash", "4", "store", 1}};
}

// What the detection finds of a client.
struct Presence {
  bool isInstalled = true;
  bool isSupported = true;
  bool isReady = true;
  int readyQuestions = 0;
};

// While it lives, the table of clients has one scripted client in five kinds: "Plain", "Local" with
// local folder ids, "Windows Mail" that shares its settings with "Outlook Express", which is not
// supported beside it, and "Still", which can't be told to move mails.
class TestClients {
 public:
  TestClients() { presence[3].isSupported = false; }

  ScriptedClient client;

  // Of the five, in the order of their rows.
  std::array<Presence, 5> presence;

 private:
  ClientRow Row(size_t index, std::wstring_view name, std::wstring_view settingsName, bool isLocal,
                bool canMove) {
    Presence* const found = &presence[index];
    return {.displayName = name,
            .settingsName = settingsName,
            .hasLocalFolderIds = isLocal,
            .canMoveEmails = canMove,
            .adapter = &client,
            .isInstalled = [found](const MachineView&) { return found->isInstalled; },
            .isSupported = [found](const MachineView&) { return found->isSupported; },
            .isReady =
                [found](const MachineView&) {
                  ++found->readyQuestions;
                  return found->isReady;
                }};
  }

  std::array<ClientRow, 5> m_rows = {{
      Row(0, L"Plain", L"Plain", false, true),
      Row(1, L"Local", L"Local", true, true),
      Row(2, L"Windows Mail", L"Outlook Express", true, true),
      Row(3, L"Outlook Express", L"Outlook Express", true, true),
      Row(4, L"Still", L"Still", false, false),
  }};
  ScopedClientTable m_table{m_rows};
};

}  // namespace postmarker::test
