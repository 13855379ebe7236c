// The wizard's classes in this process, with clients made up by the test and a registry of its own.
#pragma once

#include <gtest/gtest.h>

#include <memory>

#include "support/RegistrySandbox_win.h"
#include "support/TestClients_win.h"
#include "support/WizardSession_win.h"
#include "ui/CWinApp.h"
#include "wizard/CWizardSheet_win.h"

namespace postmarker::test {

// The texts and dialogs of a language, as the module would load them.
LibraryHandle LoadLanguage(const std::wstring& language);

class WizardFixture : public testing::Test {
 protected:
  WizardFixture();
  ~WizardFixture() override;

  // Runs a sheet as ShowWizard does.
  static int32_t RunSheet(WizardRequest* request);

  // From the welcome page to the filled folder tree.
  std::unique_ptr<WizardSession> StartAtFolders();

  // From there to the settings page, over the folder of this name.
  static void GoToSettings(const WizardSession& session, const std::wstring& folder);

  RegistrySandbox m_registry{Redirect::kUserAndMachine};
  TestClients m_clients;
  WizardRequest m_request;

 private:
  LibraryHandle m_language;
};

}  // namespace postmarker::test
