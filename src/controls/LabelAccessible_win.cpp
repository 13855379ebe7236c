#include "controls/LabelAccessible_win.h"

#include "ui/CWnd.h"

namespace postmarker {
namespace {

class LabelAccessible final : public ItemsAccessible {
 public:
  using ItemsAccessible::ItemsAccessible;

  // A label has no shortcut: its ampersands are those of entities.
  HRESULT STDMETHODCALLTYPE get_accKeyboardShortcut(VARIANT /*child*/, BSTR* out) override {
    *out = nullptr;
    return S_FALSE;
  }

 private:
  ~LabelAccessible() override = default;

  [[nodiscard]] LinkSource* Links() const {
    return dynamic_cast<LinkSource*>(CWnd::FromHandle(Window()));
  }

  [[nodiscard]] ItemsKind Kind() const override {
    return {ROLE_SYSTEM_STATICTEXT, ROLE_SYSTEM_LINK, STATE_SYSTEM_LINKED | STATE_SYSTEM_FOCUSABLE};
  }
  [[nodiscard]] int CountItems() const override {
    LinkSource* const links = Links();
    return links != nullptr ? links->LinkCount() : 0;
  }
  bool ReadItem(int item, ItemFacts* facts) const override {
    LinkSource* const links = Links();
    return links != nullptr && links->ReadLinkFacts(item, facts);
  }
  void TakeItem(int item, LONG flags) override {
    if ((flags & SELFLAG_TAKEFOCUS) != 0) {
      Links()->FocusLink(item);
    }
  }
  [[nodiscard]] std::optional<std::wstring> WindowName() const override {
    LinkSource* const links = Links();
    return links != nullptr ? std::optional(links->PlainText()) : std::nullopt;
  }
  // Not by the rectangles around links, in which there can be other text.
  [[nodiscard]] int ItemFromPoint(POINT point) const override {
    LinkSource* const links = Links();
    return links != nullptr ? links->LinkFromPoint(point) : -1;
  }
  bool PressItem(int item) override {
    Links()->OpenLinkLater(item);
    return true;
  }
};

}  // namespace

ComPtr<IAccessible> MakeLabelAccessible(HWND window) {
  return MakeWindowAccessible<LabelAccessible>(window);
}

}  // namespace postmarker
