#include "controls/WindowAccessible_win.h"

#include "support/ModuleReference_win.h"

namespace postmarker {

WindowAccessible::WindowAccessible(HWND window, ComPtr<IAccessible> system)
    : m_window(window), m_system(std::move(system)), m_module(ReferToThisModule()) {}

bool WindowAccessible::IsSelf(const VARIANT& child) {
  return child.vt == VT_I4 && child.lVal == CHILDID_SELF;
}

HRESULT STDMETHODCALLTYPE WindowAccessible::QueryInterface(REFIID id, void** out) {
  if (out == nullptr) {
    return E_POINTER;
  }
  const bool known = id == IID_IUnknown || id == IID_IDispatch || id == __uuidof(IAccessible);
  *out = known ? static_cast<IAccessible*>(this) : nullptr;
  if (!known) {
    return E_NOINTERFACE;
  }
  AddRef();
  return S_OK;
}

ULONG STDMETHODCALLTYPE WindowAccessible::AddRef() {
  return ++m_references;
}

ULONG STDMETHODCALLTYPE WindowAccessible::Release() {
  const ULONG left = --m_references;
  if (left == 0) {
    // The host may have unloaded the module: this code must not stand on the last reference.
    LibraryHandle module = std::move(m_module);
    delete this;
    ReleaseModuleLater(std::move(module));
  }
  return left;
}

HRESULT STDMETHODCALLTYPE WindowAccessible::GetTypeInfoCount(UINT* count) {
  return m_system->GetTypeInfoCount(count);
}

HRESULT STDMETHODCALLTYPE WindowAccessible::GetTypeInfo(UINT index, LCID language,
                                                        ITypeInfo** out) {
  return m_system->GetTypeInfo(index, language, out);
}

HRESULT STDMETHODCALLTYPE WindowAccessible::GetIDsOfNames(REFIID id, LPOLESTR* names, UINT count,
                                                          LCID language, DISPID* out) {
  return m_system->GetIDsOfNames(id, names, count, language, out);
}

HRESULT STDMETHODCALLTYPE WindowAccessible::Invoke(DISPID member, REFIID id, LCID language,
                                                   WORD flags, DISPPARAMS* arguments,
                                                   VARIANT* result, EXCEPINFO* exception,
                                                   UINT* wrong) {
  return m_system->Invoke(member, id, language, flags, arguments, result, exception, wrong);
}

HRESULT STDMETHODCALLTYPE WindowAccessible::get_accParent(IDispatch** out) {
  return m_system->get_accParent(out);
}

HRESULT STDMETHODCALLTYPE WindowAccessible::get_accChildCount(LONG* count) {
  return m_system->get_accChildCount(count);
}

HRESULT STDMETHODCALLTYPE WindowAccessible::get_accChild(VARIANT child, IDispatch** out) {
  return m_system->get_accChild(child, out);
}

HRESULT STDMETHODCALLTYPE WindowAccessible::get_accName(VARIANT child, BSTR* out) {
  return m_system->get_accName(child, out);
}

HRESULT STDMETHODCALLTYPE WindowAccessible::get_accValue(VARIANT child, BSTR* out) {
  return m_system->get_accValue(child, out);
}

HRESULT STDMETHODCALLTYPE WindowAccessible::get_accDescription(VARIANT child, BSTR* out) {
  return m_system->get_accDescription(child, out);
}

HRESULT STDMETHODCALLTYPE WindowAccessible::get_accRole(VARIANT child, VARIANT* out) {
  return m_system->get_accRole(child, out);
}

HRESULT STDMETHODCALLTYPE WindowAccessible::get_accState(VARIANT child, VARIANT* out) {
  return m_system->get_accState(child, out);
}

HRESULT STDMETHODCALLTYPE WindowAccessible::get_accHelp(VARIANT child, BSTR* out) {
  return m_system->get_accHelp(child, out);
}

HRESULT STDMETHODCALLTYPE WindowAccessible::get_accHelpTopic(BSTR* file, VARIANT child,
                                                             LONG* topic) {
  return m_system->get_accHelpTopic(file, child, topic);
}

HRESULT STDMETHODCALLTYPE WindowAccessible::get_accKeyboardShortcut(VARIANT child, BSTR* out) {
  return m_system->get_accKeyboardShortcut(child, out);
}

HRESULT STDMETHODCALLTYPE WindowAccessible::get_accFocus(VARIANT* out) {
  return m_system->get_accFocus(out);
}

HRESULT STDMETHODCALLTYPE WindowAccessible::get_accSelection(VARIANT* out) {
  return m_system->get_accSelection(out);
}

HRESULT STDMETHODCALLTYPE WindowAccessible::get_accDefaultAction(VARIANT child, BSTR* out) {
  return m_system->get_accDefaultAction(child, out);
}

HRESULT STDMETHODCALLTYPE WindowAccessible::accSelect(LONG flags, VARIANT child) {
  return m_system->accSelect(flags, child);
}

HRESULT STDMETHODCALLTYPE WindowAccessible::accLocation(LONG* left, LONG* top, LONG* width,
                                                        LONG* height, VARIANT child) {
  return m_system->accLocation(left, top, width, height, child);
}

HRESULT STDMETHODCALLTYPE WindowAccessible::accNavigate(LONG direction, VARIANT start,
                                                        VARIANT* out) {
  return m_system->accNavigate(direction, start, out);
}

HRESULT STDMETHODCALLTYPE WindowAccessible::accHitTest(LONG x, LONG y, VARIANT* out) {
  return m_system->accHitTest(x, y, out);
}

HRESULT STDMETHODCALLTYPE WindowAccessible::accDoDefaultAction(VARIANT child) {
  return m_system->accDoDefaultAction(child);
}

HRESULT STDMETHODCALLTYPE WindowAccessible::put_accName(VARIANT child, BSTR name) {
  return m_system->put_accName(child, name);
}

HRESULT STDMETHODCALLTYPE WindowAccessible::put_accValue(VARIANT child, BSTR value) {
  return m_system->put_accValue(child, value);
}

bool AsksForClientArea(LPARAM lParam) {
  // The id has 32 bits, whatever the width of the parameter.
  return static_cast<DWORD>(lParam) == static_cast<DWORD>(OBJID_CLIENT);
}

}  // namespace postmarker
