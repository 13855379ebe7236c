#include "clients/outlook/OutlookFolderList_win.h"

#include <set>
#include <utility>
#include <vector>

#include "clients/outlook/OutlookSession_win.h"
#include "clients/outlook/OutlookStores_win.h"
#include "ipc/HookConnection_win.h"
#include "support/Text.h"

namespace postmarker {
namespace {

constexpr wchar_t kPathStart[] = L"\\\\";
constexpr wchar_t kSeparator = L'\\';

// More levels than a person makes: parents that lead in a circle end here.
constexpr int kMaxLevels = 1000;

// What a row of calls comes to, each of which is made only if the one before it worked.
class Outcome {
 public:
  bool Is(ResultCode result) {
    m_result = result;
    return Succeeded(result);
  }
  [[nodiscard]] ResultCode Result() const { return m_result; }

 private:
  ResultCode m_result = kOk;
};

// The folders of one store. Each look at the application is a call to another program, so `stop` is
// asked before each folder.
class StoreLister {
 public:
  StoreLister(const OutlookNameSpace& nameSpace, const OutlookPlace& place, const StopQuery& stop,
              MailFolderList* folders)
      : m_nameSpace(nameSpace), m_place(place), m_stop(stop), m_folders(folders) {}

  void List() {
    OutlookFolder root;
    std::wstring name;
    if (FAILED(
            m_nameSpace.GetFolderFromID(Widen(m_place.folderId), Widen(m_place.storeId), &root)) ||
        FAILED(root.Name(&name))) {
      return;
    }
    m_seen.insert(m_place.folderId);
    m_folders->push_back({kPathStart + name, m_place.folderId, m_place.storeId, Flag()});
    Open(root, kPathStart + name);
    while (!m_open.empty()) {
      Step();
    }
  }

 private:
  // A folder whose children are being listed.
  struct Level {
    OutlookFolders children;
    LONG count = 0;
    LONG next = 1;
    std::wstring path;
  };

  [[nodiscard]] uint32_t Flag() const { return m_place.isDefaultStore ? 1 : 0; }

  void Open(const OutlookFolder& folder, const std::wstring& path) {
    Level level;
    level.path = path;
    if (m_open.size() < kMaxLevels && SUCCEEDED(folder.Folders(&level.children)) &&
        SUCCEEDED(level.children.Count(&level.count))) {
      m_open.push_back(std::move(level));
    }
  }

  void Step() {
    Level& level = m_open.back();
    if (ShouldStop(m_stop)) {
      m_open.clear();
      return;
    }
    if (level.next > level.count) {
      m_open.pop_back();
      return;
    }
    OutlookFolder child;
    MailFolderRef ref;
    if (SUCCEEDED(level.children.Item(level.next++, &child)) && Describe(child, level.path, &ref) &&
        m_seen.insert(ref.firstId).second) {
      m_folders->push_back(ref);
      Open(child, ref.name);
    }
  }

  // False for a folder that is not for mail, and for one that can't be read.
  bool Describe(const OutlookFolder& folder, const std::wstring& parentPath,
                MailFolderRef* ref) const {
    LONG type = 0;
    std::wstring name;
    std::wstring entryId;
    std::wstring storeId;
    if (FAILED(folder.DefaultItemType(&type)) || type != kOlMailItem ||
        FAILED(folder.Name(&name)) || FAILED(folder.EntryID(&entryId)) ||
        FAILED(folder.StoreID(&storeId))) {
      return false;
    }
    *ref = {parentPath + kSeparator + name, Narrow(entryId), Narrow(storeId), Flag()};
    return true;
  }

