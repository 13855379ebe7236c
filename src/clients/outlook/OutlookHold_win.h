// What Microsoft Outlook needs for the life of a wizard.
#pragma once

#include <windows.h>

#include <atomic>

#include "clients/MailClientAdapter.h"
#include "clients/outlook/OutlookSession_win.h"

namespace postmarker {

// Owns the application, the logon, and the cookie by which other threads reach the application.
class OutlookHold final : public ClientHold {
 public:
  // `request` outlives Disconnect. `table` may be null: then no thread gets the application, and
  // operations run without one. Sheet.
  OutlookHold(WizardRequest* request, ComPtr<IGlobalInterfaceTable> table);
  ~OutlookHold() override;

  // EnsureSession; its result is dropped.
  void Connect() override;

  // Does nothing and returns 0 if there is an application. Otherwise takes the request's, or else
  // starts Outlook, logs on with the default profile, and registers the application. The cookie, or
  // 0, goes into the request. A failed logon keeps nothing.
  ResultCode EnsureSession() override;

  // The application as the calling thread may call it.
  [[nodiscard]] ClientSession OpenSession() override;

  // Revokes the cookie, logs off, lets the application go and then the table.
  void Disconnect() override;

 private:
  ResultCode FindApplication();
  void Register();

  WizardRequest* m_request;
  ComPtr<IGlobalInterfaceTable> m_table;
  ComPtr<IDispatch> m_application;
  ComPtr<IDispatch> m_namespace;
  std::atomic<DWORD> m_cookie = 0;
};

}  // namespace postmarker
