#include "clients/outlook/MapiItem_win.h"

#include <mapicode.h>
#include <mapidefs.h>
#include <mapitags.h>

#include <span>

#include "clients/outlook/OutlookTexts.h"
#include "support/Text.h"

namespace postmarker {
namespace {

constexpr IID kMessageInterface = {0x00020307, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
constexpr IID kPropertyInterface = {0x00020303, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

// The set of named properties that contacts have, and the number of the first e-mail address in it.
constexpr GUID kContactProperties = {0x00062004, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
constexpr LONG kContactEmail = 0x8083;

// Few messages have more recipients than one batch holds. A table that never ends is left.
constexpr LONG kRowsPerBatch = 1000;
constexpr int kMaxBatches = 1000;

// What an item without a table answers. Deliberate: the second is published as another error, and
// stores that answer with it have no table either.
bool MeansNoTable(HRESULT hr) {
  return hr == MAPI_E_NOT_FOUND || hr == MAPI_E_BUSY || hr == MAPI_E_NO_SUPPORT;
}

}  // namespace

MapiItemReader::MapiItemReader(const MapiLibrary& outlooks) : m_library(outlooks) {
  if (m_library.IsUsable()) {
    m_initialization.emplace(m_library);
    m_isReady = SUCCEEDED(m_initialization->Result());
  }
}

HRESULT MapiItemReader::OpenMessage(const OutlookItem& item, ComPtr<IMessage>* message) const {
  if (!m_isReady) {
    return E_FAIL;
  }
  ComPtr<IUnknown> object;
  HRESULT hr = item.MapiObject(&object);
  if (SUCCEEDED(hr)) {
    hr = object->QueryInterface(kMessageInterface, message->PutVoid());
  }
  return FAILED(hr) || *message ? hr : E_POINTER;
}

HRESULT MapiItemReader::AddRecipients(const OutlookItem& item, const StopQuery& stop,
                                      AddressSet* addresses) {
  ComPtr<IMessage> message;
  HRESULT hr = OpenMessage(item, &message);
  if (FAILED(hr)) {
    return hr;
  }
  ComPtr<IMAPITable> table;
  hr = message->GetRecipientTable(0, table.Put());
  if (SUCCEEDED(hr)) {
    hr = table ? ReadTable(table.Get(), stop, addresses) : E_POINTER;
  }
  return MeansNoTable(hr) ? S_OK : hr;
}

HRESULT MapiItemReader::ReadTable(IMAPITable* table, const StopQuery& stop,
                                  AddressSet* addresses) const {
  SizedSPropTagArray(1, column) = {1, {PR_EMAIL_ADDRESS_A}};
  HRESULT hr = table->SetColumns(reinterpret_cast<SPropTagArray*>(&column), 0);
  for (int batch = 0; SUCCEEDED(hr) && batch < kMaxBatches && !ShouldStop(stop); ++batch) {
    MapiRows rows(m_library);
    hr = table->QueryRows(kRowsPerBatch, 0, rows.Put());
    if (FAILED(hr) || !rows || rows->cRows == 0) {
      break;
    }
    for (const SRow& row : std::span(rows->aRow, rows->cRows)) {
      if (row.cValues != 0 && row.lpProps != nullptr &&
          row.lpProps->ulPropTag == PR_EMAIL_ADDRESS_A && row.lpProps->Value.lpszA != nullptr) {
        (void)NormaliseOutlookAddress(Widen(row.lpProps->Value.lpszA), addresses);
      }
    }
  }
  return hr;
}

bool MapiItemReader::FindContactTag(IMAPIProp* contact) {
  if (m_contactTag == 0) {
    MAPINAMEID name = {};
    GUID set = kContactProperties;
    name.lpguid = &set;
    name.ulKind = MNID_ID;
    name.Kind.lID = kContactEmail;
    MAPINAMEID* names = &name;
    MapiBuffer<SPropTagArray> tags(m_library);
    if (SUCCEEDED(contact->GetIDsFromNames(1, &names, 0, tags.Put())) && tags &&
        tags->cValues == 1 && PROP_TYPE(tags->aulPropTag[0]) != PT_ERROR) {
      m_contactTag = CHANGE_PROP_TYPE(tags->aulPropTag[0], PT_STRING8);
    }
  }
  return m_contactTag != 0;
}

std::wstring MapiItemReader::ContactAddress(const OutlookItem& item) {
  ComPtr<IMessage> message;
  ComPtr<IMAPIProp> contact;
  if (FAILED(OpenMessage(item, &message)) ||
      FAILED(message->QueryInterface(kPropertyInterface, contact.PutVoid())) || !contact ||
      !FindContactTag(contact.Get())) {
    return {};
  }
  SizedSPropTagArray(1, tags) = {1, {m_contactTag}};
  MapiBuffer<SPropValue> value(m_library);
  ULONG count = 0;
  const HRESULT hr =
      contact->GetProps(reinterpret_cast<SPropTagArray*>(&tags), 0, &count, value.Put());
  if (FAILED(hr) || !value || count != 1 || value->ulPropTag != m_contactTag ||
      value->Value.lpszA == nullptr) {
    return {};
  }
  return Widen(value->Value.lpszA);
}

}  // namespace postmarker
