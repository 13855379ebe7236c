#include "controls/TileAccessible_win.h"

#include <oleacc.h>

#include <atomic>
#include <utility>

#include "support/Bstr_win.h"
#include "support/ComPtr_win.h"
#include "ui/CWnd.h"

// The system's interfaces have no virtual destructors: their objects are deleted by Release alone.
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

namespace postmarker {
namespace {

VARIANT NumberVariant(LONG number) {
  VARIANT variant = {};
  variant.vt = VT_I4;
  variant.lVal = number;
  return variant;
}

// The list as a whole is answered for by the system's own object for list views; its children are
// the tiles. A child's id is the tile's number plus 1.
class TileAccessible final : public IAccessible {
 public:
  TileAccessible(HWND window, ComPtr<IAccessible> list)
      : m_window(window), m_list(std::move(list)) {}
  TileAccessible(const TileAccessible&) = delete;
  TileAccessible& operator=(const TileAccessible&) = delete;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** out) override {
    if (out == nullptr) {
      return E_POINTER;
    }
    const bool known = id == IID_IUnknown || id == IID_IDispatch || id == IID_IAccessible;
    *out = known ? static_cast<IAccessible*>(this) : nullptr;
    if (!known) {
      return E_NOINTERFACE;
    }
    AddRef();
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++m_references; }
  ULONG STDMETHODCALLTYPE Release() override {
    const ULONG left = --m_references;
    if (left == 0) {
      delete this;
    }
    return left;
  }

  // By name it can be asked what the system's object can.
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
    return m_list->GetTypeInfoCount(count);
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID language, ITypeInfo** out) override {
    return m_list->GetTypeInfo(index, language, out);
  }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID id, LPOLESTR* names, UINT count, LCID language,
                                          DISPID* out) override {
    return m_list->GetIDsOfNames(id, names, count, language, out);
  }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID id, LCID language, WORD flags,
                                   DISPPARAMS* arguments, VARIANT* result, EXCEPINFO* exception,
                                   UINT* wrong) override {
    return m_list->Invoke(member, id, language, flags, arguments, result, exception, wrong);
  }

  HRESULT STDMETHODCALLTYPE get_accParent(IDispatch** out) override {
    return m_list->get_accParent(out);
  }
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
      return m_list->get_accName(child, out);
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
      return m_list->get_accState(child, out);
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
    return IsSelf(child) ? m_list->get_accKeyboardShortcut(child, out) : None(out);
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
      return m_list->accLocation(left, top, width, height, child);
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
    ::GetWindowRect(m_window, &window);
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
  ~TileAccessible() = default;

  static bool IsSelf(const VARIANT& child) {
    return child.vt == VT_I4 && child.lVal == CHILDID_SELF;
  }
  static HRESULT None(BSTR* out) {
    *out = nullptr;
    return S_FALSE;
  }
  [[nodiscard]] TileSource* Tiles() const {
    return dynamic_cast<TileSource*>(CWnd::FromHandle(m_window));
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

  HWND m_window;
  ComPtr<IAccessible> m_list;
  std::atomic<ULONG> m_references = 1;
};

}  // namespace

LRESULT AnswerWithTiles(HWND window, WPARAM wParam) {
  ComPtr<IAccessible> list;
  if (FAILED(::CreateStdAccessibleObject(window, static_cast<LONG>(OBJID_CLIENT), IID_IAccessible,
                                         list.PutVoid())) ||
      !list) {
    return 0;
  }
  const ComPtr<IAccessible> tiles(new TileAccessible(window, std::move(list)));
  return ::LresultFromObject(IID_IAccessible, wParam, tiles.Get());
}

}  // namespace postmarker
