// The welcome page.
#pragma once

#include "resource.h"
#include "wizard/CPageWizardDefault_win.h"

namespace postmarker {

class CPageWizard : public CPageWizardDefault {
 public:
  explicit CPageWizard(WizardServices* wizard)
      : CPageWizardDefault(wizard, IDD_PAGE_WELCOME, PSWIZB_NEXT) {}
};

}  // namespace postmarker
