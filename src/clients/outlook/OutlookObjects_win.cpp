#include "clients/outlook/OutlookObjects_win.h"

#include <algorithm>
#include <iterator>
#include <vector>

namespace postmarker {
namespace {

// Outlook's published dispatch ids.
constexpr DISPID kName = 0x3001;
constexpr DISPID kClass = 0xF00A;
constexpr DISPID kParent = 0xF001;
constexpr DISPID kMapiObject = 0xF100;
constexpr DISPID kCount = 0x50;
constexpr DISPID kItem = 0x51;
constexpr DISPID kAdd = 0x5F;
constexpr DISPID kFolders = 0x2103;
constexpr DISPID kAddress = 0x3003;
constexpr DISPID kRecipients = 0xF814;
constexpr DISPID kEmail1Address = 0x8083;
constexpr DISPID kEntryId = 0xF01E;
constexpr DISPID kStoreId = 0x3108;
constexpr DISPID kDefaultItemType = 0x3106;
constexpr DISPID kItems = 0x3100;
constexpr DISPID kGetDefaultFolder = 0x210B;
constexpr DISPID kGetFolderFromId = 0x2108;
constexpr DISPID kLogon = 0x2105;
constexpr DISPID kLogoff = 0x2106;
constexpr DISPID kVersion = 0x116;
constexpr DISPID kSession = 0xF00B;
constexpr DISPID kGetNamespace = 0x110;

// Late-bound clients ask for both, since a property may be a method to Outlook.
constexpr WORD kGet = DISPATCH_PROPERTYGET | DISPATCH_METHOD;

// The object in a result, without a reference of its own; null if there is none.
IUnknown* ObjectIn(const Variant& result) {
  const VARIANT value = result.Get();
  if (value.vt == VT_DISPATCH) {
    return value.pdispVal;
  }
  return value.vt == VT_UNKNOWN ? value.punkVal : nullptr;
}

}  // namespace

HRESULT OutlookObject::Attach(IUnknown* object) {
  if (object == nullptr) {
    return E_POINTER;
  }
  ComPtr<IDispatch> dispatch;
  const HRESULT hr = object->QueryInterface(IID_IDispatch, dispatch.PutVoid());
  if (FAILED(hr)) {
    return hr;
  }
  if (!dispatch) {
    return E_POINTER;
  }
  m_object = std::move(dispatch);
  return S_OK;
}

HRESULT OutlookObject::GetDispatch(ComPtr<IDispatch>* dispatch) const {
  return m_object ? m_object->QueryInterface(IID_IDispatch, dispatch->PutVoid()) : E_POINTER;
}

HRESULT OutlookObject::Invoke(DISPID id, WORD kind, std::initializer_list<VARIANT> arguments,
                              Variant* result) const {
  if (!m_object) {
    return E_POINTER;
  }
  // Automation takes the last argument first.
  std::vector<VARIANT> reversed(std::make_reverse_iterator(arguments.end()),
                                std::make_reverse_iterator(arguments.begin()));
  DISPPARAMS parameters = {reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
  return m_object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, kind, &parameters,
                          result != nullptr ? result->Put() : nullptr, nullptr, nullptr);
}

HRESULT OutlookObject::GetNumber(DISPID id, LONG* value) const {
  Variant result;
  const HRESULT hr = Invoke(id, kGet, {}, &result);
  if (FAILED(hr)) {
    return hr;
  }
  if (result.Get().vt != VT_I4) {
    return DISP_E_TYPEMISMATCH;
  }
  *value = result.Get().lVal;
  return S_OK;
}

HRESULT OutlookObject::GetText(DISPID id, std::wstring* value) const {
  Variant result;
  const HRESULT hr = Invoke(id, kGet, {}, &result);
  if (FAILED(hr)) {
    return hr;
  }
  if (result.Get().vt != VT_BSTR) {
    return DISP_E_TYPEMISMATCH;
  }
  const BSTR text = result.Get().bstrVal;
  value->assign(text, ::SysStringLen(text));
  return S_OK;
}

HRESULT OutlookObject::GetMember(DISPID id, OutlookObject* value) const {
  Variant result;
  const HRESULT hr = Invoke(id, kGet, {}, &result);
  return SUCCEEDED(hr) ? value->Attach(ObjectIn(result)) : hr;
}

HRESULT OutlookObject::GetUnknown(DISPID id, ComPtr<IUnknown>* value) const {
  Variant result;
  const HRESULT hr = Invoke(id, kGet, {}, &result);
  if (FAILED(hr)) {
    return hr;
  }
  IUnknown* const object = ObjectIn(result);
  return object != nullptr ? object->QueryInterface(IID_IUnknown, value->PutVoid()) : E_POINTER;
}

HRESULT OutlookObject::Call(DISPID id, std::initializer_list<VARIANT> arguments) const {
  return Invoke(id, DISPATCH_METHOD, arguments, nullptr);
}

HRESULT OutlookObject::CallForObject(DISPID id, std::initializer_list<VARIANT> arguments,
                                     OutlookObject* value) const {
  Variant result;
  const HRESULT hr = Invoke(id, DISPATCH_METHOD, arguments, &result);
  return SUCCEEDED(hr) ? value->Attach(ObjectIn(result)) : hr;
}

HRESULT OutlookObject::Class(OutlookClass* value) const {
  LONG number = 0;
  const HRESULT hr = GetNumber(kClass, &number);
  if (SUCCEEDED(hr)) {
    *value = static_cast<OutlookClass>(number);
  }
  return hr;
}

HRESULT OutlookRecipient::Address(std::wstring* value) const {
  return GetText(kAddress, value);
}

HRESULT OutlookRecipients::Count(LONG* value) const {
  return GetNumber(kCount, value);
}
HRESULT OutlookRecipients::Item(LONG index, OutlookRecipient* value) const {
  return CallForObject(kItem, {NumberVariant(index)}, value);
}

HRESULT OutlookItem::MapiObject(ComPtr<IUnknown>* value) const {
  return GetUnknown(kMapiObject, value);
}
HRESULT OutlookItem::Recipients(OutlookRecipients* value) const {
  return GetMember(kRecipients, value);
}
HRESULT OutlookItem::Email1Address(std::wstring* value) const {
  return GetText(kEmail1Address, value);
}

HRESULT OutlookItems::Count(LONG* value) const {
  return GetNumber(kCount, value);
}
HRESULT OutlookItems::Item(LONG index, OutlookItem* value) const {
  return CallForObject(kItem, {NumberVariant(index)}, value);
}

HRESULT OutlookFolder::Name(std::wstring* value) const {
  return GetText(kName, value);
}
HRESULT OutlookFolder::EntryID(std::wstring* value) const {
  return GetText(kEntryId, value);
}
HRESULT OutlookFolder::StoreID(std::wstring* value) const {
  return GetText(kStoreId, value);
}
HRESULT OutlookFolder::DefaultItemType(LONG* value) const {
  return GetNumber(kDefaultItemType, value);
}
HRESULT OutlookFolder::Parent(OutlookFolder* value) const {
  return GetMember(kParent, value);
}
HRESULT OutlookFolder::Folders(OutlookFolders* value) const {
  return GetMember(kFolders, value);
}
HRESULT OutlookFolder::Items(OutlookItems* value) const {
  return GetMember(kItems, value);
}

HRESULT OutlookFolders::Count(LONG* value) const {
  return GetNumber(kCount, value);
}
HRESULT OutlookFolders::Item(LONG index, OutlookFolder* value) const {
  return CallForObject(kItem, {NumberVariant(index)}, value);
}
HRESULT OutlookFolders::Add(const std::wstring& name, LONG type, OutlookFolder* value) const {
  const Bstr text = MakeBstr(name);
  return CallForObject(kAdd, {TextVariant(text), NumberVariant(type)}, value);
}

HRESULT OutlookNameSpace::Folders(OutlookFolders* value) const {
  return GetMember(kFolders, value);
}
HRESULT OutlookNameSpace::GetDefaultFolder(LONG type, OutlookFolder* value) const {
  return CallForObject(kGetDefaultFolder, {NumberVariant(type)}, value);
}
HRESULT OutlookNameSpace::GetFolderFromID(const std::wstring& entryId, const std::wstring& storeId,
                                          OutlookFolder* value) const {
  const Bstr entry = MakeBstr(entryId);
  const Bstr store = MakeBstr(storeId);
  return CallForObject(kGetFolderFromId, {TextVariant(entry), TextVariant(store)}, value);
}
HRESULT OutlookNameSpace::Logon(const std::wstring& profile) const {
  const Bstr name = MakeBstr(profile);
  return Call(kLogon, {TextVariant(name), MissingVariant(), MissingVariant(), MissingVariant()});
}
HRESULT OutlookNameSpace::Logoff() const {
  return Call(kLogoff, {});
}

HRESULT OutlookApplication::Version(std::wstring* value) const {
  return GetText(kVersion, value);
}
HRESULT OutlookApplication::Session(OutlookNameSpace* value) const {
  return GetMember(kSession, value);
}
HRESULT OutlookApplication::GetNamespace(const std::wstring& type, OutlookNameSpace* value) const {
  const Bstr name = MakeBstr(type);
  return CallForObject(kGetNamespace, {TextVariant(name)}, value);
}

}  // namespace postmarker
