#include "clients/storeapi/StoreMessages_win.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "clients/Cancel.h"
#include "clients/storeapi/StoreMail.h"
#include "clients/storeapi/StoreSession_win.h"

namespace postmarker::storeapi {
namespace {

constexpr int kSentFolder = 2;  // of the store's special folder types

// A folder's file has at most 2 GiB, so this is more than it can hold of real messages. A folder
// that never ends, ends here.
constexpr int kMaxMessages = 1'000'000;

int32_t CountMessages(IStoreFolder* folder) {
  FolderPropsQuery query;
  const HRESULT result = query.AskEitherForm(
      [folder](StoreFolderProps* props) { return folder->GetFolderProps(0, props); });
  constexpr uint32_t kMax = std::numeric_limits<int32_t>::max();
  return SUCCEEDED(result) ? static_cast<int32_t>(std::min(query.Props().cMessage, kMax)) : 0;
}

void SetTotal(const ProgressCallbacks* callbacks, int32_t total) {
  if (CanReport(callbacks) && callbacks->setProgress != nullptr) {
    callbacks->setProgress(callbacks->handle, callbacks->text, total);
  }
}

void ReportOne(const ProgressCallbacks* callbacks) {
  if (CanReport(callbacks) && callbacks->increaseProgress != nullptr) {
    callbacks->increaseProgress(callbacks->handle, 1);
  }
}

HRESULT OpenRootBody(IMimeMessage* message, ComPtr<IMimeBody>* body) {
  const HRESULT result = message->BindToObject(RootBody(), kMimeBodyId, body->PutVoid());
  return SUCCEEDED(result) && !*body ? E_NOINTERFACE : result;
}

HRESULT SetSubject(IMimeAllocator* allocator, IMimeBody* body, const std::string& subject) {
  // Allocated as the property's owner would, who may keep to its allocator.
  const size_t size = subject.size() + 1;
  auto* const text = static_cast<char*>(allocator->Alloc(size));
  if (text == nullptr) {
    return E_OUTOFMEMORY;
  }
  std::memcpy(text, subject.c_str(), size);
  PROPVARIANT value = {};
  value.vt = VT_LPSTR;
  value.pszVal = text;
  const HRESULT result = body->SetProp("Subject", 0, &value);
  allocator->Free(text);
  return result;
}

// Calls work(folder, ids) for each folder that opens, and returns the first failure.
template <class Work>
HRESULT ForEachFolder(IStoreNamespace* store, const MessagesOfFolders& messages, const Work& work) {
  HRESULT first = S_OK;
  for (const auto& [id, messageIds] : messages) {
    ComPtr<IStoreFolder> folder;
    HRESULT result = store->OpenFolder(id, 0, folder.Put());
    if (SUCCEEDED(result) && folder) {
      std::vector<MessageId> ids = messageIds;
      MessageIdList list;
      list.cMsgs = static_cast<DWORD>(ids.size());
      list.prgdwMsgId = ids.data();
      result = work(folder.Get(), &list);
    }
    first = SUCCEEDED(first) && FAILED(result) ? result : first;
  }
  return first;
}

}  // namespace

MessageReader::MessageReader() : m_buffer(kMessageBytesRead) {}

std::string_view MessageReader::Read(IStoreFolder* folder, MessageId message) {
  ComPtr<IStream> stream;
  ULONG read = 0;
  if (FAILED(folder->OpenMessage(message, IID_IStream, stream.PutVoid())) || !stream ||
      FAILED(stream->Read(m_buffer.data(), kMessageBytesRead, &read))) {
    return {};
  }
  return {m_buffer.data(), std::min<size_t>(read, kMessageBytesRead)};
}

HRESULT ReadSentMessages(IStoreNamespace* store, const ProgressCallbacks* callbacks,
                         const StopQuery& stop, AddressSet* addresses) {
  ComPtr<IStoreFolder> folder;
  const HRESULT result = store->OpenSpecialFolder(kSentFolder, 0, folder.Put());
  if (FAILED(result) || !folder) {
    return FAILED(result) ? result : E_FAIL;
  }
  SetTotal(callbacks, CountMessages(folder.Get()));
  if (ShouldStop(stop)) {
    return S_OK;
  }
  MessageReader reader;
  MessageWalk messages(folder.Get());
  for (int i = 0; i < kMaxMessages && messages.HasMessage(); ++i, messages.Next()) {
    ReportOne(callbacks);
    if (ShouldStop(stop)) {
      break;
    }
    AddRecipients(reader.Read(folder.Get(), messages.Id()), addresses);
  }
  return S_OK;
}

bool IsSameMessage(IStoreFolder* folder, MessageId message, const HeaderMap& headers) {
  MessageReader reader;
  HeaderMap own;
  return ReadHeaders(reader.Read(folder, message), &own) && HaveSameIdentity(own, headers);
}

HRESULT RemoveSubjectMark(IMimeAllocator* allocator, IStoreFolder* folder, MessageId message,
                          std::string_view subject) {
  ComPtr<IMimeMessage> mime;
  HRESULT result = folder->OpenMessage(message, kMimeMessageId, mime.PutVoid());
  if (FAILED(result) || !mime) {
    return FAILED(result) ? result : E_FAIL;
  }
  ComPtr<IMimeBody> body;
  result = OpenRootBody(mime.Get(), &body);
  if (FAILED(result)) {
    return result;
  }
  if (subject.find(kSubjectMark) == std::string_view::npos) {
    return S_FALSE;
  }
  ComPtr<IMimeAllocator> own;
  if (allocator == nullptr) {
    result = ::CoCreateInstance(kMimeAllocatorClass, nullptr, CLSCTX_INPROC_SERVER,
                                kMimeAllocatorId, own.PutVoid());
    allocator = own.Get();
  }
  if (SUCCEEDED(result)) {
    result = SetSubject(allocator, body.Get(), WithoutSubjectMarks(subject));
  }
  return SUCCEEDED(result) ? mime->Commit(kReuseStorage) : result;
}

HRESULT MoveStoreMessages(IStoreNamespace* store, const MessagesOfFolders& messages,
                          IStoreFolder* target) {
  return ForEachFolder(store, messages, [&](IStoreFolder* folder, MessageIdList* list) {
    return store->CopyMoveMessages(folder, target, list, kMoveMessages, 0, nullptr);
  });
}

HRESULT MarkStoreMessagesRead(IStoreNamespace* store, const MessagesOfFolders& messages,
                              bool read) {
  return ForEachFolder(store, messages, [read](IStoreFolder* folder, MessageIdList* list) {
    return folder->MarkMessagesAsRead(read ? TRUE : FALSE, 0, list);
  });
}

}  // namespace postmarker::storeapi
