// The module's entry point and the export by which a host runs the wizard.
#include <windows.h>

#include <optional>

#include "clients/WhitelistPrefill_win.h"
#include "postmarker/Postmarker.h"
#include "wizard/CPostmarkerApp_win.h"
#include "wizard/CWizardSheet_win.h"

namespace postmarker {
namespace {

CPostmarkerApp g_app;

constexpr wchar_t kCaption[] = L"Kestrelon";

// A handle that is given but is no window can't own the sheet.
bool IsOwnerUsable(HWND owner) {
  return owner == nullptr || ::IsWindow(owner);
}

int32_t RunWizard(WizardRequest* request) {
  if (request == nullptr || !IsOwnerUsable(request->parentWindow)) {
    return kWizardCancelled;
  }
  int32_t result = kWizardCancelled;
  try {
    CWizardSheet sheet(kCaption, request, request->parentWindow, 0);
    result = static_cast<int32_t>(sheet.DoModal());
  } catch (...) {
    // No exception may reach the host, whose code may have been built by another compiler.
    return kWizardCancelled;
  }
  return result;
}

}  // namespace
}  // namespace postmarker

extern "C" int32_t __stdcall ShowWizard(postmarker::WizardRequest* request) {
  const postmarker::ModuleStateGuard guard;
  return postmarker::RunWizard(request);
}

extern "C" void __stdcall StartWhitelistPrefill() {
  const postmarker::ModuleStateGuard guard;
  try {
    const postmarker::KernelHandle thread = postmarker::LaunchWhitelistPrefill();
  } catch (...) {
    // No memory even to begin: the next start may have some.
    ::SetLastError(ERROR_OUTOFMEMORY);
  }
}

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID /*reserved*/) {
  using postmarker::g_app;
  if (reason == DLL_PROCESS_ATTACH) {
    ::DisableThreadLibraryCalls(module);
    g_app.SetModule(module);
    return g_app.InitInstance() != 0 ? TRUE : FALSE;
  }
  if (reason == DLL_PROCESS_DETACH) {
    g_app.ExitInstance();
  }
  return TRUE;
}
