// A folder of the store, its messages, and the streams through which they are read.
#include <algorithm>
#include <cstring>

#include "StoreState_win.h"

namespace postmarker::peer {
namespace {

using storeapi::BatchLockHandle;
using storeapi::EnumHandle;
using storeapi::MessageId;
using storeapi::MessageIdList;
using storeapi::MessageProps;
using storeapi::StoreFolderProps;

constexpr auto kNotFound = static_cast<HRESULT>(0x800CCF65);
constexpr char kSubjectOfRecord[] = "the store's own text";

class MessageStream final : public PeerObject<IStream, IID_IStream> {
 public:
  explicit MessageStream(const std::string& message) : m_message(message) {}

  HRESULT __stdcall Read(void* buffer, ULONG size, ULONG* read) override {
    POSTMARKER_PEER_ENTER("Stream.Read");
    State().largestRead = std::max<uint32_t>(State().largestRead, size);
    ULONG count = std::min<ULONG>(size, static_cast<ULONG>(m_message.size() - m_position));
    if (State().shortReads != 0) {
      count = std::min<ULONG>(count, State().shortReads);
    }
    std::memcpy(buffer, m_message.data() + m_position, count);
    m_position += count;
    *read = count;
    return count == size ? S_OK : S_FALSE;
  }
  HRESULT __stdcall Write(const void*, ULONG, ULONG*) override { return E_NOTIMPL; }
  HRESULT __stdcall Seek(LARGE_INTEGER, DWORD, ULARGE_INTEGER*) override { return E_NOTIMPL; }
  HRESULT __stdcall SetSize(ULARGE_INTEGER) override { return E_NOTIMPL; }
  HRESULT __stdcall CopyTo(IStream*, ULARGE_INTEGER, ULARGE_INTEGER*, ULARGE_INTEGER*) override {
    return E_NOTIMPL;
  }
  HRESULT __stdcall Commit(DWORD) override { return E_NOTIMPL; }
  HRESULT __stdcall Revert() override { return E_NOTIMPL; }
  HRESULT __stdcall LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override { return E_NOTIMPL; }
  HRESULT __stdcall UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override {
    return E_NOTIMPL;
  }
  HRESULT __stdcall Stat(STATSTG*, DWORD) override { return E_NOTIMPL; }
  HRESULT __stdcall Clone(IStream**) override { return E_NOTIMPL; }

 private:
  const std::string& m_message;
  size_t m_position = 0;
};

struct MessageEnumeration : Counted {
  uint32_t next = 1;
};

MessageEnumeration* Of(EnumHandle handle) {
  return reinterpret_cast<MessageEnumeration*>(handle);
}

// The platform's own MIME message behind an object that counts. One reference to it stays here
// until the test has looked.
class PeerMimeMessage final : public PeerObject<storeapi::IMimeMessage, storeapi::kMimeMessageId> {
 public:
  HRESULT Open(const std::string& message) {
    ComPtr<storeapi::IMimeMessage>& mime = State().lastMimeMessage;
    HRESULT result = ::CoCreateInstance(storeapi::kMimeMessageClass, nullptr, CLSCTX_INPROC_SERVER,
                                        storeapi::kMimeMessageId, mime.PutVoid());
    ComPtr<IStream> stream;
    if (SUCCEEDED(result)) {
      result = ::CreateStreamOnHGlobal(nullptr, TRUE, stream.Put());
    }
    if (SUCCEEDED(result)) {
      result = stream->Write(message.data(), static_cast<ULONG>(message.size()), nullptr);
    }
    if (SUCCEEDED(result)) {
      result = stream->Seek({}, STREAM_SEEK_SET, nullptr);
    }
    return SUCCEEDED(result) ? mime->Load(stream.Get()) : result;
  }

  HRESULT __stdcall BindToObject(storeapi::BodyHandle body, REFIID iid, void** object) override {
    POSTMARKER_PEER_ENTER("Mime.BindToObject");
    return State().lastMimeMessage->BindToObject(body, iid, object);
  }
  HRESULT __stdcall Commit(DWORD flags) override {
    POSTMARKER_PEER_ENTER("Mime.Commit");
    State().Note("commit " + std::to_string(flags));
    return State().lastMimeMessage->Commit(flags);
  }

  // Not called by the product.
  HRESULT __stdcall GetClassID(CLSID*) override { return E_NOTIMPL; }
  HRESULT __stdcall IsDirty() override { return E_NOTIMPL; }
  HRESULT __stdcall Load(IStream*) override { return E_NOTIMPL; }
  HRESULT __stdcall Save(IStream*, BOOL) override { return E_NOTIMPL; }
  HRESULT __stdcall GetSizeMax(ULARGE_INTEGER*) override { return E_NOTIMPL; }
  HRESULT __stdcall InitNew() override { return E_NOTIMPL; }
  HRESULT __stdcall GetMessageSource() override { return E_NOTIMPL; }
  HRESULT __stdcall GetMessageSize() override { return E_NOTIMPL; }
  HRESULT __stdcall LoadOffsetTable() override { return E_NOTIMPL; }
  HRESULT __stdcall SaveOffsetTable() override { return E_NOTIMPL; }
  HRESULT __stdcall GetFlags() override { return E_NOTIMPL; }
  HRESULT __stdcall HandsOffStorage() override { return E_NOTIMPL; }
};

HRESULT OpenMime(const std::string& message, void** object) {
  const ComPtr<PeerMimeMessage> mime(new PeerMimeMessage);
  const HRESULT result = mime->Open(message);
  return SUCCEEDED(result) ? mime->QueryInterface(storeapi::kMimeMessageId, object) : result;
}

class PeerStoreFolder final : public PeerObject<storeapi::IStoreFolder, storeapi::kStoreFolderId> {
 public:
  explicit PeerStoreFolder(uint32_t id) : m_id(id) {}

