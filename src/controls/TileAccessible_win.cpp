#include "controls/TileAccessible_win.h"

#include "controls/WindowAccessible_win.h"
#include "support/Variant_win.h"
#include "ui/CWnd.h"

namespace postmarker {
namespace {

// The list as a whole is answered for by the system's own object for list views; its children are
// the tiles. A child's id is the tile's number plus 1.
class TileAccessible final : public WindowAccessible {
 public:
  using WindowAccessible::WindowAccessible;

  HRESULT STDMETHODCALLTYPE get_accChildCount(LONG* count) override {
    const TileSource* const tiles = Tiles();
    *count = tiles != nullptr ? tiles->TileCount() : 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_accChild(VARIANT /*child*/, IDispatch** out) override {
    *out = nullptr;
    return S_FALSE;  // tiles are no objects of their own
  }
  HRESULT STDMETHODCALLTYPE get_accName(VARIANT child, BSTR* out) override {
    if (IsSelf(child)) {
      return WindowAccessible::get_accName(child, out);
    }
    TileFacts facts;
    if (!Read(child, &facts)) {
      return E_INVALIDARG;
    }
    *out = MakeBstr(facts.name).Release();
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_accValue(VARIANT /*child*/, BSTR* out) override {
    return None(out);
  }
  HRESULT STDMETHODCALLTYPE get_accDescription(VARIANT /*child*/, BSTR* out) override {
    return None(out);
  }
  HRESULT STDMETHODCALLTYPE get_accRole(VARIANT child, VARIANT* out) override {
    *out = NumberVariant(IsSelf(child) ? ROLE_SYSTEM_LIST : ROLE_SYSTEM_LISTITEM);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_accState(VARIANT child, VARIANT* out) override {
    if (IsSelf(child)) {
      return WindowAccessible::get_accState(child, out);
    }
    TileFacts facts;
    if (!Read(child, &facts)) {
      return E_INVALIDARG;
    }
    LONG state = STATE_SYSTEM_SELECTABLE | STATE_SYSTEM_FOCUSABLE;
    state |= facts.enabled ? 0 : STATE_SYSTEM_UNAVAILABLE;
    state |= facts.selected ? STATE_SYSTEM_SELECTED : 0;
    state |= facts.focused ? STATE_SYSTEM_FOCUSED : 0;
    *out = NumberVariant(state);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_accHelp(VARIANT /*child*/, BSTR* out) override { return None(out); }
  HRESULT STDMETHODCALLTYPE get_accHelpTopic(BSTR* file, VARIANT /*child*/, LONG* topic) override {
    *topic = 0;
    return None(file);
  }
  HRESULT STDMETHODCALLTYPE get_accKeyboardShortcut(VARIANT child, BSTR* out) override {
    return IsSelf(child) ? WindowAccessible::get_accKeyboardShortcut(child, out) : None(out);
  }
  HRESULT STDMETHODCALLTYPE get_accFocus(VARIANT* out) override {
    return FindTile([](const TileFacts& facts) { return facts.focused; }, out);
  }
  HRESULT STDMETHODCALLTYPE get_accSelection(VARIANT* out) override {
    return FindTile([](const TileFacts& facts) { return facts.selected; }, out);
  }
  HRESULT STDMETHODCALLTYPE get_accDefaultAction(VARIANT /*child*/, BSTR* out) override {
    return None(out);
  }
  HRESULT STDMETHODCALLTYPE accSelect(LONG flags, VARIANT child) override {
    TileFacts facts;
    if (IsSelf(child) || !Read(child, &facts)) {
      return E_INVALIDARG;
    }
    if ((flags & (SELFLAG_TAKEFOCUS | SELFLAG_TAKESELECTION)) != 0) {
      Tiles()->ChooseTile(child.lVal - 1);
    }
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE accLocation(LONG* left, LONG* top, LONG* width, LONG* height,
                                        VARIANT child) override {
    if (IsSelf(child)) {
      return WindowAccessible::accLocation(left, top, width, height, child);
    }
    TileFacts facts;
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
    const POINT point = {x, y};
    const HRESULT result = FindTile(
        [point](const TileFacts& facts) { return ::PtInRect(&facts.place, point) != FALSE; }, out);
    RECT window = {};
    ::GetWindowRect(Window(), &window);
    if (result == S_FALSE && ::PtInRect(&window, point)) {
      *out = NumberVariant(CHILDID_SELF);
      return S_OK;
    }
    return result;
  }
  HRESULT STDMETHODCALLTYPE accDoDefaultAction(VARIANT /*child*/) override {
    return DISP_E_MEMBERNOTFOUND;
  }
  HRESULT STDMETHODCALLTYPE put_accName(VARIANT /*child*/, BSTR /*name*/) override {
    return DISP_E_MEMBERNOTFOUND;
  }
  HRESULT STDMETHODCALLTYPE put_accValue(VARIANT /*child*/, BSTR /*value*/) override {
    return DISP_E_MEMBERNOTFOUND;
  }

 private:
  ~TileAccessible() override = default;

  static HRESULT None(BSTR* out) {
    *out = nullptr;
    return S_FALSE;
  }
  [[nodiscard]] TileSource* Tiles() const {
    return dynamic_cast<TileSource*>(CWnd::FromHandle(Window()));
  }
  bool Read(const VARIANT& child, TileFacts* facts) const {
    const TileSource* const tiles = Tiles();
    return tiles != nullptr && child.vt == VT_I4 && child.lVal > 0 &&
           tiles->ReadTileFacts(child.lVal - 1, facts);
  }
  // The first tile of which a condition holds.
  template <class Condition>
  HRESULT FindTile(Condition condition, VARIANT* out) const {
    TileFacts facts;
    for (LONG id = 1; Read(NumberVariant(id), &facts); ++id) {
      if (condition(facts)) {
        *out = NumberVariant(id);
        return S_OK;
      }
    }
    out->vt = VT_EMPTY;
    return S_FALSE;
  }
};

}  // namespace

void MakeTileAccessible(HWND window, ComPtr<IAccessible>* out) {
  MakeWindowAccessible<TileAccessible>(window, out);
}

}  // namespace postmarker
