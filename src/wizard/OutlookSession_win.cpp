#include "wizard/OutlookSession_win.h"

#include <array>
#include <vector>

#include "support/Registry_win.h"

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

struct VariantHolder {
  VariantHolder() { ::VariantInit(&value); }
  VariantHolder(const VariantHolder&) = delete;
  VariantHolder& operator=(const VariantHolder&) = delete;
  ~VariantHolder() { ::VariantClear(&value); }
  VARIANT value;
};

// The class that was asked for, without the noise of a proxy that can't be made.
HRESULT QueryDispatch(IUnknown* object, ComPtr<IDispatch>* out) {
  return object->QueryInterface(IID_IDispatch, out->PutVoid());
}

HRESULT GetObjectProperty(IDispatch* object, DISPID id, ComPtr<IDispatch>* out) {
  VariantHolder result;
  DISPPARAMS none = {};
  const HRESULT hr =
      object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET | DISPATCH_METHOD,
                     &none, &result.value, nullptr, nullptr);
  if (FAILED(hr)) {
    return hr;
  }
  if (result.value.vt != VT_DISPATCH || result.value.pdispVal == nullptr) {
    return E_POINTER;
  }
  return QueryDispatch(result.value.pdispVal, out);
}

HRESULT StartOutlook(ComPtr<IDispatch>* out) {
  ComPtr<IUnknown> object;
  HRESULT hr =
      ::CoCreateInstance(kOutlookApplication, nullptr, CLSCTX_ALL, IID_IUnknown, object.PutVoid());
  if (SUCCEEDED(hr)) {
    hr = ::OleRun(object.Get());
  }
  return SUCCEEDED(hr) ? QueryDispatch(object.Get(), out) : hr;
}

}  // namespace

std::wstring GetOutlookDefaultProfile() {
  const RegistryKey key = RegistryKey::Open(HKEY_CURRENT_USER, kProfilesKey, kProfileAccess);
  return key.ReadString(L"DefaultProfile", kProfileRoom).value_or(std::wstring());
}

OutlookSession::OutlookSession() {
  (void)::CoCreateInstance(kGlobalInterfaceTable, nullptr, CLSCTX_INPROC_SERVER,
                           IID_IGlobalInterfaceTable, m_table.PutVoid());
}

HRESULT OutlookSession::Ensure(IUnknown* running) {
  if (m_application) {
    return S_OK;
  }
  HRESULT hr = running != nullptr ? QueryDispatch(running, &m_application) : E_FAIL;
  if (FAILED(hr)) {
    hr = StartOutlook(&m_application);
  }
  if (SUCCEEDED(hr)) {
    hr = LogOn();
  }
  if (FAILED(hr)) {
    m_application.Reset();
    return hr;
  }
  return m_table ? m_table->RegisterInterfaceInGlobal(m_application.Get(), IID_IDispatch, &m_cookie)
                 : E_FAIL;
}

HRESULT OutlookSession::LogOn() {
  const HRESULT hr = GetObjectProperty(m_application.Get(), kSessionProperty, &m_namespace);
  if (FAILED(hr)) {
    return hr;
  }
  VariantHolder profile;
  profile.value.vt = VT_BSTR;
  profile.value.bstrVal = ::SysAllocString(GetOutlookDefaultProfile().c_str());
  VARIANT missing = {};
  missing.vt = VT_ERROR;
  missing.scode = DISP_E_PARAMNOTFOUND;
  // In reverse order: new session, show dialog, password, profile.
  std::array<VARIANT, 4> arguments = {missing, missing, missing, profile.value};
  DISPPARAMS parameters = {arguments.data(), nullptr, static_cast<UINT>(arguments.size()), 0};
  const HRESULT logon =
      m_namespace->Invoke(kLogonMethod, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters,
                          nullptr, nullptr, nullptr);
  if (FAILED(logon)) {
    m_namespace.Reset();
  }
  return logon;
}

void OutlookSession::RevokeCookie() {
  if (m_table && m_cookie != 0) {
    m_table->RevokeInterfaceFromGlobal(m_cookie);
    m_cookie = 0;
  }
}

void OutlookSession::LogOff() {
  if (m_application && m_namespace) {
    DISPPARAMS none = {};
    m_namespace->Invoke(kLogoffMethod, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &none,
                        nullptr, nullptr, nullptr);
  }
  m_namespace.Reset();
  m_application.Reset();
}

HRESULT OutlookSession::GetOutlookApplication(DWORD cookie, ComPtr<IDispatch>* application) const {
  if (!m_table || cookie == 0) {
    return E_FAIL;
  }
  return m_table->GetInterfaceFromGlobal(cookie, IID_IDispatch, application->PutVoid());
}

HRESULT FetchOutlookApplication(DWORD cookie, ComPtr<IDispatch>* application) {
  const OutlookSession table;
  return table.GetOutlookApplication(cookie, application);
}

}  // namespace postmarker
