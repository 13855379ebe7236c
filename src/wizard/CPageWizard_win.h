// The welcome page.
#pragma once

#include "resource.h"
#include "wizard/CPageWizardDefault_win.h"

namespace postmarker {

class CPageWizard : public CPageWizardDefault {
 public:
  CPageWizard() : CPageWizardDefault(IDD_PAGE_WELCOME, PSWIZB_NEXT) {}
};

}  // namespace postmarker
