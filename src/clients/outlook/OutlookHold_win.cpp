#include "clients/outlook/OutlookHold_win.h"

#include <utility>

namespace postmarker {
namespace {

void ReleaseObject(IUnknown* object) {
  const ComPtr<IUnknown> last(object);
}

}  // namespace

OutlookHold::OutlookHold(WizardRequest* request, ComPtr<IGlobalInterfaceTable> table)
    : m_request(request), m_table(std::move(table)) {}

OutlookHold::~OutlookHold() {
  Disconnect();
}

void OutlookHold::Connect() {
  (void)EnsureSession();
}

ResultCode OutlookHold::EnsureSession() {
  if (m_application) {
    return kOk;
  }
  ResultCode result = FindApplication();
  if (Succeeded(result)) {
    result = GetOutlookNamespace(m_application.Get(), &m_namespace);
  }
  if (Succeeded(result)) {
    Register();
  } else {
    m_application.Reset();
  }
  m_request->outlookCookie = m_cookie;
  return result;
}

ResultCode OutlookHold::FindApplication() {
  IUnknown* const running = m_request->outlookApplication;
  if (running != nullptr &&
      SUCCEEDED(running->QueryInterface(IID_IDispatch, m_application.PutVoid()))) {
    return kOk;
  }
  return StartOutlook(&m_application);
}

void OutlookHold::Register() {
  DWORD cookie = 0;
  if (m_table &&
      SUCCEEDED(m_table->RegisterInterfaceInGlobal(m_application.Get(), IID_IDispatch, &cookie))) {
    m_cookie = cookie;
  }
}

ClientSession OutlookHold::OpenSession() {
  ClientSession session;
  ComPtr<IDispatch> application;
  if (Succeeded(GetOutlookApplication(m_cookie, &application))) {
    session.outlookApplication = std::shared_ptr<IUnknown>(application.Detach(), &ReleaseObject);
  }
  return session;
}

void OutlookHold::Disconnect() {
  const DWORD cookie = m_cookie.exchange(0);
  if (cookie != 0) {
    m_table->RevokeInterfaceFromGlobal(cookie);
  }
  if (m_namespace) {
    LogOffOutlook(m_namespace.Get());
  }
  m_namespace.Reset();
  m_application.Reset();
  m_table.Reset();
}

}  // namespace postmarker
