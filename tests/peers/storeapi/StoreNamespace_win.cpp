// The store itself.
#include "StoreState_win.h"

namespace postmarker::peer {
namespace {

using storeapi::EnumHandle;
using storeapi::FolderId;
using storeapi::IStoreFolder;
using storeapi::MessageIdList;
using storeapi::StoreFolderProps;

constexpr auto kNotFound = static_cast<HRESULT>(0x800CCF65);
constexpr auto kNotInitialized = static_cast<HRESULT>(0x800CCF66);

// The children of a folder, as many as there were when it was begun.
struct FolderEnumeration : Counted {
  std::vector<uint32_t> children;
  size_t next = 0;

  HRESULT FillNext(StoreFolderProps* props) {
    if (!State().Takes(*props)) {
      return storeapi::kWrongStructSize;
    }
    if (State().isEndless && !children.empty()) {
      // Each time a folder that nobody has seen.
      PeerFolder folder;
      folder.id = static_cast<uint32_t>(1'000 + next++);
      return State().Fill(folder, props);
    }
    const PeerFolder* const folder =
        next < children.size() ? State().Find(children[next]) : nullptr;
    if (folder == nullptr) {
      return S_FALSE;
    }
    const HRESULT result = State().Fill(*folder, props);
    next += SUCCEEDED(result) ? 1 : 0;
    return result;
  }
};

FolderEnumeration* Of(EnumHandle handle) {
  return reinterpret_cast<FolderEnumeration*>(handle);
}

class PeerNamespace final
    : public PeerObject<storeapi::IStoreNamespace, storeapi::kStoreNamespaceId> {
 public:
  HRESULT __stdcall Initialize(HWND /*owner*/, DWORD /*reserved*/) override {
    POSTMARKER_PEER_ENTER("Namespace.Initialize");
    m_isInitialized = true;
    return S_OK;
  }
  HRESULT __stdcall OpenSpecialFolder(int sfType, DWORD /*reserved*/,
                                      IStoreFolder** folder) override {
    POSTMARKER_PEER_ENTER("Namespace.OpenSpecialFolder");
    return Open(State().FindSpecial(sfType), folder);
  }
  HRESULT __stdcall OpenFolder(FolderId id, DWORD /*reserved*/, IStoreFolder** folder) override {
    POSTMARKER_PEER_ENTER("Namespace.OpenFolder");
    return Open(State().Find(id), folder);
  }
  HRESULT __stdcall CreateFolder(FolderId parent, const char* name, DWORD /*reserved*/,
                                 FolderId* id) override {
    POSTMARKER_PEER_ENTER("Namespace.CreateFolder");
    PeerFolder* const folder = State().Find(parent);
    if (folder == nullptr) {
      return kNotFound;
    }
    *id = State().AddFolder(folder, name);
    return S_OK;
  }
  HRESULT __stdcall GetFolderProps(FolderId id, DWORD /*reserved*/,
                                   StoreFolderProps* props) override {
    POSTMARKER_PEER_ENTER("Namespace.GetFolderProps");
    if (!m_isInitialized) {
      return kNotInitialized;
    }
    const PeerFolder* const folder = State().Find(id);
    return folder == nullptr ? kNotFound : State().Fill(*folder, props);
  }
  HRESULT __stdcall CopyMoveMessages(IStoreFolder* source, IStoreFolder* target,
                                     MessageIdList* messages, DWORD flags, DWORD flagsRemove,
                                     IUnknown* progress) override {
    POSTMARKER_PEER_ENTER("Namespace.CopyMoveMessages");
    if (messages->cbSize != sizeof(MessageIdList)) {
      return storeapi::kWrongStructSize;
    }
    std::string line = "copymove " + std::to_string(flags) + " " + std::to_string(flagsRemove) +
                       (progress == nullptr ? "" : " progress");
    line += " " + NameOf(source) + " -> " + NameOf(target) + ":";
    for (DWORD i = 0; i < messages->cMsgs; ++i) {
      line += " " + std::to_string(messages->prgdwMsgId[i]);
    }
    State().Note(line);
    return S_OK;
  }
  HRESULT __stdcall GetFirstSubFolder(FolderId parent, StoreFolderProps* props,
                                      EnumHandle* handle) override {
    POSTMARKER_PEER_ENTER("Namespace.GetFirstSubFolder");
    const PeerFolder* const folder = State().Find(parent);
    if (folder == nullptr) {
      return kNotFound;
    }
    auto* const enumeration = new FolderEnumeration;
    enumeration->children = folder->children;
    *handle = reinterpret_cast<EnumHandle>(enumeration);
    return enumeration->FillNext(props);
  }
  HRESULT __stdcall GetNextSubFolder(EnumHandle handle, StoreFolderProps* props) override {
    POSTMARKER_PEER_ENTER("Namespace.GetNextSubFolder");
    return Of(handle)->FillNext(props);
  }
  HRESULT __stdcall GetSubFolderClose(EnumHandle handle) override {
    delete Of(handle);
    POSTMARKER_PEER_ENTER("Namespace.GetSubFolderClose");
    return S_OK;
  }

  // Not called by the product.
  HRESULT __stdcall GetDirectory(char*, DWORD) override { return E_NOTIMPL; }
  HRESULT __stdcall RenameFolder(FolderId, DWORD, const char*) override { return E_NOTIMPL; }
  HRESULT __stdcall MoveFolder(FolderId, FolderId, DWORD) override { return E_NOTIMPL; }
  HRESULT __stdcall DeleteFolder(FolderId, DWORD) override { return E_NOTIMPL; }
  HRESULT __stdcall RegisterNotification(DWORD, HWND) override { return E_NOTIMPL; }
  HRESULT __stdcall UnregisterNotification(DWORD, HWND) override { return E_NOTIMPL; }
  HRESULT __stdcall CompactAll(DWORD) override { return E_NOTIMPL; }

 private:
  static HRESULT Open(const PeerFolder* folder, IStoreFolder** opened) {
    *opened = folder == nullptr ? nullptr : MakeStoreFolder(folder->id);
    return folder == nullptr ? kNotFound : S_OK;
  }

  static std::string NameOf(IStoreFolder* folder) {
    StoreFolderProps props;
    storeapi::StoreFolderPropsLong longForm;
    if (folder->GetFolderProps(0, &props) != storeapi::kWrongStructSize) {
      return props.szName;
    }
    folder->GetFolderProps(0, reinterpret_cast<StoreFolderProps*>(&longForm));
    return longForm.szName;
  }

  bool m_isInitialized = false;
};

}  // namespace

storeapi::IStoreNamespace* MakeStoreNamespace() {
  return new PeerNamespace;
}

}  // namespace postmarker::peer
