#include "module/ModuleFixture_win.h"

namespace postmarker::test {

Module::Module(const std::wstring& root)
    : m_library(::LoadLibraryW((root + L"\\Spamfilter\\Postmarker.dll").c_str())) {
  m_showWizard = reinterpret_cast<PostmarkerShowWizard>(
      reinterpret_cast<void*>(::GetProcAddress(m_library.Get(), "ShowWizard")));
  m_startWhitelistPrefill = reinterpret_cast<PostmarkerStartWhitelistPrefill>(
      reinterpret_cast<void*>(::GetProcAddress(m_library.Get(), "StartWhitelistPrefill")));
}

ModuleFixture::ModuleFixture() {
  m_client.RegisterProgram();
  m_client.RegisterData();
  m_client.AddIdentity(L"{ANNA}", L"Anna", 9);
  m_client.AddIdentity(L"{BEN}", L"Ben", 9);
  m_client.SetDefaultIdentity(L"{ANNA}");
  m_client.AddStore(L"{ANNA}", {{ImGuid(1), L"", 0, L""},
                                {ImGuid(2), ImGuid(1), 0, L"Inbox"},
                                {ImGuid(3), ImGuid(2), 0, L"Grüße"},
                                {ImGuid(4), ImGuid(1), 2, L"Sent Items"},
                                {ImGuid(5), ImGuid(1), 5, L"Junk"}});
  m_client.AddStore(L"{BEN}", {{ImGuid(1), L"", 0, L""}, {ImGuid(2), ImGuid(1), 0, L"Inbox"}});
  m_request.clientName = L"IncrediMail";
}

std::unique_ptr<WizardSession> ModuleFixture::StartAtFolders() {
  auto session = std::make_unique<WizardSession>(Show(), &m_request);
  session->WaitForPage(Page::kWelcome);
  session->ClickButton(kNextButton);
  session->WaitForTree();
  return session;
}

std::vector<std::string> ModuleFixture::DumpRegistryOfSuite() {
  const RegistryKey key = RegistryKey::Open(
      HKEY_CURRENT_USER, L"Software\\Kestrelon Ltd.\\Kestrelon", KEY_READ | SuiteKeyView());
  return key ? DumpRegistry(key.Get()) : std::vector<std::string>();
}

int32_t ModuleFixture::Finish(const std::wstring& folder) {
  const auto session = StartAtFolders();
  session->ClickItem(folder);
  session->ClickButton(kNextButton);
  session->PassAddresses();
  session->ClickButton(kFinishButton);
  return session->Result();
}

}  // namespace postmarker::test
