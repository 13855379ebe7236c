// Microsoft Outlook as the wizard sees it.
#pragma once

#include <memory>
#include <string>

#include "clients/MailClientAdapter.h"

namespace postmarker {

// Asks the suite's add-in inside Outlook first, and then Outlook's object model and Extended MAPI.
// A thread needs Outlook's application in its session; the harvest, which has none, starts Outlook
// or finds the one that runs.
class OutlookAdapter : public MailClientAdapter {
 public:
  void ListFolders(const ClientSession& session, MailFolderList* folders) const override;
  [[nodiscard]] MailFolderRef FindDefaultFolder(const ClientSession& session,
                                                const MailFolderList& folders) const override;
  ResultCode CreateFolder(const ClientSession& session, const std::wstring& name,
                          const MailFolderRef& parent, MailFolderRef* created) const override;
  ResultCode CollectSentAddresses(const ClientSession& session, const ProgressCallbacks* callbacks,
                                  AddressSet* addresses) const override;
  ResultCode HarvestAddresses(const ClientSession& session, AddressSet* addresses) const override;

  // A hold that starts Outlook and logs on, or uses the host's.
  [[nodiscard]] std::shared_ptr<ClientHold> MakeHold(WizardRequest* request) const override;
};

}  // namespace postmarker
