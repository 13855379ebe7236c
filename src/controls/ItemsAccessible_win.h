// The base of accessibility objects whose children are parts of one window, such as the links of a
// label or the tiles of a grid.
#pragma once

#include <windows.h>

#include <oleacc.h>

#include <optional>
#include <string>

#include "controls/WindowAccessible_win.h"

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

namespace postmarker {

// What there is to tell of one item.
struct ItemFacts {
  std::wstring name;
  std::wstring value;  // empty for none
  RECT place = {};     // on the screen
  bool enabled = true;
  bool selected = false;
  bool focused = false;
};

// What the window as a whole and all of its items are.
struct ItemsKind {
  LONG windowRole;  // ROLE_SYSTEM_...
  LONG itemRole;
  LONG itemState;  // STATE_SYSTEM_... bits of every item
};

// Items count from 0 and are no objects of their own: a child's id is the item's number plus 1. A
// subclass tells what the items are; what it throws is an error of the call.
class ItemsAccessible : public WindowAccessible {
 public:
  using WindowAccessible::WindowAccessible;

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
  ~ItemsAccessible() override = default;

  [[nodiscard]] virtual ItemsKind Kind() const = 0;
  // 0 once the window is gone.
  [[nodiscard]] virtual int CountItems() const = 0;
  // False for a number without an item.
  virtual bool ReadItem(int item, ItemFacts* facts) const = 0;
  // Selects or focuses an item in the person's name; `flags` are SELFLAG_... bits.
  virtual void TakeItem(int item, LONG flags) = 0;

  // The name of the window as a whole; none: what the system says.
  [[nodiscard]] virtual std::optional<std::wstring> WindowName() const { return std::nullopt; }
  // The item at a point on the screen, or -1.
  [[nodiscard]] virtual int ItemFromPoint(POINT point) const;
  // Does what a click on the item does. False if that is nothing.
  virtual bool PressItem(int /*item*/) { return false; }

 private:
  bool ReadChild(const VARIANT& child, ItemFacts* facts) const;
  HRESULT TellText(const VARIANT& child, std::wstring ItemFacts::*text, BSTR* out) const;
  HRESULT FindItem(bool ItemFacts::*condition, VARIANT* out) const;
};

}  // namespace postmarker

#pragma GCC diagnostic pop
