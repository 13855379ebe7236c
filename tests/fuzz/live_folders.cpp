// A store of Windows Live Mail: its folders, messages, addresses and id.
#include <algorithm>
#include <set>
#include <string>

#include "FuzzTarget.h"
#include "SealedFile.h"
#include "clients/livemail/LiveStore.h"
#include "clients/livemail/LiveStoreId.h"
#include "support/TempFolder.h"

namespace {

using namespace postmarker;

MailFolderList List(const std::wstring& path) {
  MailFolderList list;
  livemail::ListStoreFolders(path, {}, &list);
  return list;
}

// Every folder has a path and an id of its own, and hangs on one that is listed before it.
void CheckList(const MailFolderList& list) {
  std::set<std::string> ids;
  for (const MailFolderRef& folder : list) {
    fuzz::Require(folder.flag == 1 && folder.name.starts_with(L'\\'));
    fuzz::Require(!folder.firstId.empty() && ids.insert(folder.firstId).second);
    fuzz::Require(ids.contains(folder.secondId));
  }
}

void CheckMessages(const std::wstring& path) {
  livemail::LiveStore store(path);
  PacedStop never;
  livemail::WlmMessages messages;
  store.QueryMessages({}, livemail::MessageFiles::kFind, &never, &messages);
  for (const auto& [folderId, ofFolder] : messages) {
    livemail::WlmFolder folder;
    folder.Id = folderId;
    livemail::WlmMessages again;
    store.ListFolderMessages(folder, livemail::MessageFiles::kFind, &never, &again);
    fuzz::Require(std::all_of(again.begin(), again.end(),
                              [id = folderId](const auto& found) { return found.first == id; }));
    for (const auto& [id, message] : ofFolder) {
      fuzz::Require(message.Id == id && message.FolderId == folderId);
      fuzz::Require(message.To.empty() || message.To == message.From);
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const test::TempFolder folder;
  static const std::wstring path = folder.PathOf("store");
  std::string file(fuzz::Bytes(data, size));
  fuzz::Seal(&file);
  test::WriteFile(path, file);
  const MailFolderList list = List(path);
  CheckList(list);
  fuzz::Require(List(path) == list);
  CheckMessages(path);
  PacedStop never;
  AddressSet addresses;
  livemail::CollectStoreAddresses(path, &never, &addresses);
  const auto id = livemail::ReadLiveMessageStoreId(path, L"");
  fuzz::Require(!id || id->size() == 8);
  return 0;
}
