// A Windows Live Mail store: its folders and messages, read from the database.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>

#include "clients/PacedStop.h"
#include "clients/livemail/JetDbWrapper.h"
#include "clients/livemail/JetProvider.h"
#include "clients/livemail/LiveFolders.h"
#include "postmarker/WizardRequest.h"

namespace postmarker::livemail {

// One message. Texts are UTF-16.
struct WlmMessage {
  uint32_t Id = 0xFFFFFFFF;
  uint32_t FolderId = 0xFFFFFFFF;
  uint32_t Flags = 0;
  std::wstring Path;  // full path of its file; empty if it has none
  std::wstring From;
  std::wstring To;
};

// By FolderId, then by Id.
using WlmMessages = std::map<uint32_t, std::map<uint32_t, WlmMessage>>;

// Whether the files of messages are looked for. It takes a walk over all streams of the store.
enum class MessageFiles { kFind, kLeaveOut };

// The database of a store, open for one operation. Each step returns 0 or the general failure code,
// looks at `stop` at every hundredth row, and returns 0 with what it had if that says so. From one
// thread at a time.
class LiveStore {
 public:
  // Opens the database at `path`, below whose folder the files of the messages are. `api` must
  // outlive the object.
  explicit LiveStore(const std::wstring& path, const JetApi& api = MachineJetApi());

  // 0 if the database is open. Otherwise nothing can be read.
  [[nodiscard]] ResultCode Status() const { return m_database.Status; }

  // Replaces *folders by all folders of mail, with paths and roots.
  ResultCode ReadFolders(PacedStop* stop, WlmFolders* folders);

  // Adds the messages whose columns have the values of `filter`, as in JetDbWrapper::Query. Of
  // those with the same ids the last one stays.
  ResultCode QueryMessages(const JetRow& filter, MessageFiles files, PacedStop* stop,
                           WlmMessages* messages);

  // The same for the messages of a folder.
  ResultCode ListFolderMessages(const WlmFolder& folder, MessageFiles files, PacedStop* stop,
                                WlmMessages* messages);

 private:
  ResultCode FindColumns(const std::wstring& table, std::span<const wchar_t* const> wanted,
                         JetColumns* columns);
  std::wstring PathOfStream(int32_t stream, PacedStop* stop);
  void ReadStreams(PacedStop* stop);

  std::wstring m_root;
  JetDbWrapper m_database;
  // The paths of all streams by their ids, once the first one is asked for.
  std::optional<std::unordered_map<int32_t, std::wstring>> m_streams;
};

// The content of a message's file: as many bytes as the file has, of which those from the first NUL
// on are zero. Nothing if the message or its file is not there. `message` may be null: then it is
// looked up in `store` by its ids.
std::optional<std::string> ReadMessageText(LiveStore* store, uint32_t folderId, uint32_t messageId,
                                           const WlmMessage* message);

// Appends the folders of the store with this database in display order. A store that can't be read,
// or a yes of `stop`, adds none.
void ListStoreFolders(const std::wstring& databasePath, const StopQuery& stop,
                      MailFolderList* list);

// Adds the addresses of all sent mail of the store with this database to *addresses. When `stop`
// says so, what was read until then is added.
void CollectStoreAddresses(const std::wstring& databasePath, PacedStop* stop,
                           AddressSet* addresses);

}  // namespace postmarker::livemail
