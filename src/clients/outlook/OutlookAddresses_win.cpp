#include "clients/outlook/OutlookAddresses_win.h"

#include "clients/Cancel.h"
#include "clients/outlook/MapiItem_win.h"
#include "clients/outlook/OutlookSession_win.h"
#include "clients/outlook/OutlookStores_win.h"
#include "clients/outlook/OutlookTexts.h"
#include "ipc/HookConnection_win.h"
#include "settings/AddressLists.h"
#include "support/Text.h"

namespace postmarker {
namespace {

void AddRecipientsOf(const OutlookItem& item, const StopQuery& stop, AddressSet* addresses) {
  OutlookRecipients recipients;
  LONG count = 0;
  if (FAILED(item.Recipients(&recipients)) || FAILED(recipients.Count(&count))) {
    return;
  }
  for (LONG i = 1; i <= count && !ShouldStop(stop); ++i) {
    OutlookRecipient recipient;
    std::wstring address;
    if (SUCCEEDED(recipients.Item(i, &recipient)) && SUCCEEDED(recipient.Address(&address))) {
      (void)NormaliseOutlookAddress(address, addresses);
    }
  }
}

bool OpenItem(const OutlookItems& items, LONG index, OutlookClass wanted, OutlookItem* item) {
  OutlookClass kind = {};
  return SUCCEEDED(items.Item(index, item)) && SUCCEEDED(item->Class(&kind)) && kind == wanted;
}

// Goes through the folders of sent items.
class SentMailReader {
 public:
  // Everything must outlive the object.
  SentMailReader(const MapiLibrary& outlooks, MapiItemReader* reader,
                 const ProgressCallbacks* callbacks, const StopQuery& stop, AddressSet* addresses)
      : m_outlooks(outlooks),
        m_reader(reader),
        m_callbacks(callbacks),
        m_stop(stop),
        m_addresses(addresses) {}

  void Read(const OutlookNameSpace& nameSpace) {
    VisitOutlookStores(nameSpace, m_outlooks, OutlookSpecialFolder::kSentMail,
                       [&](const OutlookPlace& place) {
                         if (!ShouldStop(m_stop)) {
                           ReadStore(nameSpace, place);
                         }
                         return !ShouldStop(m_stop);
                       });
  }

 private:
  void ReadStore(const OutlookNameSpace& nameSpace, const OutlookPlace& place) {
    OutlookFolder folder;
    OutlookItems items;
    LONG count = 0;
    if (FAILED(nameSpace.GetFolderFromID(Widen(place.folderId), Widen(place.storeId), &folder)) ||
        FAILED(folder.Items(&items)) || FAILED(items.Count(&count))) {
      return;
    }
    if (CanReport(m_callbacks) && m_callbacks->setProgress != nullptr) {
      m_callbacks->setProgress(m_callbacks->handle, m_callbacks->text, count);
    }
    if (ShouldStop(m_stop)) {
      return;
    }
    for (LONG i = 1; i <= count; ++i) {
      if (CanReport(m_callbacks) && m_callbacks->increaseProgress != nullptr) {
        m_callbacks->increaseProgress(m_callbacks->handle, 1);
      }
      if (ShouldStop(m_stop)) {
        return;
      }
      ReadItem(items, i);
    }
  }

  void ReadItem(const OutlookItems& items, LONG index) {
    OutlookItem item;
    if (OpenItem(items, index, OutlookClass::kMail, &item) &&
        FAILED(m_reader->AddRecipients(item, m_stop, m_addresses))) {
      AddRecipientsOf(item, m_stop, m_addresses);
    }
  }

  const MapiLibrary& m_outlooks;
  MapiItemReader* m_reader;
  const ProgressCallbacks* m_callbacks;
  const StopQuery& m_stop;
  AddressSet* m_addresses;
};

ResultCode CollectSent(IUnknown* application, const ProgressCallbacks* callbacks,
                       const StopQuery& stop, AddressSet* addresses) {
  OutlookNameSpace nameSpace;
  const ResultCode result = OpenOutlookNamespace(application, &nameSpace);
  if (Succeeded(result)) {
    const MapiLibrary outlooks = MapiLibrary::LoadOutlooks();
    MapiItemReader reader(outlooks);
    SentMailReader(outlooks, &reader, callbacks, stop, addresses).Read(nameSpace);
  }
  return result;
}

HRESULT OpenContacts(IUnknown* application, OutlookItems* items, LONG* count) {
  OutlookNameSpace nameSpace;
  OutlookFolder folder;
  HRESULT hr = OpenOutlookNamespace(application, &nameSpace);
  if (SUCCEEDED(hr)) {
    hr = nameSpace.GetDefaultFolder(kOlFolderContacts, &folder);
  }
  if (SUCCEEDED(hr)) {
    hr = folder.Items(items);
  }
  return SUCCEEDED(hr) ? items->Count(count) : hr;
}

ResultCode CollectContacts(IUnknown* application, const StopQuery& stop, AddressSet* addresses) {
  OutlookItems items;
  LONG count = 0;
  const HRESULT hr = OpenContacts(application, &items, &count);
  const MapiLibrary outlooks = MapiLibrary::LoadOutlooks();
  MapiItemReader reader(outlooks);
  for (LONG i = 1; SUCCEEDED(hr) && i <= count && !ShouldStop(stop); ++i) {
    OutlookItem contact;
    if (!OpenItem(items, i, OutlookClass::kContact, &contact)) {
      continue;
    }
    std::wstring address = reader.ContactAddress(contact);
    if (address.empty()) {
      (void)contact.Email1Address(&address);
    }
    (void)NormaliseOutlookAddress(address, addresses);
  }
  return hr;
}

}  // namespace

ResultCode CollectOutlookSentAddresses(IUnknown* application, const ProgressCallbacks* callbacks,
                                       UseHook useHook, const StopQuery& stop,
                                       AddressSet* addresses) {
  const StopQuery stopOrCancel = [&] { return ShouldStop(stop) || IsCancelled(callbacks); };
  return HookFirst(
      useHook == UseHook::kYes, kOutlookAddIn,
      [&](HookConnection& hook) { return OutcomeOf(hook.ListSentAddresses(addresses)); },
      [&] {
        return ShouldStop(stopOrCancel)
                   ? kOk
                   : CollectSent(application, callbacks, stopOrCancel, addresses);
      },
      {}, stopOrCancel);
}

ResultCode CollectOutlookContacts(IUnknown* application, UseHook useHook, const StopQuery& stop,
                                  AddressSet* addresses) {
  return HookFirst(
      useHook == UseHook::kYes, kOutlookAddIn,
      [&](HookConnection& hook) { return OutcomeOf(hook.ListContacts(addresses)); },
      [&] { return ShouldStop(stop) ? kOk : CollectContacts(application, stop, addresses); }, {},
      stop);
}

ResultCode HarvestOutlookSentAddresses(IUnknown* application) {
  AddressSet addresses;
  const ResultCode result =
      CollectOutlookSentAddresses(application, nullptr, UseHook::kYes, {}, &addresses);
  AddAddressesToWhitelist(addresses);
  return result;
}

ResultCode HarvestOutlookContacts(IUnknown* application) {
  AddressSet addresses;
  const ResultCode result = CollectOutlookContacts(application, UseHook::kYes, {}, &addresses);
  AddAddressesToWhitelist(addresses);
  return result;
}

}  // namespace postmarker
