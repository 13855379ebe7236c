#include "clients/outlook/MapiStoreWalker_win.h"

#include <mapidefs.h>
#include <mapitags.h>

namespace postmarker {
namespace {

// Shares the session that is there, and shows no dialog.
constexpr ULONG kLogonFlags = MAPI_EXTENDED | MAPI_ALLOW_OTHERS;
constexpr ULONG kOpenFlags = MAPI_BEST_ACCESS | MAPI_DEFERRED_ERRORS;

// What a row of the table has, in this order.
enum Column : ULONG { kEntryId, kDefaultStore, kColumns };

}  // namespace

MapiStoreWalker::MapiStoreWalker(const MapiLibrary& library)
    : m_library(library), m_initialization(library), m_rows(library), m_result(ReadStores()) {}

MapiStoreWalker::~MapiStoreWalker() {
  LeaveStore();
}

HRESULT MapiStoreWalker::ReadStores() {
  HRESULT hr = m_initialization.Result();
  if (FAILED(hr)) {
    return hr;
  }
  hr = m_library.logonEx(0, nullptr, nullptr, kLogonFlags, m_session.Put());
  if (FAILED(hr) || !m_session) {
    return FAILED(hr) ? hr : E_POINTER;
  }
  ComPtr<IMAPITable> table;
  hr = m_session->GetMsgStoresTable(0, table.Put());
  if (FAILED(hr) || !table) {
    return FAILED(hr) ? hr : E_POINTER;
  }
  SizedSPropTagArray(kColumns, columns) = {kColumns, {PR_ENTRYID, PR_DEFAULT_STORE}};
  hr = m_library.hrQueryAllRows(table.Get(), reinterpret_cast<SPropTagArray*>(&columns), nullptr,
                                nullptr, 0, m_rows.Put());
  return FAILED(hr) || m_rows ? hr : E_POINTER;
}

bool MapiStoreWalker::Next() {
  LeaveStore();
  while (m_rows && m_nextRow < m_rows->cRows) {
    if (OpenStore(m_rows->aRow[m_nextRow++])) {
      return true;
    }
  }
  return false;
}

bool MapiStoreWalker::OpenStore(const SRow& row) {
  if (row.lpProps == nullptr || row.cValues < kColumns ||
      row.lpProps[kEntryId].ulPropTag != PR_ENTRYID) {
    return false;
  }
  const SBinary& id = row.lpProps[kEntryId].Value.bin;
  m_storeIdHex = HexText(m_library, id);
  if (m_storeIdHex.empty()) {
    return false;
  }
  const SPropValue& isDefault = row.lpProps[kDefaultStore];
  m_isDefault = isDefault.ulPropTag == PR_DEFAULT_STORE && isDefault.Value.b != 0;
  const HRESULT hr = m_session->OpenMsgStore(0, id.cb, reinterpret_cast<ENTRYID*>(id.lpb), nullptr,
                                             kOpenFlags, m_store.Put());
  return SUCCEEDED(hr) && m_store;
}

void MapiStoreWalker::LeaveStore() {
  if (m_store) {
    ULONG flags = LOGOFF_ORDERLY;
    m_store->StoreLogoff(&flags);
  }
  m_store.Reset();
}

std::string MapiStoreWalker::SpecialFolderIdHex(ULONG tag) const {
  MapiBuffer<SPropValue> value(m_library);
  if (!m_store || FAILED(m_library.hrGetOneProp(m_store.Get(), tag, value.Put())) || !value ||
      value->ulPropTag != tag) {
    return {};
  }
  return HexText(m_library, value->Value.bin);
}

}  // namespace postmarker
