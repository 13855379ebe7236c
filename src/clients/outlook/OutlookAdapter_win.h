// Microsoft Outlook as the wizard sees it.
#pragma once

#include <memory>

#include "clients/MailClientAdapter.h"

namespace postmarker {

// Answers as an unknown client in all but the session, which the wizard holds.
class OutlookAdapter : public MailClientAdapter {
 public:
  // A hold that starts Outlook and logs on, or uses the host's.
  [[nodiscard]] std::shared_ptr<ClientHold> MakeHold(WizardRequest* request) const override;
};

}  // namespace postmarker