  HRESULT __stdcall GetFolderProps(DWORD /*reserved*/, StoreFolderProps* props) override {
    POSTMARKER_PEER_ENTER("Folder.GetFolderProps");
    return State().Fill(Folder(), props);
  }
  HRESULT __stdcall GetFirstMessage(DWORD /*flags*/, DWORD /*messageFlags*/, MessageId first,
                                    MessageProps* props, EnumHandle* handle) override {
    POSTMARKER_PEER_ENTER("Folder.GetFirstMessage");
    if (first != storeapi::kFirstMessage) {
      return E_INVALIDARG;
    }
    auto* const enumeration = new MessageEnumeration;
    *handle = reinterpret_cast<EnumHandle>(enumeration);
    return FillNext(enumeration, props);
  }
  HRESULT __stdcall GetNextMessage(EnumHandle handle, DWORD /*flags*/,
                                   MessageProps* props) override {
    POSTMARKER_PEER_ENTER("Folder.GetNextMessage");
    return FillNext(Of(handle), props);
  }
  HRESULT __stdcall GetMessageClose(EnumHandle handle) override {
    delete Of(handle);
    POSTMARKER_PEER_ENTER("Folder.GetMessageClose");
    return S_OK;
  }
  HRESULT __stdcall FreeMessageProps(MessageProps* props) override {
    if (props->pszSubject != kSubjectOfRecord) {
      State().Note("a record was given back that nobody had filled");
      return E_INVALIDARG;
    }
    props->pszSubject = nullptr;
    --State().live;
    POSTMARKER_PEER_ENTER("Folder.FreeMessageProps");
    return S_OK;
  }
  HRESULT __stdcall OpenMessage(MessageId message, REFIID iid, void** object) override {
    POSTMARKER_PEER_ENTER("Folder.OpenMessage");
    *object = nullptr;
    const std::string* const text = Folder().Message(message);
    if (text == nullptr) {
      return kNotFound;
    }
    if (iid == storeapi::kMimeMessageId) {
      return OpenMime(*text, object);
    }
    if (iid != IID_IStream) {
      return E_NOINTERFACE;
    }
    *object = static_cast<IStream*>(new MessageStream(*text));
    return S_OK;
  }
  HRESULT __stdcall MarkMessagesAsRead(BOOL read, DWORD /*reserved*/,
                                       MessageIdList* messages) override {
    POSTMARKER_PEER_ENTER("Folder.MarkMessagesAsRead");
    std::string line = std::string(read != FALSE ? "read " : "unread ") + Folder().name + ":";
    for (DWORD i = 0; i < messages->cMsgs; ++i) {
      line += " " + std::to_string(messages->prgdwMsgId[i]);
    }
    State().Note(line);
    return S_OK;
  }

  // Not called by the product.
  HRESULT __stdcall GetMessageProps(MessageId, DWORD, MessageProps*) override { return E_NOTIMPL; }
  HRESULT __stdcall DeleteMessages(MessageIdList*, DWORD, IUnknown*) override { return E_NOTIMPL; }
  HRESULT __stdcall SetLanguage(DWORD, DWORD, MessageIdList*) override { return E_NOTIMPL; }
  HRESULT __stdcall SetFlags(MessageIdList*, DWORD, DWORD, DWORD*) override { return E_NOTIMPL; }
  HRESULT __stdcall SaveMessage(REFIID, void*, DWORD, MessageId*) override { return E_NOTIMPL; }
  HRESULT __stdcall BatchLock(DWORD, BatchLockHandle*) override { return E_NOTIMPL; }
  HRESULT __stdcall BatchFlush(DWORD, BatchLockHandle) override { return E_NOTIMPL; }
  HRESULT __stdcall BatchUnlock(DWORD, BatchLockHandle) override { return E_NOTIMPL; }
  HRESULT __stdcall CreateStream(BatchLockHandle, DWORD, IStream**, MessageId*) override {
    return E_NOTIMPL;
  }
  HRESULT __stdcall CommitStream(BatchLockHandle, DWORD, DWORD, IStream*, MessageId,
                                 IUnknown*) override {
    return E_NOTIMPL;
  }
  HRESULT __stdcall RegisterNotification(DWORD, HWND) override { return E_NOTIMPL; }
  HRESULT __stdcall UnregisterNotification(DWORD, HWND) override { return E_NOTIMPL; }
  HRESULT __stdcall Compact(DWORD) override { return E_NOTIMPL; }

 private:
  [[nodiscard]] const PeerFolder& Folder() const { return *State().Find(m_id); }

  HRESULT FillNext(MessageEnumeration* enumeration, MessageProps* props) const {
    if (props->cbSize != sizeof(MessageProps)) {
      return storeapi::kWrongStructSize;
    }
    if (enumeration->next > Folder().CountMessages() && !State().isEndless) {
      return S_FALSE;
    }
    props->dwMessageId = enumeration->next++;
    props->pszSubject = const_cast<char*>(kSubjectOfRecord);
    ++State().live;
    return S_OK;
  }

  uint32_t m_id;
};

}  // namespace

storeapi::IStoreFolder* MakeStoreFolder(uint32_t id) {
  return new PeerStoreFolder(id);
}

}  // namespace postmarker::peer
