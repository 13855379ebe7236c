// The wizard's session with Outlook, held while the sheet lives.
#pragma once

#include <windows.h>

#include <oaidl.h>
#include <objidl.h>

#include <string>

#include "support/ComPtr_win.h"

namespace postmarker {

// Name of the default MAPI profile; empty if there is none.
std::wstring GetOutlookDefaultProfile();

// The application object is called by dispatch id, as a proxy for its own interface would need the
// client's type library on this side. All functions but FetchApplication are for the sheet's
// thread.
class OutlookSession {
 public:
  // Creates the global interface table; without it other threads get no application.
  OutlookSession();
  OutlookSession(const OutlookSession&) = delete;
  OutlookSession& operator=(const OutlookSession&) = delete;
  ~OutlookSession() = default;

  // Does nothing and returns 0 if the session stands. Otherwise takes `running` (may be null, not
  // taken over) or else starts Outlook, logs on with the default profile and registers the
  // application for other threads.
  HRESULT Ensure(IUnknown* running);

  // Revokes the registration and logs off, each if it was done.
  void RevokeCookie();
  void LogOff();
  void ReleaseTable() { m_table.Reset(); }

  // By which another thread gets the application; 0 for none.
  [[nodiscard]] DWORD Cookie() const { return m_cookie; }

  // The application for the calling thread, which must be in an apartment. E_FAIL without table or
  // cookie.
  HRESULT GetOutlookApplication(DWORD cookie, ComPtr<IDispatch>* application) const;

 private:
  HRESULT LogOn();

  ComPtr<IGlobalInterfaceTable> m_table;
  ComPtr<IDispatch> m_application;
  ComPtr<IDispatch> m_namespace;
  DWORD m_cookie = 0;
};

// The same as the member, for a thread that has no session: every process has one table.
HRESULT FetchOutlookApplication(DWORD cookie, ComPtr<IDispatch>* application);

}  // namespace postmarker
