#include "clients/outlook/OutlookStores_win.h"

#include <mapitags.h>

#include "clients/outlook/MapiStoreWalker_win.h"
#include "support/Text.h"

namespace postmarker {
namespace {

using Visit = std::function<bool(const OutlookPlace& place)>;

// False if the library can't tell the stores.
bool VisitByMapi(const MapiLibrary& library, ULONG tag, const Visit& visit) {
  if (!library.IsUsable()) {
    return false;
  }
  MapiStoreWalker walker(library);
  if (FAILED(walker.Result())) {
    return false;
  }
  while (walker.Next()) {
    const OutlookPlace place = {walker.SpecialFolderIdHex(tag), walker.StoreIdHex(),
                                walker.IsDefault()};
    if (!place.folderId.empty() && !visit(place)) {
      break;
    }
  }
  return true;
}

// An empty place if an id can't be read.
OutlookPlace PlaceOf(const OutlookFolder& folder) {
  std::wstring entryId;
  std::wstring storeId;
  if (FAILED(folder.EntryID(&entryId)) || FAILED(folder.StoreID(&storeId))) {
    return {};
  }
  return {Narrow(entryId), Narrow(storeId), false};
}

OutlookPlace DefaultPlace(const OutlookNameSpace& nameSpace, LONG type) {
  OutlookFolder folder;
  OutlookPlace place;
  if (SUCCEEDED(nameSpace.GetDefaultFolder(type, &folder))) {
    place = PlaceOf(folder);
    place.isDefaultStore = true;
  }
  return place;
}

void VisitRoots(const OutlookNameSpace& nameSpace, const Visit& visit) {
  const std::string defaultStore = DefaultPlace(nameSpace, kOlFolderInbox).storeId;
  OutlookFolders roots;
  LONG count = 0;
  if (FAILED(nameSpace.Folders(&roots)) || FAILED(roots.Count(&count))) {
    return;
  }
  for (LONG i = 1; i <= count; ++i) {
    OutlookFolder root;
    if (FAILED(roots.Item(i, &root))) {
      continue;
    }
    OutlookPlace place = PlaceOf(root);
    place.isDefaultStore = place.storeId == defaultStore;
    if (!place.folderId.empty() && !visit(place)) {
      return;
    }
  }
}

}  // namespace

void VisitOutlookStores(const OutlookNameSpace& nameSpace, const MapiLibrary& outlooks,
                        OutlookSpecialFolder folder, const Visit& visit) {
  const bool isRoot = folder == OutlookSpecialFolder::kRoot;
  const ULONG tag = isRoot ? PR_IPM_SUBTREE_ENTRYID : PR_IPM_SENTMAIL_ENTRYID;
  if (outlooks.IsLoaded() ? VisitByMapi(outlooks, tag, visit)
                          : VisitByMapi(MapiLibrary::LoadSystems(), tag, visit)) {
    return;
  }
  if (isRoot) {
    VisitRoots(nameSpace, visit);
    return;
  }
  const OutlookPlace place = DefaultPlace(nameSpace, kOlFolderSentMail);
  if (!place.folderId.empty()) {
    visit(place);
  }
}

}  // namespace postmarker
