// A grid whose cells are tiles: a picture, a name and a line that tells a state.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "controls/CGridCtrl_win.h"
#include "controls/TileAccessible_win.h"
#include "controls/TileLayout.h"
#include "support/CriticalSection_win.h"

namespace postmarker {

// The entries fill the columns of a row and then the next row. One of them can be selected, by a
// click, by the arrow keys, or by typing its name. A disabled one can have the focus, so that
// everybody can read why it is disabled, and the selection, but it gives no selected text. To
// programs for the blind it is a list with an item for each entry; they are told which entry has
// the focus when the grid gets it, and of each change of focus and selection.
//
// For the window's thread; AddEntry, EntryCount and SelectedText may be called on any.
class KsImageGridCtrl : public CGridCtrl, public TileSource {
 public:
  // Sent to the parent, without parameters, when a person does something in the grid: chooses,
  // scrolls or moves the focus. Tips that speak of the choice are out of date then.
  static constexpr UINT kActivityMessage = 0x65C;

  KsImageGridCtrl();
  ~KsImageGridCtrl() override;

  // Makes as many columns of this width in pixels as fit beside a vertical scroll bar, but at least
  // one. REQUIRES: Attach. False if the list view refuses. Entries that are there stay.
  bool Initialise(int columnWidth);

  // Adds an entry at the end and returns its number, counted from 0. The icon, which may be null,
  // is copied. The list view's cell gets the name, and after a comma the status, for who reads
  // the screen aloud.
  int AddEntry(const std::wstring& name, const std::wstring& status, HICON icon, bool enabled);

  // How many entries there are; the number of the last one is one less.
  [[nodiscard]] int EntryCount() const;

  // Selects an entry, gives it the focus cell and scrolls it into view; -1 selects nothing.
  void SelectEntry(int entry);

  // The number of the selected entry, also of a disabled one; -1 for none.
  [[nodiscard]] int SelectedEntry() const { return m_selected; }

  // The name of the selected entry. Empty for none, and for one that is disabled.
  [[nodiscard]] std::wstring SelectedText() const;

 protected:
  void OnAttached() override;
  [[nodiscard]] CellKind GetCellKind(int row, int col) const override;
  bool OnCellPressed(int row, int col, const RECT& rect, WPARAM keys) override;
  void OnCellClicked(int row, int col) override;
  void OnFocusCellChanged(GridCell before, GridCell now) override;
  LRESULT OnLButtonDown(const MessageArgs& args) override;
  LRESULT OnKeyDown(const MessageArgs& args) override;
  LRESULT OnSetFocus(const MessageArgs& args) override;
  LRESULT OnScroll(const MessageArgs& args) override;
  LRESULT OnDestroy(const MessageArgs& args) override;
  void DrawCell(DrawContext* context) const override;
  [[nodiscard]] const MessageTable* Messages() const override { return &kMessages; }
  static const MessageTable kMessages;
  static const MessageEntry kEntries[];

 private:
  struct Entry {
    std::wstring name;
    std::wstring status;
    IconHandle icon;
    bool enabled = true;
  };

  // What a tile shows: its texts, and a copy of its icon's handle, which lives as long as the grid.
  struct Tile {
    std::wstring name;
    std::wstring status;
    HICON icon = nullptr;
    bool enabled = true;
  };

  LRESULT HandleGetObject(const MessageArgs& args);
  [[nodiscard]] int TileCount() const override { return EntryCount(); }
  bool ReadTileFacts(int tile, ItemFacts* facts) const override;
  void ChooseTile(int tile) override;

  [[nodiscard]] bool ReadTile(int entry, Tile* tile) const;
  [[nodiscard]] int EntryAt(int row, int col) const;
  [[nodiscard]] TileLayout Layout(HDC dc) const;
  void MakeFonts();
  void UpdateRowHeight();
  void ShowEntry(int entry);
  void TellActivity() const;
  void AnnounceFocus() const;
  void FocusFirstTile();
  void InvalidateEntry(int entry) const;
  void DrawTile(const DrawContext& context, const Tile& tile, bool selected) const;
  void DrawTileBackground(const DrawContext& context, bool usable, bool filled,
                          bool selected) const;
  void DrawTileText(const DrawContext& context, const Tile& tile, const TileLayout& layout,
                    bool selected) const;
  void DrawMark(const DrawContext& context) const;

  ComPtr<IAccessible> m_accessible;  // made when somebody asks
  mutable CriticalSection m_lock;    // guards m_entries
  std::vector<Entry> m_entries;
  int m_selected = -1;
  int m_columnWidth = 0;
  int m_columnCount = 1;
  int m_imageSize = 0;
  bool m_selectsWithFocus = true;
  BrushHandle m_borderBrush;
  BrushHandle m_plainBrush;
  BrushHandle m_selectedBrush;
  BrushHandle m_hoverBrush;
  FontHandle m_nameFont;
  FontHandle m_statusFont;
  FontHandle m_selectedFont;
  BitmapHandle m_mark;  // the skin's sign of the selected tile, if the suite has it
};

}  // namespace postmarker
