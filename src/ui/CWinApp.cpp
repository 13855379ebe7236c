#include "ui/CWinApp.h"

#include <utility>

namespace postmarker {
namespace {

CWinApp* g_app = nullptr;

// The activation context of the manifest that the module carries as resource 2. A module without
// one gets none, and its windows look as the host's manifest says.
HANDLE CreateModuleContext() {
  ACTCTXW description = {};
  description.cbSize = sizeof(description);
  description.dwFlags = ACTCTX_FLAG_HMODULE_VALID | ACTCTX_FLAG_RESOURCE_NAME_VALID;
  description.hModule = g_app != nullptr ? g_app->Module() : nullptr;
  description.lpResourceName = MAKEINTRESOURCEW(2);
  return ::CreateActCtxW(&description);
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

ModuleStateGuard::ModuleStateGuard() : m_context(CreateModuleContext()) {
  if (m_context != INVALID_HANDLE_VALUE && !::ActivateActCtx(m_context, &m_cookie)) {
    m_cookie = 0;
  }
}

ModuleStateGuard::~ModuleStateGuard() {
  if (m_context == INVALID_HANDLE_VALUE) {
    return;
  }
  if (m_cookie != 0) {
    ::DeactivateActCtx(0, m_cookie);
  }
  ::ReleaseActCtx(m_context);
}

}  // namespace postmarker
