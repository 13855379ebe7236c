#include "wizard/CPostmarkerApp_win.h"

#include <commctrl.h>

#include <string>

#include "support/DeviceContext_win.h"
#include "wizard/ResourceLanguage_win.h"
#include "wizard/WindowHook_win.h"

namespace postmarker {
namespace {

constexpr DWORD kPathRoom = 260;

ScreenScale g_screenScale;

void ComputeScreenScale() {
  const WindowDc screen(nullptr);
  g_screenScale = ScaleForPixelsPerInch(::GetDeviceCaps(screen.Get(), LOGPIXELSX));
}

// A module's full path, or an empty text if it is longer than `room`.
std::wstring ModulePath(HMODULE module, DWORD room) {
  std::wstring path(room, L'\0');
  const DWORD length = ::GetModuleFileNameW(module, path.data(), room);
  path.resize(length < room ? length : 0);
  return path;
}

}  // namespace

const ScreenScale& CurrentScreenScale() {
  return g_screenScale;
}

void CPostmarkerApp::LoadResourceModule() {
  const std::wstring root = FolderAbove(ModulePath(Module(), kPathRoom), 2);
  const std::wstring path = root + L"\\res\\" + FindResourceLanguage() + L"\\PostmarkerRes.dll";
  // Mapped as data: it holds no code, and one file serves modules of both widths.
  m_resourceModule.Reset(::LoadLibraryExW(
      path.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE));
  SetResourceModule(m_resourceModule.Get());
}

int CPostmarkerApp::InitInstance() {
  LoadResourceModule();
  INITCOMMONCONTROLSEX controls = {sizeof(controls), ICC_WIN95_CLASSES | ICC_STANDARD_CLASSES};
  ::InitCommonControlsEx(&controls);
  ComputeScreenScale();
  CWinApp::InitInstance();
  WindowHook().Clear();
  HookActive = 0;
  const HMODULE self = ::GetModuleHandleW(L"Postmarker.dll");
  if (self == nullptr) {
    // Deliberate: a failure code is nonzero, so the module stays loaded, only without the window
    // hook.
    return E_FAIL;
  }
  const std::wstring path = ModulePath(self, kPathRoom - 1);
  if (!path.empty()) {
    WindowHook().Load(FolderAbove(path, 2) + L"\\WndShim.dll");
  }
  return 1;
}

int CPostmarkerApp::ExitInstance() {
  SetResourceModule(nullptr);
  m_resourceModule.Reset();
  WindowHook().Clear();
  HookActive = 0;
  return CWinApp::ExitInstance();
}

}  // namespace postmarker
