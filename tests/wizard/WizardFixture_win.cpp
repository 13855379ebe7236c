#include "wizard/WizardFixture_win.h"

#include "support/Stage_win.h"
#include "wizard/CPostmarkerApp_win.h"

namespace postmarker::test {
namespace {

CPostmarkerApp g_app;

}  // namespace

LibraryHandle LoadLanguage(const std::wstring& language) {
  const std::wstring path = StageFolder() + L"\\res\\" + language + L"\\PostmarkerRes.dll";
  return LibraryHandle(::LoadLibraryExW(path.c_str(), nullptr,
                                        LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE));
}

WizardFixture::WizardFixture() : m_language(LoadLanguage(L"en")) {
  g_app.SetModule(::GetModuleHandleW(nullptr));
  g_app.SetResourceModule(m_language.Get());
  INITCOMMONCONTROLSEX controls = {sizeof(controls), ICC_WIN95_CLASSES | ICC_STANDARD_CLASSES};
  ::InitCommonControlsEx(&controls);
  m_clients.client.folders = SmallStore();
  m_clients.client.defaultFolder = SmallStore().back();
  m_request.clientName = L"Plain";
}

WizardFixture::~WizardFixture() {
  g_app.SetResourceModule(nullptr);
}

int32_t WizardFixture::RunSheet(WizardRequest* request) {
  const ModuleStateGuard guard;
  CWizardSheet sheet(L"Kestrelon", request, nullptr, 0);
  return static_cast<int32_t>(sheet.DoModal());
}

std::unique_ptr<WizardSession> WizardFixture::StartAtFolders() {
  auto session = std::make_unique<WizardSession>(&WizardFixture::RunSheet, &m_request);
  session->WaitForPage(Page::kWelcome);
  session->ClickButton(kNextButton);
  session->WaitForTree();
  return session;
}

void WizardFixture::GoToSettings(const WizardSession& session, const std::wstring& folder) {
  session.ClickItem(folder);
  session.ClickButton(kNextButton);
  session.PassAddresses();
}

}  // namespace postmarker::test
