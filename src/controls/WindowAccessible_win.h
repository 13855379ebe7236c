// The base of accessibility objects that stand before the system's own object for a window.
#pragma once

#include <windows.h>

#include <oleacc.h>

#include <atomic>
#include <utility>

#include "support/ComPtr_win.h"
#include "support/Handles_win.h"

// The system's interfaces have no virtual destructors: their objects are deleted by Release alone.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

namespace postmarker {

// Answers for the client area of a window. What a subclass does not override, the system's object
// answers. Such an object may outlive its window, for as long as another program holds it, and then
// keeps the module in memory. Called on the window's thread.
class WindowAccessible : public IAccessible {
 public:
  WindowAccessible(HWND window, ComPtr<IAccessible> system);
  WindowAccessible(const WindowAccessible&) = delete;
  WindowAccessible& operator=(const WindowAccessible&) = delete;

  STDMETHODIMP QueryInterface(REFIID id, void** out) override;
  STDMETHODIMP_(ULONG) AddRef() override;
  STDMETHODIMP_(ULONG) Release() override;

  STDMETHODIMP GetTypeInfoCount(UINT* count) override;
  STDMETHODIMP GetTypeInfo(UINT index, LCID language, ITypeInfo** out) override;
  STDMETHODIMP GetIDsOfNames(REFIID id, LPOLESTR* names, UINT count, LCID language,
                             DISPID* out) override;
  STDMETHODIMP Invoke(DISPID member, REFIID id, LCID language, WORD flags, DISPPARAMS* arguments,
                      VARIANT* result, EXCEPINFO* exception, UINT* wrong) override;

  STDMETHODIMP get_accParent(IDispatch** out) override;
  STDMETHODIMP get_accChildCount(LONG* count) override;
  STDMETHODIMP get_accChild(VARIANT child, IDispatch** out) override;
  STDMETHODIMP get_accName(VARIANT child, BSTR* out) override;
  STDMETHODIMP get_accValue(VARIANT child, BSTR* out) override;
  STDMETHODIMP get_accDescription(VARIANT child, BSTR* out) override;
  STDMETHODIMP get_accRole(VARIANT child, VARIANT* out) override;
  STDMETHODIMP get_accState(VARIANT child, VARIANT* out) override;
  STDMETHODIMP get_accHelp(VARIANT child, BSTR* out) override;
  STDMETHODIMP get_accHelpTopic(BSTR* file, VARIANT child, LONG* topic) override;
  STDMETHODIMP get_accKeyboardShortcut(VARIANT child, BSTR* out) override;
  STDMETHODIMP get_accFocus(VARIANT* out) override;
  STDMETHODIMP get_accSelection(VARIANT* out) override;
  STDMETHODIMP get_accDefaultAction(VARIANT child, BSTR* out) override;
  STDMETHODIMP accSelect(LONG flags, VARIANT child) override;
  STDMETHODIMP accLocation(LONG* left, LONG* top, LONG* width, LONG* height,
                           VARIANT child) override;
  STDMETHODIMP accNavigate(LONG direction, VARIANT start, VARIANT* out) override;
  STDMETHODIMP accHitTest(LONG x, LONG y, VARIANT* out) override;
  STDMETHODIMP accDoDefaultAction(VARIANT child) override;
  STDMETHODIMP put_accName(VARIANT child, BSTR name) override;
  STDMETHODIMP put_accValue(VARIANT child, BSTR value) override;

 protected:
  virtual ~WindowAccessible() = default;

  [[nodiscard]] HWND Window() const { return m_window; }

  // Does the call mean the window as a whole?
  static bool IsSelf(const VARIANT& child);

 private:
  HWND m_window;
  ComPtr<IAccessible> m_system;
  LibraryHandle m_module;
  std::atomic<ULONG> m_references = 1;
};

// The id of the interface is asked for by __uuidof throughout: oleacc's import library holds a
// thunk by the name of the constant, which some orders of libraries take for it.

// An object for the window, which wraps the system's own; null if the system has none. One object
// serves all questions; its window keeps it.
template <class Accessible>
[[nodiscard]] ComPtr<IAccessible> MakeWindowAccessible(HWND window) {
  ComPtr<IAccessible> system;
  const HRESULT made = ::CreateStdAccessibleObject(window, static_cast<LONG>(OBJID_CLIENT),
                                                   __uuidof(IAccessible), system.PutVoid());
  if (FAILED(made) || !system) {
    return {};
  }
  return ComPtr<IAccessible>(new Accessible(window, std::move(system)));
}

// Does a WM_GETOBJECT with this parameter ask for the window's client area?
bool AsksForClientArea(LPARAM lParam);

}  // namespace postmarker

#pragma GCC diagnostic pop