  const OutlookNameSpace& m_nameSpace;
  const OutlookPlace& m_place;
  const StopQuery& m_stop;
  MailFolderList* m_folders;
  std::vector<Level> m_open;
  std::set<std::string> m_seen;  // ids of folders, so that a circle of them ends
};

ResultCode ListByObjectModel(IUnknown* application, const StopQuery& stop,
                             MailFolderList* folders) {
  OutlookNameSpace nameSpace;
  const ResultCode result = OpenOutlookNamespace(application, &nameSpace);
  if (Failed(result)) {
    return result;
  }
  VisitOutlookStores(nameSpace, MapiLibrary::LoadOutlooks(), OutlookSpecialFolder::kRoot,
                     [&](const OutlookPlace& place) {
                       if (ShouldStop(stop)) {
                         return false;
                       }
                       StoreLister(nameSpace, place, stop, folders).List();
                       return true;
                     });
  return kOk;
}

ResultCode FindByObjectModel(IUnknown* application, LONG type, MailFolderList* folders) {
  OutlookNameSpace nameSpace;
  OutlookFolder folder;
  MailFolderRef ref;
  std::wstring entryId;
  std::wstring storeId;
  Outcome outcome;
  if (outcome.Is(OpenOutlookNamespace(application, &nameSpace)) &&
      outcome.Is(nameSpace.GetDefaultFolder(type, &folder)) &&
      outcome.Is(BuildOutlookFolderPath(folder, &ref.name)) &&
      outcome.Is(folder.EntryID(&entryId)) && outcome.Is(folder.StoreID(&storeId))) {
    ref.firstId = Narrow(entryId);
    ref.secondId = Narrow(storeId);
    ref.flag = 1;
    folders->push_back(std::move(ref));
  }
  return outcome.Result();
}

ResultCode CreateByObjectModel(IUnknown* application, const MailFolderRef& parent,
                               const std::wstring& name, MailFolderRef* created) {
  ComPtr<IDispatch> outlook;
  ComPtr<IDispatch> session;
  OutlookNameSpace nameSpace;
  OutlookFolder parentFolder;
  OutlookFolders siblings;
  OutlookFolder folder;
  MailFolderRef ref = {{}, {}, parent.secondId, parent.flag};
  std::wstring entryId;
  Outcome outcome;
  if (outcome.Is(application != nullptr
                     ? application->QueryInterface(IID_IDispatch, outlook.PutVoid())
                     : StartOutlook(&outlook)) &&
      outcome.Is(GetOutlookNamespace(outlook.Get(), &session)) &&
      outcome.Is(nameSpace.Attach(session.Get())) &&
      outcome.Is(nameSpace.GetFolderFromID(Widen(parent.firstId), Widen(parent.secondId),
                                           &parentFolder)) &&
      outcome.Is(parentFolder.Folders(&siblings)) &&
      outcome.Is(siblings.Add(name, kOlFolderInbox, &folder)) &&
      outcome.Is(folder.EntryID(&entryId)) &&
      outcome.Is(BuildOutlookFolderPath(folder, &ref.name))) {
    ref.firstId = Narrow(entryId);
    *created = std::move(ref);
  }
  return outcome.Result();
}

}  // namespace

ResultCode ListOutlookFolders(IUnknown* application, UseHook useHook, const StopQuery& stop,
                              std::wstring* text, MailFolderList* folders) {
  return HookFirst(
      useHook == UseHook::kYes, kOutlookAddIn,
      [&](HookConnection& hook) { return OutcomeOf(hook.ListFolders(text, folders)); },
      [&] {
        if (ShouldStop(stop)) {
          return kOk;
        }
        return application == nullptr ? kFail : ListByObjectModel(application, stop, folders);
      },
      {}, stop);
}

ResultCode GetOutlookDefaultFolderRef(IUnknown* application, LONG type, UseHook useHook,
                                      const StopQuery& stop, MailFolderList* folders) {
  return HookFirst(
      useHook == UseHook::kYes, kOutlookAddIn,
      [&](HookConnection& hook) {
        MailFolderRef ref;
        const ResultCode result = hook.LookUpFolder(static_cast<uint32_t>(type), &ref);
        if (ref != MailFolderRef()) {
          folders->push_back(std::move(ref));
        }
        return OutcomeOf(result);
      },
      [&] { return FindByObjectModel(application, type, folders); }, {}, stop);
}

ResultCode CreateOutlookFolder(IUnknown* application, const MailFolderRef& parent,
                               const std::wstring& name, UseHook useHook, const StopQuery& stop,
                               MailFolderRef* created) {
  return HookFirst(
      useHook == UseHook::kYes, kOutlookAddIn,
      [&](HookConnection& hook) {
        MailFolderRef ref;
        if (Failed(hook.MakeFolder(name, parent, &ref)) || ref == MailFolderRef()) {
          return HookOutcome::kAskStore;
        }
        *created = std::move(ref);
        return HookOutcome::kDone;
      },
      [&] { return CreateByObjectModel(application, parent, name, created); }, {}, stop);
}

HRESULT BuildOutlookFolderPath(const OutlookFolder& folder, std::wstring* path) {
  std::wstring built;
  std::wstring name;
  OutlookFolder parent;
  OutlookClass kind = {};
  const OutlookFolder* current = &folder;
  Outcome outcome;
  for (int level = 0; level < kMaxLevels; ++level) {
    if (!outcome.Is(current->Name(&name)) || !outcome.Is(current->Parent(&parent)) ||
        !outcome.Is(parent.Class(&kind))) {
      return outcome.Result();
    }
    built.insert(0, name);
    if (kind != OutlookClass::kFolder) {
      *path = kPathStart + built;
      return S_OK;
    }
    built.insert(0, 1, kSeparator);
    current = &parent;
  }
  return E_FAIL;
}

}  // namespace postmarker
