// What Extended MAPI tells of one item of Outlook.
#pragma once

#include <windows.h>

#include <mapix.h>

#include <optional>
#include <string>

#include "clients/outlook/MapiLibrary_win.h"
#include "clients/outlook/OutlookObjects_win.h"
#include "postmarker/WizardRequest.h"
#include "support/StopQuery.h"

namespace postmarker {

// Reads items by Outlook's MAPI library, for the life of one operation on one thread. Without a
// usable library each question fails, and the object model is to be asked.
class MapiItemReader {
 public:
  // The library must outlive the reader.
  explicit MapiItemReader(const MapiLibrary& outlooks);
  MapiItemReader(const MapiItemReader&) = delete;
  MapiItemReader& operator=(const MapiItemReader&) = delete;

  // Adds the addresses in the item's table of recipients. A failure means that the table can't be
  // read, or not to its end; S_OK also if the item has none. `stop` is asked before each batch of
  // rows, and ends the reading with S_OK.
  HRESULT AddRecipients(const OutlookItem& item, const StopQuery& stop, AddressSet* addresses);

  // A contact's first e-mail address; empty if it can't be read or there is none. For contacts of
  // one store: the number of the property is looked up once.
  std::wstring ContactAddress(const OutlookItem& item);

 private:
  HRESULT OpenMessage(const OutlookItem& item, ComPtr<IMessage>* message) const;
  HRESULT ReadTable(IMAPITable* table, const StopQuery& stop, AddressSet* addresses) const;
  bool FindContactTag(IMAPIProp* contact);

  const MapiLibrary& m_library;
  std::optional<MapiInitialization> m_initialization;
  bool m_isReady = false;
  ULONG m_contactTag = 0;  // 0: not known yet
};

}  // namespace postmarker
