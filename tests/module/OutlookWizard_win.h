// The wizard of the staged module with Outlook, which stands in as a library of this process or as
// a program.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "module/ModuleFixture_win.h"
#include "support/OutlookInstallation_win.h"

namespace postmarker::test {

// Nothing of Outlook's may be left at the end, and no worker.
class OutlookWizardTest : public testing::Test {
 protected:
  explicit OutlookWizardTest(OutlookClassServer server = OutlookClassServer::kInProcess)
      : m_outlook(server) {
    ResetRequest();
    m_module = std::make_unique<Module>();
  }
  ~OutlookWizardTest() override {
    m_outlook.EndHangs();
    m_module.reset();
    EXPECT_TRUE(WaitUntil([] { return ::GetModuleHandleW(L"Postmarker.dll") == nullptr; }))
        << "a worker did not end";
    EXPECT_EQ(m_outlook.Peer().Live(), 0) << "Outlook's objects were not released";
  }

  void ResetRequest() {
    m_request = {};
    m_request.clientName = L"Microsoft Outlook";
  }

  // The usual mailbox, in which each call of this name but for so many first ones hangs for a time
  // at most, and fails if `result` is a failure.
  void SetFault(const char* call, int result, int hangMs, int after = 0) {
    SetFault(OutlookMailbox(), call, result, hangMs, after);
  }
  void SetFault(nlohmann::json mailbox, const char* call, int result, int hangMs, int after = 0) {
    mailbox["faults"] = nlohmann::json::array(
        {{{"at", call}, {"result", result}, {"hangMs", hangMs}, {"after", after}}});
    m_outlook.SetMailbox(mailbox);
  }

  std::unique_ptr<WizardSession> StartOnFolderPage() {
    auto session = std::make_unique<WizardSession>(
        [this](WizardRequest* request) { return m_module->ShowWizard(request); }, &m_request);
    session->WaitForPage(Page::kWelcome);
    session->ClickButton(kNextButton);
    return session;
  }
  std::unique_ptr<WizardSession> StartAtFolders() {
    auto session = StartOnFolderPage();
    session->WaitForTree();
    return session;
  }
  std::unique_ptr<WizardSession> StartAtAddresses() {
    auto session = StartAtFolders();
    session->ClickItem(L"Inbox");
    session->ClickButton(kNextButton);
    return session;
  }

  OutlookInstallation m_outlook;
  WizardRequest m_request;
  std::unique_ptr<Module> m_module;
};

}  // namespace postmarker::test
