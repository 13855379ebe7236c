#include "controls/TileAccessible_win.h"

#include "ui/CWnd.h"

namespace postmarker {
namespace {

// The list as a whole is answered for by the system's own object for list views.
class TileAccessible final : public ItemsAccessible {
 public:
  using ItemsAccessible::ItemsAccessible;

 private:
  ~TileAccessible() override = default;

  [[nodiscard]] TileSource* Tiles() const {
    return dynamic_cast<TileSource*>(CWnd::FromHandle(Window()));
  }

  [[nodiscard]] ItemsKind Kind() const override {
    return {ROLE_SYSTEM_LIST, ROLE_SYSTEM_LISTITEM,
            STATE_SYSTEM_SELECTABLE | STATE_SYSTEM_FOCUSABLE};
  }
  [[nodiscard]] int CountItems() const override {
    const TileSource* const tiles = Tiles();
    return tiles != nullptr ? tiles->TileCount() : 0;
  }
  bool ReadItem(int item, ItemFacts* facts) const override {
    const TileSource* const tiles = Tiles();
    return tiles != nullptr && tiles->ReadTileFacts(item, facts);
  }
  void TakeItem(int item, LONG flags) override {
    if ((flags & (SELFLAG_TAKEFOCUS | SELFLAG_TAKESELECTION)) != 0) {
      Tiles()->ChooseTile(item);
    }
  }
};

}  // namespace

ComPtr<IAccessible> MakeTileAccessible(HWND window) {
  return MakeWindowAccessible<TileAccessible>(window);
}

}  // namespace postmarker
