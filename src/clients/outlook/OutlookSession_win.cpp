#include "clients/outlook/OutlookSession_win.h"

#include "clients/outlook/OutlookTexts.h"
#include "support/Registry_win.h"

namespace postmarker {
namespace {

// "Outlook.Application".
constexpr CLSID kOutlookApplication = {0x0006F03A, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
constexpr CLSID kGlobalInterfaceTable = {0x00000323, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

constexpr wchar_t kProfilesKey[] =
    L"Software\\Microsoft\\Windows NT\\CurrentVersion\\Windows Messaging Subsystem\\Profiles\\";
constexpr DWORD kProfileRoom = 8711 * sizeof(wchar_t);
constexpr REGSAM kProfileAccess = 0x2001F;

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
  nameSpace->Reset();
  OutlookApplication outlook;
  OutlookNameSpace session;
  std::wstring profile;
  // Without a profile the name is empty, and the logon decides.
  (void)GetOutlookDefaultProfile(&profile);
  HRESULT hr = outlook.Attach(application);
  if (SUCCEEDED(hr)) {
    hr = outlook.Session(&session);
  }
  if (SUCCEEDED(hr)) {
    hr = session.Logon(profile);
  }
  return SUCCEEDED(hr) ? session.GetDispatch(nameSpace) : hr;
}

ResultCode OpenOutlookNamespace(IUnknown* application, OutlookNameSpace* nameSpace) {
  OutlookApplication outlook;
  const HRESULT hr = outlook.Attach(application);
  return SUCCEEDED(hr) ? outlook.GetNamespace(L"MAPI", nameSpace) : hr;
}

ResultCode GetOutlookVersionName(IUnknown* application, std::wstring* name) {
  OutlookApplication outlook;
  std::wstring version;
  HRESULT hr = outlook.Attach(application);
  if (SUCCEEDED(hr)) {
    hr = outlook.Version(&version);
  }
  if (SUCCEEDED(hr)) {
    name->assign(OutlookVersionName(version));
  }
  return hr;
}

void LogOffOutlook(IDispatch* nameSpace) {
  OutlookNameSpace session;
  if (SUCCEEDED(session.Attach(nameSpace))) {
    (void)session.Logoff();
  }
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
