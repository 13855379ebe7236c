#include "clients/livemail/LiveStore.h"

#include <set>
#include <utility>

#include "analysis/headers/AddressList.h"
#include "clients/livemail/LiveMailPaths.h"
#include "support/MappedFile.h"
#include "support/Text.h"

namespace postmarker::livemail {
namespace {

constexpr wchar_t kFolders[] = L"Folders";
constexpr wchar_t kMessages[] = L"Messages";
constexpr wchar_t kStreams[] = L"Streams";

constexpr const wchar_t* kFolderColumns[] = {L"FLDCOL_ID",   L"FLDCOL_NAMEW", L"FLDCOL_PARENT",
                                             L"FLDCOL_PATH", L"FLDCOL_TYPE",  L"FLDCOL_SPECIAL"};
constexpr const wchar_t* kMessageColumns[] = {L"MSGCOL_ID",      L"MSGCOL_FOLDERID",
                                              L"MSGCOL_STREAM",  L"MSGCOL_EMAILFROM",
                                              L"MSGCOL_EMAILTO", L"MSGCOL_FLAGS"};
constexpr const wchar_t* kStreamColumns[] = {L"Id", L"Path"};

// A value for columns of ids, which have 64 bits.
JetValue IdValue(uint32_t id) {
  return JetValue(int64_t{static_cast<int32_t>(id)});
}

// Without its path. Nothing for a row that lacks an id.
std::optional<WlmMessage> MessageOfRow(const JetRow& row) {
  const std::optional<uint32_t> id = LowBits(ValueOf(row, L"MSGCOL_ID"));
  const std::optional<uint32_t> folderId = LowBits(ValueOf(row, L"MSGCOL_FOLDERID"));
  if (!id || !folderId) {
    return std::nullopt;
  }
  WlmMessage message;
  message.Id = *id;
  message.FolderId = *folderId;
  message.Flags = LowBits(ValueOf(row, L"MSGCOL_FLAGS")).value_or(0);
  if (const std::wstring* const from = ValueOf(row, L"MSGCOL_EMAILFROM").AsText()) {
    message.From = *from;
  }
  // Deliberate: the one column decides, and the text is that of the other. What is collected as the
  // person's sent mail are therefore the person's own addresses.
  if (ValueOf(row, L"MSGCOL_EMAILTO").AsText() != nullptr) {
    message.To = message.From;
  }
  return message;
}

}  // namespace

LiveStore::LiveStore(const std::wstring& path, const JetApi& api)
    : m_root(StoreRootOf(path)), m_database(path, api) {}

// Of the wanted columns those that the table has.
ResultCode LiveStore::FindColumns(const std::wstring& table, std::span<const wchar_t* const> wanted,
                                  JetColumns* columns) {
  JetColumns all;
  if (Failed(Status()) || Failed(m_database.GetTableColumns(table, &all))) {
    return kFail;
  }
  for (const wchar_t* const name : wanted) {
    if (auto column = all.extract(name)) {
      columns->insert(std::move(column));
    }
  }
  return kOk;
}

ResultCode LiveStore::ReadFolders(PacedStop* stop, WlmFolders* folders) {
  folders->clear();
  JetColumns columns;
  if (Failed(FindColumns(kFolders, kFolderColumns, &columns))) {
    return kFail;
  }
  const ResultCode result = m_database.Visit(kFolders, columns, {}, {}, [&](const JetRow& row) {
    if (std::optional<WlmFolder> folder = FolderOfRow(row, m_root)) {
      const auto id = folder->Id;
      folders->insert_or_assign(id, *std::move(folder));
    }
    return !stop->LookAfterStep();
  });
  FillDisplayPaths(folders);
  FillRootIds(folders);
  return result;
}

ResultCode LiveStore::QueryMessages(const JetRow& filter, MessageFiles files, PacedStop* stop,
                                    WlmMessages* messages) {
  JetColumns columns;
  if (Failed(FindColumns(kMessages, kMessageColumns, &columns))) {
    return kFail;
  }
  return m_database.Visit(kMessages, columns, filter, filter, [&](const JetRow& row) {
    if (std::optional<WlmMessage> message = MessageOfRow(row)) {
      const std::optional<uint32_t> stream = LowBits(ValueOf(row, L"MSGCOL_STREAM"));
      if (stream && files == MessageFiles::kFind) {
        message->Path = PathOfStream(static_cast<int32_t>(*stream - 1), stop);
      }
      const auto id = message->Id;
      (*messages)[message->FolderId].insert_or_assign(id, *std::move(message));
    }
    return !stop->LookAfterStep();
  });
}

ResultCode LiveStore::ListFolderMessages(const WlmFolder& folder, MessageFiles files,
                                         PacedStop* stop, WlmMessages* messages) {
  return QueryMessages({{L"MSGCOL_FOLDERID", IdValue(folder.Id)}}, files, stop, messages);
}

std::wstring LiveStore::PathOfStream(int32_t stream, PacedStop* stop) {
  if (!m_streams) {
    m_streams.emplace();
    ReadStreams(stop);
  }
  const auto found = m_streams->find(stream);
  return found == m_streams->end() ? std::wstring() : found->second;
}

// All at once: asking the table for each message would search it as often as there are messages.
void LiveStore::ReadStreams(PacedStop* stop) {
  JetColumns columns;
  if (Failed(FindColumns(kStreams, kStreamColumns, &columns))) {
    return;
  }
  m_database.Visit(kStreams, columns, {}, {}, [&](const JetRow& row) {
    const int32_t* const id = ValueOf(row, L"Id").AsInt32();
    const std::wstring* const path = ValueOf(row, L"Path").AsText();
    if (id != nullptr) {
      m_streams->try_emplace(*id, path == nullptr ? std::wstring() : m_root + *path);
    }
    return !stop->LookAfterStep();
  });
}

std::optional<std::string> ReadMessageText(LiveStore* store, uint32_t folderId, uint32_t messageId,
                                           const WlmMessage* message) {
  WlmMessages messages;
  if (message == nullptr) {
    PacedStop never;
    store->QueryMessages({{L"MSGCOL_ID", IdValue(messageId)}}, MessageFiles::kFind, &never,
                         &messages);
    const auto& ofFolder = messages[folderId];
    const auto found = ofFolder.find(messageId);
    if (found == ofFolder.end()) {
      return std::nullopt;
    }
    message = &found->second;
  }
  const MappedFile file(message->Path, 1);
  if (Failed(file.Status())) {
    return std::nullopt;
  }
  std::string text(file.Bytes().substr(0, file.Bytes().find('\0')));
  text.resize(file.Size());
  return text;
}

void ListStoreFolders(const std::wstring& databasePath, const StopQuery& query,
                      MailFolderList* list) {
  PacedStop stop(query);
  if (databasePath.empty() || stop.Look()) {
    return;
  }
  WlmFolders folders;
  if (Succeeded(LiveStore(databasePath).ReadFolders(&stop, &folders)) && !stop.IsStopped()) {
    AppendFolders(folders, list);
  }
}

void CollectStoreAddresses(const std::wstring& databasePath, PacedStop* stop,
                           AddressSet* addresses) {
  if (databasePath.empty()) {
    return;
  }
  LiveStore store(databasePath);
  WlmFolders folders;
  store.ReadFolders(stop, &folders);
  std::set<std::wstring> lists;
  for (const auto& [id, folder] : folders) {
    if (folder.Special != SpecialSent || stop->IsStopped()) {
      continue;
    }
    WlmMessages messages;
    store.ListFolderMessages(folder, MessageFiles::kLeaveOut, stop, &messages);
    for (auto& [messageId, message] : messages[id]) {
      lists.insert(std::move(message.To));
    }
    (void)stop->LookAfterStep();
  }
  for (const std::wstring& list : lists) {
    ForEachAddress(Narrow(list),
                   [&](std::string_view address) { addresses->insert(Widen(address)); });
  }
}

}  // namespace postmarker::livemail
