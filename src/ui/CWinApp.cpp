#include "ui/CWinApp.h"

#include "support/Handles_win.h"

namespace postmarker {
namespace {

CWinApp* g_app = nullptr;

// The activation context of the manifest that the module carries as resource 2. A module without
// one gets none, and its windows look as the host's manifest says.
ActivationContext CreateModuleContext() {
  ACTCTXW description = {};
  description.cbSize = sizeof(description);
  description.dwFlags = ACTCTX_FLAG_HMODULE_VALID | ACTCTX_FLAG_RESOURCE_NAME_VALID;
  description.hModule = g_app != nullptr ? g_app->Module() : nullptr;
  description.lpResourceName = MAKEINTRESOURCEW(2);
  return ActivationContext(::CreateActCtxW(&description));
}

// Made at the first use and kept until the module goes: making it reads the manifest again, and the
// callbacks of a long operation pass a guard each time.
const ActivationContext& ModuleContext() {
  static const ActivationContext context = CreateModuleContext();
  return context;
}

}  // namespace

CWinApp::CWinApp() {
  g_app = this;
}

CWinApp::~CWinApp() {
  g_app = nullptr;
}

CWinApp* AfxGetApp() {
  return g_app;
}

HINSTANCE AfxGetResourceHandle() {
  return g_app != nullptr ? g_app->ResourceModule() : ::GetModuleHandleW(nullptr);
}

std::wstring LoadText(UINT id) {
  const wchar_t* text = nullptr;
  // With a room of 0 the function gives the address of the text in the module.
  const int length = ::LoadStringW(AfxGetResourceHandle(), id, reinterpret_cast<LPWSTR>(&text), 0);
  return length > 0 ? std::wstring(text, static_cast<size_t>(length)) : std::wstring();
}

ModuleStateGuard::ModuleStateGuard() {
  const ActivationContext& context = ModuleContext();
  if (context && !::ActivateActCtx(context.Get(), &m_cookie)) {
    m_cookie = 0;
  }
}

ModuleStateGuard::~ModuleStateGuard() {
  if (m_cookie != 0) {
    ::DeactivateActCtx(0, m_cookie);  // owner
  }
}

}  // namespace postmarker
