// A list view that behaves like a grid of cells.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "controls/CellSearch.h"
#include "controls/ColumnState.h"
#include "controls/GridCell.h"
#include "ui/CListCtrl.h"
#include "ui/ImageList.h"

namespace postmarker {

// What was chosen in a combo box: the item's place in its list, -1 for a text that is none of them,
// and the number that the item was given.
struct ComboItem {
  int index = -1;
  LPARAM data = 0;
};

// Every cell can have a kind, which decides what a click or the blank key does in it. There is a
// focus cell that moves by keys and clicks, a hover cell, a search by typing, sorting by a column,
// and in-place editing of a cell. A subclass supplies kinds, texts and pictures by overriding the
// cell hooks.
//
// The list view must be in report mode. It draws its rows itself: the parent window passes
// WM_DRAWITEM and WM_MEASUREITEM of the control on to DrawItem and MeasureItem. Rows keep their
// texts in the list view's items, where programs for the blind read them.
//
// For the window's own thread. Only one cell editor can be open at a time in the process.
class CGridCtrl : public CListCtrl {
 public:
  CGridCtrl();
  ~CGridCtrl() override;

  // Takes over the list view of a dialog template. A second call with the same window changes
  // nothing, so that DoDataExchange can make it. False for no window, or one in other hands.
  bool Attach(HWND list);

  // The height of every row in pixels.
  void SetRowHeight(int pixels);

  // The text shown in the middle while there is no row.
  void SetEmptyText(const std::wstring& text);

  // Handlers for the rows WM_DRAWITEM and WM_MEASUREITEM of the parent's message table: draws a row
  // and tells its height. Messages for other controls are left alone; the result is 0 for them.
  LRESULT DrawItem(const MessageArgs& args);
  LRESULT MeasureItem(const MessageArgs& args) const;

  // The layout of the columns as a text. Empty without columns.
  void GetColumnState(std::wstring* text) const;

  // Takes the layout over; false, and nothing changes, for a text that is not one of this grid's.
  // A width below `minimumWidth` becomes that, if that is above 0. `resort` sorts the rows.
  bool SetColumnState(const std::wstring& text, int minimumWidth, bool resort);

  // Moves the focus cell and redraws; `selectAlone` makes its row the only selected one. A place
  // outside the grid is taken for none.
  void SetCellFocus(int row, int col, bool ensureVisible, bool selectAlone = false);
  [[nodiscard]] GridCell FocusCell() const { return {m_focusRow, m_focusCol}; }
  [[nodiscard]] GridCell HoverCell() const { return {m_hoverRow, m_hoverCol}; }

  // The cell under a point of the client area. False, and -1 in both, beside all cells. `rect` may
  // be null.
  bool HitTest(POINT point, int* row, int* col, RECT* rect) const;

  // A cell's place in the client area. Empty for a cell that does not exist.
  [[nodiscard]] RECT CellRectangle(int row, int col) const;

  // Sorts the rows by CompareRows. Rows that compare equal keep their order.
  void Sort();
  void SetSortable(bool sortable) { m_sortable = sortable; }
  void SetUnsortableColumns(std::vector<int32_t> columns) {
    m_unsortableColumns = std::move(columns);
  }

  // Does what the cell's kind says. `rect` may be null: then it is the cell's own.
  void ActOnCell(int row, int col, const RECT* rect);

  // Is a cell editor open?
  [[nodiscard]] bool IsEditing() const { return m_editor != nullptr; }
  [[nodiscard]] GridCell EditCell() const { return {m_editRow, m_editCol}; }

  // Ends an open edit as the return key does (true) or as escape does. The hook may still refuse
  // an accepted value.
  void EndEdit(bool accept);

  // How the search by typing compares and walks, whether a blank typed during a search is part of
  // it, and after how many milliseconds without a key it ends.
  void SetSearch(const SearchOptions& options, bool blanksSearch, UINT timeoutMs);
  [[nodiscard]] const std::wstring& SearchedText() const { return m_searchText.Text(); }

