// Mozilla Thunderbird as the wizard sees it, through the suite's extension inside it.
#pragma once

#include <memory>

#include "clients/MailClientAdapter.h"

namespace postmarker {

// Each operation makes a connection of its own. Where no Thunderbird runs, an operation starts one
// hidden and tells it to exit at its end; while a hold stands (see MakeHold) it finds one running.
class ThunderbirdAdapter : public MailClientAdapter {
 public:
  void ListFolders(const ClientSession& session, MailFolderList* folders) const override;

  // The trash of the local folders; the last one if the list has several.
  [[nodiscard]] MailFolderRef FindDefaultFolder(const ClientSession& session,
                                                const MailFolderList& folders) const override;

  // E_POINTER if Thunderbird can't be reached. Without an answer the result is 0 and *created is as
  // it was.
  ResultCode CreateFolder(const ClientSession& session, const std::wstring& name,
                          const MailFolderRef& parent, MailFolderRef* created) const override;

  // Asks session.stop and the user's cancel at least every 100 ms, also while Thunderbird starts;
  // stopped, the result is 0.
  ResultCode CollectSentAddresses(const ClientSession& session, const ProgressCallbacks* callbacks,
                                  AddressSet* addresses) const override;

  // Without the count of mails, which takes its time and serves the progress bar alone.
  ResultCode HarvestAddresses(const ClientSession& session, AddressSet* addresses) const override;

  void SetMoveMails(bool move) const override;

  // Keeps Thunderbird running, started if need be.
  [[nodiscard]] std::shared_ptr<ClientHold> MakeHold(WizardRequest* request) const override;
};

}  // namespace postmarker
