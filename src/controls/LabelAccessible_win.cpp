#include "controls/LabelAccessible_win.h"

#include "controls/WindowAccessible_win.h"
#include "support/Bstr_win.h"
#include "support/Variant_win.h"
#include "ui/CWnd.h"

namespace postmarker {
namespace {

// A child's id is the link's number plus 1.
class LabelAccessible final : public WindowAccessible {
 public:
  using WindowAccessible::WindowAccessible;

  HRESULT STDMETHODCALLTYPE get_accChildCount(LONG* count) override {
    LinkSource* const links = Links();
    *count = links != nullptr ? links->LinkCount() : 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_accChild(VARIANT /*child*/, IDispatch** out) override {
    *out = nullptr;
    return S_FALSE;  // links are no objects of their own
  }
  HRESULT STDMETHODCALLTYPE get_accName(VARIANT child, BSTR* out) override {
    LinkSource* const links = Links();
    if (IsSelf(child) && links != nullptr) {
      *out = MakeBstr(links->PlainText()).Release();
      return S_OK;
    }
    return Tell(child, &LinkFacts::name, out);
  }
  HRESULT STDMETHODCALLTYPE get_accValue(VARIANT child, BSTR* out) override {
    return IsSelf(child) ? None(out) : Tell(child, &LinkFacts::target, out);
  }
  HRESULT STDMETHODCALLTYPE get_accDescription(VARIANT /*child*/, BSTR* out) override {
    return None(out);
  }
  HRESULT STDMETHODCALLTYPE get_accRole(VARIANT child, VARIANT* out) override {
    *out = NumberVariant(IsSelf(child) ? ROLE_SYSTEM_STATICTEXT : ROLE_SYSTEM_LINK);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_accState(VARIANT child, VARIANT* out) override {
    if (IsSelf(child)) {
      return WindowAccessible::get_accState(child, out);
    }
    LinkFacts facts;
    if (!Read(child, &facts)) {
      return E_INVALIDARG;
    }
    LONG state = STATE_SYSTEM_LINKED | STATE_SYSTEM_FOCUSABLE;
    state |= facts.enabled ? 0 : STATE_SYSTEM_UNAVAILABLE;
    state |= facts.focused ? STATE_SYSTEM_FOCUSED : 0;
    *out = NumberVariant(state);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_accHelp(VARIANT /*child*/, BSTR* out) override { return None(out); }
  HRESULT STDMETHODCALLTYPE get_accHelpTopic(BSTR* file, VARIANT /*child*/, LONG* topic) override {
    *topic = 0;
    return None(file);
  }
  HRESULT STDMETHODCALLTYPE get_accKeyboardShortcut(VARIANT /*child*/, BSTR* out) override {
    return None(out);
  }
  HRESULT STDMETHODCALLTYPE get_accFocus(VARIANT* out) override {
    LinkFacts facts;
    for (LONG id = 1; Read(NumberVariant(id), &facts); ++id) {
      if (facts.focused) {
        *out = NumberVariant(id);
        return S_OK;
      }
    }
    out->vt = VT_EMPTY;
    return S_FALSE;
  }
  HRESULT STDMETHODCALLTYPE get_accSelection(VARIANT* out) override {
    out->vt = VT_EMPTY;
    return S_FALSE;
  }
  HRESULT STDMETHODCALLTYPE get_accDefaultAction(VARIANT /*child*/, BSTR* out) override {
    return None(out);  // it has no name, but can be done
  }
  HRESULT STDMETHODCALLTYPE accSelect(LONG flags, VARIANT child) override {
    LinkFacts facts;
    if (IsSelf(child) || !Read(child, &facts)) {
      return E_INVALIDARG;
    }
    if ((flags & SELFLAG_TAKEFOCUS) != 0) {
      Links()->FocusLink(child.lVal - 1);
    }
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE accLocation(LONG* left, LONG* top, LONG* width, LONG* height,
                                        VARIANT child) override {
    if (IsSelf(child)) {
      return WindowAccessible::accLocation(left, top, width, height, child);
    }
    LinkFacts facts;
    if (!Read(child, &facts)) {
      return E_INVALIDARG;
    }
    *left = facts.place.left;
    *top = facts.place.top;
    *width = facts.place.right - facts.place.left;
    *height = facts.place.bottom - facts.place.top;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE accNavigate(LONG /*direction*/, VARIANT /*start*/,
                                        VARIANT* out) override {
    out->vt = VT_EMPTY;
    return S_FALSE;
  }
  HRESULT STDMETHODCALLTYPE accHitTest(LONG x, LONG y, VARIANT* out) override {
    LinkSource* const links = Links();
    const int link = links != nullptr ? links->LinkFromPoint({x, y}) : -1;
    if (link < 0) {
      return WindowAccessible::accHitTest(x, y, out);
    }
    *out = NumberVariant(link + 1);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE accDoDefaultAction(VARIANT child) override {
    LinkFacts facts;
    if (IsSelf(child) || !Read(child, &facts)) {
      return DISP_E_MEMBERNOTFOUND;
    }
    Links()->OpenLinkLater(child.lVal - 1);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE put_accName(VARIANT /*child*/, BSTR /*name*/) override {
    return DISP_E_MEMBERNOTFOUND;
  }
  HRESULT STDMETHODCALLTYPE put_accValue(VARIANT /*child*/, BSTR /*value*/) override {
    return DISP_E_MEMBERNOTFOUND;
  }

 private:
  ~LabelAccessible() override = default;

  static HRESULT None(BSTR* out) {
    *out = nullptr;
    return S_FALSE;
  }
  [[nodiscard]] LinkSource* Links() const {
    return dynamic_cast<LinkSource*>(CWnd::FromHandle(Window()));
  }
  bool Read(const VARIANT& child, LinkFacts* facts) const {
    LinkSource* const links = Links();
    return links != nullptr && child.vt == VT_I4 && child.lVal > 0 &&
           links->ReadLinkFacts(child.lVal - 1, facts);
  }
  HRESULT Tell(const VARIANT& child, std::wstring LinkFacts::*text, BSTR* out) const {
    LinkFacts facts;
    if (!Read(child, &facts)) {
      *out = nullptr;
      return E_INVALIDARG;
    }
    *out = MakeBstr(facts.*text).Release();
    return S_OK;
  }
};

}  // namespace

void MakeLabelAccessible(HWND window, ComPtr<IAccessible>* out) {
  MakeWindowAccessible<LabelAccessible>(window, out);
}

}  // namespace postmarker
