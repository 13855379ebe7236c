// A walk through the message stores of the current profile by Extended MAPI.
#pragma once

#include <windows.h>

#include <mapix.h>

#include <string>

#include "clients/outlook/MapiLibrary_win.h"
#include "support/ComPtr_win.h"

namespace postmarker {

// Stands before the first store at first. For one thread, which has logged on to the profile
// already, in this program or in Outlook: no dialog is shown. Nothing throws but for want of
// memory.
class MapiStoreWalker {
 public:
  // The library must be usable, and outlive the walker.
  explicit MapiStoreWalker(const MapiLibrary& library);
  MapiStoreWalker(const MapiStoreWalker&) = delete;
  MapiStoreWalker& operator=(const MapiStoreWalker&) = delete;
  ~MapiStoreWalker();

  // Could the table of stores be read.
  [[nodiscard]] HRESULT Result() const { return m_result; }

  // Goes on to the next store that can be opened. False if there is none.
  bool Next();

  // Of the store that the walk stands at: its id as hexadecimal digits, and whether it is the
  // profile's default store.
  [[nodiscard]] const std::string& StoreIdHex() const { return m_storeIdHex; }
  [[nodiscard]] bool IsDefault() const { return m_isDefault; }

  // The id of one of its special folders, by the property that has it; empty if it has none.
  [[nodiscard]] std::string SpecialFolderIdHex(ULONG tag) const;

 private:
  HRESULT ReadStores();
  bool OpenStore(const SRow& row);
  void LeaveStore();

  const MapiLibrary& m_library;
  MapiInitialization m_initialization;
  ComPtr<IMAPISession> m_session;
  MapiRows m_rows;
  ComPtr<IMsgStore> m_store;
  ULONG m_nextRow = 0;
  std::string m_storeIdHex;
  bool m_isDefault = false;
  HRESULT m_result;
};

}  // namespace postmarker
