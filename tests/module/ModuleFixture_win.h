// The staged module, loaded and driven as a host does.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "postmarker/Postmarker.h"
#include "support/Handles_win.h"
#include "support/ImInstallation_win.h"
#include "support/Stage_win.h"
#include "support/Whitelist.h"
#include "support/WizardSession_win.h"

namespace postmarker::test {

// Postmarker.dll from below a suite root. It is unloaded with the object.
class Module {
 public:
  explicit Module(const std::wstring& root = StageFolder());

  [[nodiscard]] bool IsLoaded() const {
    return m_showWizard != nullptr && m_startWhitelistPrefill != nullptr;
  }
  int32_t ShowWizard(WizardRequest* request) const { return m_showWizard(request); }
  void StartWhitelistPrefill() const { m_startWhitelistPrefill(); }

 private:
  LibraryHandle m_library;
  PostmarkerShowWizard m_showWizard = nullptr;
  PostmarkerStartWhitelistPrefill m_startWhitelistPrefill = nullptr;
};

// An IncrediMail installation with two identities of a few folders, in a registry of the test's
// own.
class ModuleFixture : public testing::Test {
 protected:
  ModuleFixture();

  void Load() { m_module = std::make_unique<Module>(); }
  void Unload() { m_module.reset(); }

  [[nodiscard]] WizardSession::Show Show() const {
    return [this](WizardRequest* request) { return m_module->ShowWizard(request); };
  }

  // From the welcome page to the filled tree.
  [[nodiscard]] std::unique_ptr<WizardSession> StartAtFolders();

  // What the suite's key of the user holds, as lines; empty if it is not there.
  static std::vector<std::string> DumpRegistryOfSuite();

  // Walks to the end over the folder.
  int32_t Finish(const std::wstring& folder);

  ImInstallation m_client;
  WizardRequest m_request;
  std::unique_ptr<Module> m_module;
};

}  // namespace postmarker::test
