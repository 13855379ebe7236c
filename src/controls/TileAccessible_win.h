// The tiles of a grid as the platform's accessibility interface shows them: a list of items, each
// with its name, its state and its place.
#pragma once

#include <windows.h>

#include <oleacc.h>

#include <string>

#include "controls/ItemsAccessible_win.h"
#include "support/ComPtr_win.h"

namespace postmarker {

// A window object that shows tiles. Asked on the window's thread.
class TileSource {
 public:
  // The number of tiles; they count from 0.
  [[nodiscard]] virtual int TileCount() const = 0;
  // False for a number without a tile.
  virtual bool ReadTileFacts(int tile, ItemFacts* facts) const = 0;
  // Selects a tile in the person's name.
  virtual void ChooseTile(int tile) = 0;

 protected:
  ~TileSource() = default;
};

// Makes the object for the client area of a window whose CWnd is a TileSource; null if the
// system refuses. It may outlive the window, and then says that there is nothing.
[[nodiscard]] ComPtr<IAccessible> MakeTileAccessible(HWND window);

}  // namespace postmarker
