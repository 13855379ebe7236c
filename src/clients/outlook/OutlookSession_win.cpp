#include "clients/outlook/OutlookSession_win.h"

#include <array>

#include "support/Registry_win.h"
#include "support/Variant_win.h"

namespace postmarker {
namespace {

// "Outlook.Application".
constexpr CLSID kOutlookApplication = {0x0006F03A, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
constexpr CLSID kGlobalInterfaceTable = {0x00000323, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

// Outlook's published dispatch ids.
constexpr DISPID kSessionProperty = 0xF00B;
constexpr DISPID kLogonMethod = 0x2105;
constexpr DISPID kLogoffMethod = 0x2106;

constexpr wchar_t kProfilesKey[] =
    L"Software\\Microsoft\\Windows NT\\CurrentVersion\\Windows Messaging Subsystem\\Profiles\\";
constexpr DWORD kProfileRoom = 8711 * sizeof(wchar_t);
constexpr REGSAM kProfileAccess = 0x2001F;

HRESULT GetObjectProperty(IDispatch* object, DISPID id, ComPtr<IDispatch>* out) {
  Variant result;
  DISPPARAMS none = {};
  const HRESULT hr =
      object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET | DISPATCH_METHOD,
                     &none, result.Put(), nullptr, nullptr);
  if (FAILED(hr)) {
    return hr;
  }
  if (result.Get().vt != VT_DISPATCH || result.Get().pdispVal == nullptr) {
    return E_POINTER;
  }
  return result.Get().pdispVal->QueryInterface(IID_IDispatch, out->PutVoid());
}

HRESULT LogOn(IDispatch* nameSpace) {
  std::wstring name;
  (void)GetOutlookDefaultProfile(&name);
  const Bstr profile = MakeBstr(name);
  // In reverse order: new session, show dialog, password, profile.
  std::array<VARIANT, 4> arguments = {MissingVariant(), MissingVariant(), MissingVariant(),
                                      TextVariant(profile)};
  DISPPARAMS parameters = {arguments.data(), nullptr, static_cast<UINT>(arguments.size()), 0};
  return nameSpace->Invoke(kLogonMethod, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD,
                           &parameters, nullptr, nullptr, nullptr);
}

}  // namespace

ResultCode GetOutlookDefaultProfile(std::wstring* name) {
  const RegistryKey key = RegistryKey::Open(HKEY_CURRENT_USER, kProfilesKey, kProfileAccess);
  const auto value = key.ReadString(L"DefaultProfile", kProfileRoom);
  *name = value.value_or(std::wstring());
  return value ? kOk : kFail;
}

ResultCode StartOutlook(ComPtr<IDispatch>* application) {
  ComPtr<IUnknown> object;
  HRESULT hr =
      ::CoCreateInstance(kOutlookApplication, nullptr, CLSCTX_ALL, IID_IUnknown, object.PutVoid());
  if (SUCCEEDED(hr)) {
    hr = ::OleRun(object.Get());
  }
  return SUCCEEDED(hr) ? object->QueryInterface(IID_IDispatch, application->PutVoid()) : hr;
}

ResultCode GetOutlookNamespace(IDispatch* application, ComPtr<IDispatch>* nameSpace) {
  if (application == nullptr || nameSpace == nullptr) {
    return kNullPointer;
  }
  HRESULT hr = GetObjectProperty(application, kSessionProperty, nameSpace);
  if (SUCCEEDED(hr)) {
    hr = LogOn(nameSpace->Get());
  }
  if (FAILED(hr)) {
    nameSpace->Reset();
  }
  return hr;
}

void LogOffOutlook(IDispatch* nameSpace) {
  DISPPARAMS none = {};
  nameSpace->Invoke(kLogoffMethod, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &none, nullptr,
                    nullptr, nullptr);
}

ComPtr<IGlobalInterfaceTable> GetGlobalInterfaceTable() {
  ComPtr<IGlobalInterfaceTable> table;
  (void)::CoCreateInstance(kGlobalInterfaceTable, nullptr, CLSCTX_INPROC_SERVER,
                           IID_IGlobalInterfaceTable, table.PutVoid());
  return table;
}

ResultCode GetOutlookApplication(DWORD cookie, ComPtr<IDispatch>* application) {
  const ComPtr<IGlobalInterfaceTable> table = GetGlobalInterfaceTable();
  if (!table || cookie == 0) {
    return kFail;
  }
  return table->GetInterfaceFromGlobal(cookie, IID_IDispatch, application->PutVoid());
}

}  // namespace postmarker
