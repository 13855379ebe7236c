#include "clients/outlook/OutlookAdapter_win.h"

#include <exception>

#include "clients/Cancel.h"
#include "clients/outlook/OutlookAddresses_win.h"
#include "clients/outlook/OutlookFolderList_win.h"
#include "clients/outlook/OutlookHold_win.h"
#include "clients/outlook/OutlookSession_win.h"

namespace postmarker {
namespace {

// Runs `operation`; want of memory fails.
template <class Operation>
ResultCode WithoutThrowing(Operation operation) {
  try {
    return operation();
  } catch (const std::exception&) {
    return kFail;
  }
}

// An application with the calling thread's own logon, which ends with the object. Without a logon
// there is no application: only the add-in can be asked then.
class LoggedOnApplication {
 public:
  explicit LoggedOnApplication(IUnknown* application) {
    if (application != nullptr &&
        SUCCEEDED(application->QueryInterface(IID_IDispatch, m_application.PutVoid())) &&
        Failed(GetOutlookNamespace(m_application.Get(), &m_namespace))) {
      m_application.Reset();
    }
  }
  LoggedOnApplication(const LoggedOnApplication&) = delete;
  LoggedOnApplication& operator=(const LoggedOnApplication&) = delete;
  ~LoggedOnApplication() {
    if (m_namespace) {
      LogOffOutlook(m_namespace.Get());
    }
  }
  [[nodiscard]] IUnknown* Get() const { return m_application.Get(); }

 private:
  ComPtr<IDispatch> m_application;
  ComPtr<IDispatch> m_namespace;
};

// Sent mail, then the contacts, which are read also if sent mail can't be.
ResultCode CollectAll(IUnknown* application, const ProgressCallbacks* callbacks,
                      const StopQuery& stop, AddressSet* addresses) {
  if (ShouldStop(stop)) {
    return kOk;
  }
  const LoggedOnApplication outlook(application);
  const ResultCode sent =
      CollectOutlookSentAddresses(outlook.Get(), callbacks, UseHook::kYes, stop, addresses);
  if (ShouldStop(stop)) {
    return kOk;
  }
  const ResultCode contacts = CollectOutlookContacts(outlook.Get(), UseHook::kYes, stop, addresses);
  return Failed(sent) ? sent : contacts;
}

}  // namespace

void OutlookAdapter::ListFolders(const ClientSession& session, MailFolderList* folders) const {
  (void)WithoutThrowing([&] {
    std::wstring text;
    return ListOutlookFolders(session.outlookApplication.get(), UseHook::kYes, session.stop, &text,
                              folders);
  });
}

MailFolderRef OutlookAdapter::FindDefaultFolder(const ClientSession& session,
                                                const MailFolderList& /*folders*/) const {
  MailFolderList found;
  if (session.outlookApplication != nullptr) {
    (void)WithoutThrowing([&] {
      return GetOutlookDefaultFolderRef(session.outlookApplication.get(), kOlFolderDeletedItems,
                                        UseHook::kYes, session.stop, &found);
    });
  }
  return found.empty() ? MailFolderRef() : found.front();
}

ResultCode OutlookAdapter::CreateFolder(const ClientSession& session, const std::wstring& name,
                                        const MailFolderRef& parent, MailFolderRef* created) const {
  return WithoutThrowing([&] {
    return CreateOutlookFolder(session.outlookApplication.get(), parent, name, UseHook::kYes,
                               session.stop, created);
  });
}

ResultCode OutlookAdapter::CollectSentAddresses(const ClientSession& session,
                                                const ProgressCallbacks* callbacks,
                                                AddressSet* addresses) const {
  return WithoutThrowing([&] {
    return CollectAll(session.outlookApplication.get(), callbacks, StopOrCancel(session, callbacks),
                      addresses);
  });
}

ResultCode OutlookAdapter::HarvestAddresses(const ClientSession& session,
                                            AddressSet* addresses) const {
  if (session.outlookApplication != nullptr) {
    return CollectSentAddresses(session, nullptr, addresses);
  }
  return WithoutThrowing([&]() -> ResultCode {
    const ComApartment apartment;
    if (FAILED(apartment.Result())) {
      return apartment.Result();
    }
    if (ShouldStop(session.stop)) {
      return kOk;
    }
    // Without an application there is still the add-in.
    ComPtr<IDispatch> application;
    (void)StartOutlook(&application);
    return CollectAll(application.Get(), nullptr, session.stop, addresses);
  });
}

std::shared_ptr<ClientHold> OutlookAdapter::MakeHold(WizardRequest* request) const {
  return std::make_shared<OutlookHold>(request, GetGlobalInterfaceTable());
}

}  // namespace postmarker
