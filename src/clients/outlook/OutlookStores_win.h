// The message stores of the current profile.
#pragma once

#include <functional>
#include <string>

#include "clients/outlook/MapiLibrary_win.h"
#include "clients/outlook/OutlookObjects_win.h"

namespace postmarker {

// A special folder of a store, by the ids that GetFolderFromID takes.
struct OutlookPlace {
  std::string folderId;
  std::string storeId;
  bool isDefaultStore = false;
};

enum class OutlookSpecialFolder {
  kRoot,  // above all folders that a person sees
  kSentMail,
};

// Calls `visit` with that folder of each store that has one, in the order of the stores, until it
// returns false. `outlooks` is Outlook's MAPI library, as far as there is one; without it the
// system's is asked.
//
// If MAPI can't be asked at all, as with an Outlook of the other width, the object model is: it
// knows the roots of all stores, and the sent mail of the default one.
void VisitOutlookStores(const OutlookNameSpace& nameSpace, const MapiLibrary& outlooks,
                        OutlookSpecialFolder folder,
                        const std::function<bool(const OutlookPlace& place)>& visit);

}  // namespace postmarker
