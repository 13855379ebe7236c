#include "clients/storeapi/StoreSession_win.h"

#include <deque>
#include <unordered_set>

#include "clients/storeapi/StoreLocation.h"
#include "support/Registry_win.h"

namespace postmarker::storeapi {
namespace {

constexpr REGSAM kReadAndWrite = 0x2001F;  // what the client itself asks for
constexpr FolderId kRootFolder = 0;

// Stores have some hundred folders. One that never ends, ends here.
constexpr size_t kMaxFolders = 100'000;

// Is there something in a record that an enumeration was asked to fill.
bool IsFilled(HRESULT result) {
  return SUCCEEDED(result) && result != S_FALSE;
}

// Deliberate: written, although this program only reads: at a count of 0 the client does not start
// to compact a store that somebody has open.
void StopCompacting() {
  const std::wstring identity = ReadCurrentIdentity(ThisMachine());
  if (identity.empty()) {
    return;
  }
  RegistryKey key = RegistryKey::Open(HKEY_CURRENT_USER, IdentityKey(identity), kReadAndWrite);
  if (!key) {
    key = RegistryKey::Open(HKEY_CURRENT_USER, kWindowsMailKey, kReadAndWrite);
  }
  key.WriteDword(L"Compact Check Count", 0);
}

// The folders below one folder.
class SubFolderWalk {
 public:
  SubFolderWalk(IStoreNamespace* store, FolderId folder, StoreFolderTree::Key key)
      : m_store(store), m_key(key) {
    m_result = m_query.AskEitherForm([&](StoreFolderProps* props) {
      Close();  // of the form that the store did not take
      return m_store->GetFirstSubFolder(folder, props, &m_handle);
    });
  }
  SubFolderWalk(const SubFolderWalk&) = delete;
  SubFolderWalk& operator=(const SubFolderWalk&) = delete;
  ~SubFolderWalk() { Close(); }

  // The key of the folder whose folders these are.
  [[nodiscard]] StoreFolderTree::Key Parent() const { return m_key; }

  [[nodiscard]] HRESULT Result() const { return m_result; }
  [[nodiscard]] bool HasFolder() const { return IsFilled(m_result) && m_handle != nullptr; }
  [[nodiscard]] const StoreFolderProps& Folder() const { return m_query.Props(); }

  void Next() {
    m_result = m_query.AskAgain(
        [this](StoreFolderProps* props) { return m_store->GetNextSubFolder(m_handle, props); });
  }

 private:
  void Close() {
    if (m_handle != nullptr) {
      (void)m_store->GetSubFolderClose(m_handle);
      m_handle = nullptr;
    }
  }

  IStoreNamespace* m_store;
  StoreFolderTree::Key m_key;
  EnumHandle m_handle = nullptr;
  FolderPropsQuery m_query;
  HRESULT m_result = S_OK;
};

// The levels of folders that are open, from the root's downward.
class FolderLevels {
 public:
  explicit FolderLevels(IStoreNamespace* store) : m_store(store) {}

  // Goes below a folder, unless that was done: a store that contains itself has an end.
  bool Enter(FolderId folder, StoreFolderTree::Key key) {
    if (!m_entered.insert(folder).second) {
      return false;
    }
    const SubFolderWalk& level = m_levels.emplace_back(m_store, folder, key);
    if (FAILED(level.Result())) {
      ::OutputDebugStringA(SubFolderFailureText(level.Result()).c_str());
      m_result = FAILED(m_result) ? m_result : level.Result();
    }
    return true;
  }

  [[nodiscard]] bool IsEmpty() const { return m_levels.empty(); }
  [[nodiscard]] SubFolderWalk& Deepest() { return m_levels.back(); }

  // Goes on with the folder after the one that was entered here.
  void Leave() {
    m_levels.pop_back();
    if (!m_levels.empty()) {
      m_levels.back().Next();
    }
  }

  [[nodiscard]] HRESULT Result() const { return m_result; }

 private:
  IStoreNamespace* m_store;
  std::deque<SubFolderWalk> m_levels;
  std::unordered_set<FolderId> m_entered;
  HRESULT m_result = S_OK;
};

}  // namespace

StoreSession::StoreSession() : m_result(m_apartment.Result()) {
  if (SUCCEEDED(m_result)) {
    m_result = ::CoCreateInstance(kStoreNamespaceClass, nullptr, CLSCTX_ALL, kStoreNamespaceId,
                                  m_store.PutVoid());
  }
  if (SUCCEEDED(m_result)) {
    m_result = m_store ? m_store->Initialize(nullptr, 0) : E_NOINTERFACE;
  }
  if (FAILED(m_result)) {
    m_store.Reset();
    return;
  }
  StopCompacting();
}

HRESULT WalkFolders(IStoreNamespace* store, const StopQuery& stop, StoreFolderTree* tree) {
  FolderPropsQuery root;
  const HRESULT result = root.AskEitherForm(
      [store](StoreFolderProps* props) { return store->GetFolderProps(kRootFolder, 0, props); });
  if (FAILED(result)) {
    return result;
  }
  FolderLevels levels(store);
  levels.Enter(root.Props().dwFolderId, tree->Add(std::nullopt, root.Props()));
  while (!levels.IsEmpty() && tree->Size() < kMaxFolders && !ShouldStop(stop)) {
    SubFolderWalk& level = levels.Deepest();
    if (!level.HasFolder()) {
      levels.Leave();
      continue;
    }
    const FolderId folder = level.Folder().dwFolderId;
    if (!levels.Enter(folder, tree->Add(level.Parent(), level.Folder()))) {
      level.Next();
    }
  }
  return levels.Result();
}

MessageWalk::MessageWalk(IStoreFolder* folder) : m_folder(folder) {
  Take(m_folder->GetFirstMessage(kFastMessageProps, 0, kFirstMessage, &m_props, &m_handle));
}

MessageWalk::~MessageWalk() {
  GiveBack();
  if (m_handle != nullptr) {
    (void)m_folder->GetMessageClose(m_handle);
  }
}

void MessageWalk::Next() {
  GiveBack();
  Take(m_folder->GetNextMessage(m_handle, kFastMessageProps, &m_props));
}

void MessageWalk::Take(HRESULT result) {
  m_hasMessage = IsFilled(result);
}

void MessageWalk::GiveBack() {
  if (m_hasMessage) {
    (void)m_folder->FreeMessageProps(&m_props);
  }
  m_hasMessage = false;
  m_props = {};
}

}  // namespace postmarker::storeapi