  void SetTrackHover(bool on) { m_trackHover = on; }

  // The longest text that can be typed in the edit box, in UTF-16 units. A cell's longer text can
  // be edited all the same: nothing is cut.
  void SetEditLimit(uint16_t units) { m_editLimit = units; }

  // The name that a screen reader gives to the control: the list view's window text.
  void SetAccessibleName(const std::wstring& name) const {
    ::SetWindowTextW(Handle(), name.c_str());
  }

 protected:
  // What a cell's editor and its drawing are given.
  struct DrawContext {
    HDC dc;
    int row;
    int col;
    RECT rect;
    bool selected;  // the row is, and the grid has the focus or always shows it
    bool focused;   // the focus cell, while the grid has the focus
    bool hovered;
    bool enabled;
  };

  // Runs once when the list view was taken over.
  virtual void OnAttached() {}

  // Cell hooks. The base has no kinds, takes the press as each one says, and otherwise does
  // nothing.
  [[nodiscard]] virtual CellKind GetCellKind(int row, int col) const;
  [[nodiscard]] virtual std::wstring CellText(int row, int col) const;
  // Moves the focus there; without a control or shift key it acts on the cell. True: the list view
  // gets no press.
  virtual bool OnCellPressed(int row, int col, const RECT& rect, WPARAM keys);
  virtual bool OnCellReleased(int row, int col, WPARAM keys);
  virtual bool OnCellDoubleClicked(int row, int col, const RECT& rect);
  virtual void OnCellClicked(int row, int col);  // of kind kPlain
  virtual void OnCellChecked(int row, int col);
  virtual void OnFocusCellChanged(GridCell before, GridCell now);
  virtual void OnHoverChanged(GridCell before, GridCell now);

  // An edit is about to end. The base stores an accepted text in the cell. False keeps the editor
  // open and the focus in it.
  virtual bool OnCellEditDone(int row, int col, const std::wstring& text, const ComboItem& item,
                              bool cancelled);

  // Open the editors. False if that can't be done; then nothing has changed.
  virtual bool StartEdit(int row, int col, const RECT& rect);
  virtual bool StartCombo(int row, int col, const RECT& rect, bool editable);

  // What a combo box offers. The one that equals the cell's text is chosen.
  [[nodiscard]] virtual std::vector<std::wstring> ComboChoices(int row, int col) const;

  // The accessible name of the editor of a cell; the base takes the column's heading.
  [[nodiscard]] virtual std::wstring EditorName(int row, int col) const;

  // Negative, 0 or positive, as row `a` belongs before, beside or after row `b`. The base compares
  // the texts in the sort column unit by unit.
  [[nodiscard]] virtual int CompareRows(int a, int b) const;

  // Is a check box ticked?
  [[nodiscard]] virtual bool IsCellChecked(int row, int col) const;

  // Drawing, in the order of the calls. Each may move the context's left edge for what follows.
  [[nodiscard]] virtual COLORREF CellBackColor(const DrawContext& context) const;
  [[nodiscard]] virtual COLORREF CellTextColor(const DrawContext& context) const;
  virtual void DrawCell(DrawContext* context) const;
  virtual void DrawCellCheck(DrawContext* context) const;
  virtual void DrawCellImage(DrawContext* context) const;
  virtual void DrawCellText(const DrawContext& context) const;
  virtual void DrawCellFocus(const DrawContext& context) const;

  // The width of what stands before the text in column 0.
  [[nodiscard]] virtual int ImageWidth(int row, int col) const;

