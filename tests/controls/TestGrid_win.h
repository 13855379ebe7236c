// A grid with a column of each kind, and a window of it with six rows.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "controls/CGridCtrl_win.h"
#include "controls/GridFixture_win.h"

namespace postmarker::test {

// The columns of the tested grid.
enum Column { kText, kTick, kChoice, kFreeChoice, kButton, kNothing, kColumns };

// A grid with a column of each kind. In the column of ticks every second row is of the other kind.
class TestGrid : public CGridCtrl {
 public:
  bool refuse = false;
  std::vector<std::wstring> choices = {L"red", L"green", L"blue"};
  bool handleDoubleClick = false;
  std::vector<GridCell> clicked;
  GridCell editCellInClick;
  std::vector<GridCell> checked;
  std::vector<std::pair<GridCell, GridCell>> hovers;
  struct Edit {
    GridCell cell;
    std::wstring text;
    int item;
    LPARAM data;
    bool cancelled;
  };
  std::vector<Edit> edits;

  using CGridCtrl::Editor;
  using CGridCtrl::StartEdit;

 protected:
  CellKind GetCellKind(int row, int col) const override {
    switch (col) {
      case kText:
        return CellKind::kEdit;
      case kTick:
        return row % 2 == 0 ? CellKind::kCheck : CellKind::kRadio;
      case kChoice:
        return CellKind::kCombo;
      case kFreeChoice:
        return CellKind::kEditableCombo;
      case kButton:
        return CellKind::kPlain;
      default:
        return CellKind::kNone;
    }
  }
  std::vector<std::wstring> ComboChoices(int /*row*/, int /*col*/) const override {
    return choices;
  }
  void OnCellClicked(int row, int col) override {
    clicked.push_back({row, col});
    editCellInClick = EditCell();
  }
  void OnCellChecked(int row, int col) override { checked.push_back({row, col}); }
  void OnHoverChanged(GridCell before, GridCell now) override {
    hovers.emplace_back(before, now);
    CGridCtrl::OnHoverChanged(before, now);
  }
  bool OnCellDoubleClicked(int /*row*/, int /*col*/, const RECT& /*rect*/) override {
    return handleDoubleClick;
  }
  bool OnCellEditDone(int row, int col, const std::wstring& text, const ComboItem& item,
                      bool cancelled) override {
    edits.push_back({{row, col}, text, item.index, item.data, cancelled});
    return !refuse && CGridCtrl::OnCellEditDone(row, col, text, item, cancelled);
  }
  int ImageWidth(int /*row*/, int /*col*/) const override { return 20; }
};

class CGridCtrlTest : public GridFixture {
 protected:
  CGridCtrlTest() {
    Show(&m_grid);
    for (int col = 0; col < kColumns; ++col) {
      m_grid.InsertColumn(col, L"Column " + std::to_wstring(col), 60);
    }
    const wchar_t* const names[] = {L"anna", L"bert", L"Carl", L"dora", L"Emil", L"bernd"};
    for (int row = 0; row < 6; ++row) {
      m_grid.InsertItem(row, names[row], 100 + row);
      m_grid.SetItemText(row, kChoice, L"green");
    }
    ::SetFocus(m_grid.Handle());
    Pump();
  }

  [[nodiscard]] std::vector<std::wstring> Texts(int col) const {
    std::vector<std::wstring> texts;
    texts.reserve(static_cast<size_t>(m_grid.ItemCount()));
    for (int row = 0; row < m_grid.ItemCount(); ++row) {
      texts.push_back(m_grid.ItemText(row, col));
    }
    return texts;
  }
  [[nodiscard]] std::wstring State() const {
    std::wstring state;
    m_grid.GetColumnState(&state);
    return state;
  }
  void Select(const std::vector<int>& rows) const {
    m_grid.SetItemState(-1, 0, LVIS_SELECTED);
    for (const int row : rows) {
      m_grid.SetItemState(row, LVIS_SELECTED, LVIS_SELECTED);
    }
  }
  void ClickHeading(int col) const {
    NMHEADERW header = {};
    header.hdr = {m_grid.Header(), 0, HDN_ITEMCLICKW};
    header.iItem = col;
    m_grid.Send(WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&header));
  }

  TestGrid m_grid;
};

}  // namespace postmarker::test
