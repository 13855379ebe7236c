#include "clients/outlook/OutlookAdapter_win.h"

#include "clients/outlook/OutlookHold_win.h"

namespace postmarker {

std::shared_ptr<ClientHold> OutlookAdapter::MakeHold(WizardRequest* request) const {
  return std::make_shared<OutlookHold>(request, GetGlobalInterfaceTable());
}

}  // namespace postmarker