  // Message handlers, for subclasses to take over.
  virtual LRESULT OnLButtonDown(const MessageArgs& args);
  virtual LRESULT OnLButtonUp(const MessageArgs& args);
  virtual LRESULT OnLButtonDblClk(const MessageArgs& args);
  virtual LRESULT OnOtherButtonDown(const MessageArgs& args);
  virtual LRESULT OnMouseMove(const MessageArgs& args);
  virtual LRESULT OnMouseLeave(const MessageArgs& args);
  virtual LRESULT OnKeyDown(const MessageArgs& args);
  virtual LRESULT OnKeyUp(const MessageArgs& args);
  virtual LRESULT OnChar(const MessageArgs& args);
  virtual LRESULT OnTimer(const MessageArgs& args);
  virtual LRESULT OnSetFocus(const MessageArgs& args);
  virtual LRESULT OnKillFocus(const MessageArgs& args);
  virtual LRESULT OnGetDlgCode(const MessageArgs& args);
  virtual LRESULT OnCommandMessage(const MessageArgs& args);
  virtual LRESULT OnNotifyMessage(const MessageArgs& args);
  virtual LRESULT OnScroll(const MessageArgs& args);
  virtual LRESULT OnPaint(const MessageArgs& args);
  virtual LRESULT OnColorChange(const MessageArgs& args);
  virtual LRESULT OnDestroy(const MessageArgs& args);
  virtual LRESULT OnRowInserted(const MessageArgs& args);
  virtual LRESULT OnRowDeleted(const MessageArgs& args);
  virtual LRESULT OnAllRowsDeleted(const MessageArgs& args);

  [[nodiscard]] const MessageTable* Messages() const override { return &kMessages; }
  static const MessageTable kMessages;
  static const MessageEntry kEntries[];

  // Repaints a cell.
  void InvalidateCell(GridCell cell) const;

  // A size given for 96 pixels per inch, in pixels of this screen.
  [[nodiscard]] int Scaled(int size) const;

  // Moves the focus cell by a step among the columns.
  void MoveFocusColumn(int step);

  // The open editor's window, or null.
  [[nodiscard]] HWND Editor() const { return m_editor; }

  // Is the grid's top-level window the active one?
  [[nodiscard]] bool OwnsActiveWindow() const;

 private:
  [[nodiscard]] bool IsReportMode() const;
  [[nodiscard]] GridGeometry Geometry() const;
  [[nodiscard]] bool HasCell(int row, int col) const;
  void EnsureCellVisible(int row, int col);
  void SyncFocusRow();
  void SetHover(GridCell cell);
  void CheckCell(int row, int col);
  bool OpenEditor(HWND editor, int row, int col);
  [[nodiscard]] RECT EditorRect(const RECT& rect) const;
  void PlaceEditor() const;
  void FinishEdit();
  void DropEditor();
  void Search();
  void EndSearch();
  void ShowSearchTip(const RECT& cell);
  bool PressHeading(const NMHDR& header);
  void SortByHeading(int col);
  void ShowSortArrow() const;
  void PaintEmptyText() const;

  int32_t m_editRow = -1;
  int32_t m_editCol = -1;
  int32_t m_focusRow = -1;
  int32_t m_focusCol = -1;
  int32_t m_hoverRow = -1;
  int32_t m_hoverCol = -1;
  bool m_trackHover = false;
  uint16_t m_editLimit = 100;
  uint16_t m_textCapacity = 255;  // of the searched text
  std::wstring m_textBuffer;      // the whole text of the edit that ended last
  bool m_typeAhead = true;
  SearchText m_searchText;
  UINT m_searchTimeout = 2500;
  SearchMode m_searchMode = SearchMode::kColumnsAndRows;
  bool m_searchCaseSensitive = false;
  bool m_searchAnywhere = true;
  bool m_sortable = false;
  int32_t m_sortColumn = 0;
  SortOrder m_sortOrder = SortOrder::kNone;
  std::vector<int32_t> m_unsortableColumns;
  bool m_padCellRect = true;

  HWND m_editor = nullptr;
  HWND m_searchTip = nullptr;
  std::wstring m_emptyText;
  std::vector<std::wstring> m_sortTexts;  // of the sort column, while rows are being sorted
  ImageListHandle m_rowHeight;            // an empty picture of that height
  int m_rowPixels = 0;
};

}  // namespace postmarker
