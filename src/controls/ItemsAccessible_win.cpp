#include "controls/ItemsAccessible_win.h"

#include "support/Bstr_win.h"
#include "support/Variant_win.h"

namespace postmarker {
namespace {

// Runs a part of a call: no exception may pass into the system.
template <class Call>
HRESULT Answer(Call call) noexcept {
  try {
    return call();
  } catch (...) {
    return E_OUTOFMEMORY;
  }
}

HRESULT None(BSTR* out) {
  *out = nullptr;
  return S_FALSE;
}

HRESULT None(VARIANT* out) {
  out->vt = VT_EMPTY;
  return S_FALSE;
}

}  // namespace

bool ItemsAccessible::ReadChild(const VARIANT& child, ItemFacts* facts) const {
  return child.vt == VT_I4 && child.lVal > 0 && ReadItem(child.lVal - 1, facts);
}

HRESULT ItemsAccessible::TellText(const VARIANT& child, std::wstring ItemFacts::*text,
                                  BSTR* out) const {
  *out = nullptr;
  return Answer([&]() -> HRESULT {
    ItemFacts facts;
    if (!ReadChild(child, &facts)) {
      return E_INVALIDARG;
    }
    if ((facts.*text).empty()) {
      return S_FALSE;
    }
    *out = MakeBstr(facts.*text).Release();
    return S_OK;
  });
}

// The first item of which the condition holds.
HRESULT ItemsAccessible::FindItem(bool ItemFacts::*condition, VARIANT* out) const {
  return Answer([&] {
    const int count = CountItems();
    for (int item = 0; item < count; ++item) {
      ItemFacts facts;
      if (ReadItem(item, &facts) && facts.*condition) {
        *out = NumberVariant(item + 1);
        return S_OK;
      }
    }
    return None(out);
  });
}

int ItemsAccessible::ItemFromPoint(POINT point) const {
  const int count = CountItems();
  for (int item = 0; item < count; ++item) {
    ItemFacts facts;
    if (ReadItem(item, &facts) && ::PtInRect(&facts.place, point)) {
      return item;
    }
  }
  return -1;
}

HRESULT STDMETHODCALLTYPE ItemsAccessible::get_accChildCount(LONG* count) {
  return Answer([&] {
    *count = CountItems();
    return S_OK;
  });
}

HRESULT STDMETHODCALLTYPE ItemsAccessible::get_accChild(VARIANT /*child*/, IDispatch** out) {
  *out = nullptr;
  return S_FALSE;
}

HRESULT STDMETHODCALLTYPE ItemsAccessible::get_accName(VARIANT child, BSTR* out) {
  if (!IsSelf(child)) {
    return TellText(child, &ItemFacts::name, out);
  }
  return Answer([&] {
    const std::optional<std::wstring> name = WindowName();
    if (!name) {
      return WindowAccessible::get_accName(child, out);
    }
    *out = MakeBstr(*name).Release();
    return S_OK;
  });
}

HRESULT STDMETHODCALLTYPE ItemsAccessible::get_accValue(VARIANT child, BSTR* out) {
  return IsSelf(child) ? None(out) : TellText(child, &ItemFacts::value, out);
}

HRESULT STDMETHODCALLTYPE ItemsAccessible::get_accDescription(VARIANT /*child*/, BSTR* out) {
  return None(out);
}

HRESULT STDMETHODCALLTYPE ItemsAccessible::get_accRole(VARIANT child, VARIANT* out) {
  *out = NumberVariant(IsSelf(child) ? Kind().windowRole : Kind().itemRole);
  return S_OK;
}

HRESULT STDMETHODCALLTYPE ItemsAccessible::get_accState(VARIANT child, VARIANT* out) {
  if (IsSelf(child)) {
    return WindowAccessible::get_accState(child, out);
  }
  return Answer([&]() -> HRESULT {
    ItemFacts facts;
    if (!ReadChild(child, &facts)) {
      return E_INVALIDARG;
    }
    LONG state = Kind().itemState;
    state |= facts.enabled ? 0 : STATE_SYSTEM_UNAVAILABLE;
    state |= facts.selected ? STATE_SYSTEM_SELECTED : 0;
    state |= facts.focused ? STATE_SYSTEM_FOCUSED : 0;
    *out = NumberVariant(state);
    return S_OK;
  });
}

HRESULT STDMETHODCALLTYPE ItemsAccessible::get_accHelp(VARIANT /*child*/, BSTR* out) {
  return None(out);
}

HRESULT STDMETHODCALLTYPE ItemsAccessible::get_accHelpTopic(BSTR* file, VARIANT /*child*/,
                                                            LONG* topic) {
  *topic = 0;
  return None(file);
}

HRESULT STDMETHODCALLTYPE ItemsAccessible::get_accKeyboardShortcut(VARIANT child, BSTR* out) {
  return IsSelf(child) ? WindowAccessible::get_accKeyboardShortcut(child, out) : None(out);
}

HRESULT STDMETHODCALLTYPE ItemsAccessible::get_accFocus(VARIANT* out) {
  return FindItem(&ItemFacts::focused, out);
}

HRESULT STDMETHODCALLTYPE ItemsAccessible::get_accSelection(VARIANT* out) {
  return FindItem(&ItemFacts::selected, out);
}

// What can be done has no name here.
HRESULT STDMETHODCALLTYPE ItemsAccessible::get_accDefaultAction(VARIANT /*child*/, BSTR* out) {
  return None(out);
}

HRESULT STDMETHODCALLTYPE ItemsAccessible::accSelect(LONG flags, VARIANT child) {
  return Answer([&]() -> HRESULT {
    ItemFacts facts;
    if (!ReadChild(child, &facts)) {
      return E_INVALIDARG;
    }
    TakeItem(child.lVal - 1, flags);
    return S_OK;
  });
}

HRESULT STDMETHODCALLTYPE ItemsAccessible::accLocation(LONG* left, LONG* top, LONG* width,
                                                       LONG* height, VARIANT child) {
  if (IsSelf(child)) {
    return WindowAccessible::accLocation(left, top, width, height, child);
  }
  return Answer([&]() -> HRESULT {
    ItemFacts facts;
    if (!ReadChild(child, &facts)) {
      return E_INVALIDARG;
    }
    *left = facts.place.left;
    *top = facts.place.top;
    *width = facts.place.right - facts.place.left;
    *height = facts.place.bottom - facts.place.top;
    return S_OK;
  });
}

HRESULT STDMETHODCALLTYPE ItemsAccessible::accNavigate(LONG /*direction*/, VARIANT /*start*/,
                                                       VARIANT* out) {
  return None(out);
}

HRESULT STDMETHODCALLTYPE ItemsAccessible::accHitTest(LONG x, LONG y, VARIANT* out) {
  return Answer([&] {
    const POINT point = {x, y};
    const int item = ItemFromPoint(point);
    RECT window = {};
    ::GetWindowRect(Window(), &window);
    if (item < 0 && !::PtInRect(&window, point)) {
      return None(out);
    }
    *out = NumberVariant(item >= 0 ? item + 1 : CHILDID_SELF);
    return S_OK;
  });
}

HRESULT STDMETHODCALLTYPE ItemsAccessible::accDoDefaultAction(VARIANT child) {
  return Answer([&]() -> HRESULT {
    ItemFacts facts;
    const bool canBeDone = ReadChild(child, &facts) && facts.enabled;
    return canBeDone && PressItem(child.lVal - 1) ? S_OK : DISP_E_MEMBERNOTFOUND;
  });
}

HRESULT STDMETHODCALLTYPE ItemsAccessible::put_accName(VARIANT /*child*/, BSTR /*name*/) {
  return DISP_E_MEMBERNOTFOUND;
}

HRESULT STDMETHODCALLTYPE ItemsAccessible::put_accValue(VARIANT /*child*/, BSTR /*value*/) {
  return DISP_E_MEMBERNOTFOUND;
}

}  // namespace postmarker
