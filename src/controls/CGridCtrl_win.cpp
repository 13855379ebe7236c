#include "controls/CGridCtrl_win.h"

#include <algorithm>
#include <numeric>

#include "controls/CellEditor_win.h"

namespace postmarker {
namespace {

CellRect FromRect(const RECT& rect) {
  return {rect.left, rect.top, rect.right, rect.bottom};
}

RECT ToRect(const CellRect& rect) {
  return {rect.left, rect.top, rect.right, rect.bottom};
}

}  // namespace

const MessageEntry CGridCtrl::kEntries[] = {
    OnMessage(WM_LBUTTONDOWN, &CGridCtrl::OnLButtonDown),
    OnMessage(WM_LBUTTONUP, &CGridCtrl::OnLButtonUp),
    OnMessage(WM_LBUTTONDBLCLK, &CGridCtrl::OnLButtonDblClk),
    OnMessage(WM_RBUTTONDOWN, &CGridCtrl::OnOtherButtonDown),
    OnMessage(WM_MBUTTONDOWN, &CGridCtrl::OnOtherButtonDown),
    OnMessage(WM_MOUSEMOVE, &CGridCtrl::OnMouseMove),
    OnMessage(WM_MOUSELEAVE, &CGridCtrl::OnMouseLeave),
    OnMessage(WM_KEYDOWN, &CGridCtrl::OnKeyDown),
    OnMessage(WM_KEYUP, &CGridCtrl::OnKeyUp),
    OnMessage(WM_CHAR, &CGridCtrl::OnChar),
    OnMessage(WM_TIMER, &CGridCtrl::OnTimer),
    OnMessage(WM_SETFOCUS, &CGridCtrl::OnSetFocus),
    OnMessage(WM_KILLFOCUS, &CGridCtrl::OnKillFocus),
    OnMessage(WM_GETDLGCODE, &CGridCtrl::OnGetDlgCode),
    OnMessage(WM_COMMAND, &CGridCtrl::OnCommandMessage),
    OnMessage(WM_NOTIFY, &CGridCtrl::OnNotifyMessage),
    OnMessage(WM_VSCROLL, &CGridCtrl::OnScroll),
    OnMessage(WM_HSCROLL, &CGridCtrl::OnScroll),
    OnMessage(WM_MOUSEWHEEL, &CGridCtrl::OnScroll),
    OnMessage(WM_PAINT, &CGridCtrl::OnPaint),
    OnMessage(WM_SYSCOLORCHANGE, &CGridCtrl::OnColorChange),
    OnMessage(WM_DESTROY, &CGridCtrl::OnDestroy),
    OnMessage(LVM_INSERTITEMW, &CGridCtrl::OnRowInserted),
    OnMessage(LVM_DELETEITEM, &CGridCtrl::OnRowDeleted),
    OnMessage(LVM_DELETEALLITEMS, &CGridCtrl::OnAllRowsDeleted),
};
const MessageTable CGridCtrl::kMessages = {&CWnd::kMessages, CGridCtrl::kEntries};

CGridCtrl::CGridCtrl() {
  KillMeMessage();
  SuicideMessage();
}

CGridCtrl::~CGridCtrl() = default;

bool CGridCtrl::Attach(HWND list) {
  if (list != nullptr && list == Handle()) {
    return true;
  }
  if (list == nullptr || FromHandle(list) != nullptr || !Subclass(list)) {
    return false;
  }
  const LONG_PTR style = ::GetWindowLongPtrW(list, GWL_STYLE);
  ::SetWindowLongPtrW(list, GWL_STYLE, style | LVS_OWNERDRAWFIXED);
  Send(LVM_SETEXTENDEDLISTVIEWSTYLE, LVS_EX_DOUBLEBUFFER | LVS_EX_FULLROWSELECT,
       LVS_EX_DOUBLEBUFFER | LVS_EX_FULLROWSELECT);
  Send(LVM_SETBKCOLOR, 0, static_cast<LPARAM>(::GetSysColor(COLOR_WINDOW)));
  OnAttached();
  return true;
}

void CGridCtrl::SetRowHeight(int pixels) {
  m_rowPixels = pixels;
  // A list view makes its rows as high as its small pictures. One that measures its rows asks when
  // it believes to be moved.
  m_rowHeight.Reset(::ImageList_Create(1, std::max(1, pixels - 1), ILC_COLOR, 1, 1));
  Send(LVM_SETIMAGELIST, LVSIL_SMALL, reinterpret_cast<LPARAM>(m_rowHeight.Get()));
  RECT rect = {};
  ::GetWindowRect(Handle(), &rect);
  WINDOWPOS position = {Handle(),
                        nullptr,
                        rect.left,
                        rect.top,
                        rect.right - rect.left,
                        rect.bottom - rect.top,
                        SWP_NOACTIVATE | SWP_NOMOVE | SWP_NOOWNERZORDER | SWP_NOZORDER};
  Send(WM_WINDOWPOSCHANGED, 0, reinterpret_cast<LPARAM>(&position));
}

bool CGridCtrl::IsReportMode() const {
  return (::GetWindowLongPtrW(Handle(), GWL_STYLE) & LVS_TYPEMASK) == LVS_REPORT;
}

bool CGridCtrl::HasCell(int row, int col) const {
  return row >= 0 && col >= 0 && row < ItemCount() && col < ColumnCount();
}

GridGeometry CGridCtrl::Geometry() const {
  GridGeometry geometry;
  geometry.rowCount = ItemCount();
  geometry.firstRow = TopIndex();
  RECT row = {LVIR_BOUNDS, 0, 0, 0};
  if (geometry.rowCount == 0 ||
      Send(LVM_GETITEMRECT, geometry.firstRow, reinterpret_cast<LPARAM>(&row)) == 0) {
    return geometry;
  }
  geometry.top = row.top;
  geometry.rowHeight = std::max<int32_t>(1, row.bottom - row.top);
  RECT client = {};
  ::GetClientRect(Handle(), &client);
  geometry.bottom = client.bottom;
  int32_t left = row.left;
  for (const int col : ColumnOrder()) {
    const int32_t right = left + ColumnWidth(col);
    geometry.columns.push_back({col, left, right});
    left = right;
  }
  return geometry;
}

bool CGridCtrl::HitTest(POINT point, int* row, int* col, RECT* rect) const {
  CellRect found = rect != nullptr ? FromRect(*rect) : CellRect();
  const GridCell cell = HitTestCell(Geometry(), point.x, point.y, &found);
  *row = cell.row;
  *col = cell.col;
  if (rect != nullptr) {
    *rect = ToRect(found);
  }
  return !cell.IsNone();
}

RECT CGridCtrl::CellRectangle(int row, int col) const {
  if (!HasCell(row, col)) {
    return {};
  }
  const GridGeometry geometry = Geometry();
  for (const ColumnEdges& column : geometry.columns) {
    if (column.col == col) {
      const int32_t top = geometry.top + (row - geometry.firstRow) * geometry.rowHeight;
      return {column.left, top, column.right, top + geometry.rowHeight};
    }
  }
  return {};
}

void CGridCtrl::EnsureCellVisible(int row, int col) {
  EnsureVisible(row);
  const RECT cell = CellRectangle(row, col);
  RECT client = {};
  ::GetClientRect(Handle(), &client);
  if (cell.left < 0) {
    Scroll(cell.left, 0);
  } else if (cell.right > client.right) {
    Scroll(std::min(cell.left, cell.right - client.right), 0);
  }
}

void CGridCtrl::InvalidateCell(GridCell cell) const {
  const RECT rect = CellRectangle(cell.row, cell.col);
  if (!::IsRectEmpty(&rect)) {
    ::InvalidateRect(Handle(), &rect, FALSE);
  }
}

void CGridCtrl::SetCellFocus(int row, int col, bool ensureVisible, bool selectAlone) {
  const GridCell before = FocusCell();
  const bool exists = HasCell(row, col);
  const GridCell now = exists ? GridCell{row, col} : GridCell();
  m_focusRow = now.row;
  m_focusCol = now.col;
  if (exists) {
    SetItemState(row, LVIS_FOCUSED, LVIS_FOCUSED);
    if (selectAlone) {
      for (const int other : SelectedItems()) {
        if (other != row) {
          SetItemState(other, 0, LVIS_SELECTED);
        }
      }
      SetItemState(row, LVIS_SELECTED, LVIS_SELECTED);
    }
    if (ensureVisible) {
      EnsureCellVisible(row, col);
    }
  }
  if (now != before) {
    InvalidateCell(before);
    InvalidateCell(now);
    OnFocusCellChanged(before, now);
  }
}

void CGridCtrl::SyncFocusRow() {
  const int row = NextItem(-1, LVNI_FOCUSED);
  if (row != -1 && row != m_focusRow) {
    const std::vector<int> order = ColumnOrder();
    const int first = order.empty() ? -1 : order.front();
    SetCellFocus(row, m_focusCol == -1 ? first : m_focusCol, false);
  }
}

void CGridCtrl::MoveFocusColumn(int step) {
  SyncFocusRow();
  const int row = m_focusRow == -1 ? 0 : m_focusRow;
  SetCellFocus(row, StepColumn(ColumnOrder(), m_focusCol, step), true);
}

void CGridCtrl::GetColumnState(std::wstring* text) const {
  ColumnState state = {m_sortOrder, m_sortColumn, {}};
  const std::vector<int> order = ColumnOrder();
  state.columns.resize(order.size());
  for (size_t place = 0; place < order.size(); ++place) {
    state.columns[static_cast<size_t>(order[place])] = {static_cast<int32_t>(place),
                                                        ColumnWidth(order[place])};
  }
  *text = FormatColumnState(state);
}

bool CGridCtrl::SetColumnState(const std::wstring& text, int minimumWidth, bool resort) {
  const auto state = ParseColumnState(text, static_cast<size_t>(ColumnCount()));
  if (!state) {
    return false;
  }
  m_sortOrder = state->sortOrder;
  m_sortColumn = state->sortColumn;
  SetColumnOrder(DisplayOrder(*state));
  for (size_t col = 0; col < state->columns.size(); ++col) {
    const int width = state->columns[col].width;
    SetColumnWidth(static_cast<int>(col), minimumWidth > 0 ? std::max(width, minimumWidth) : width);
  }
  if (resort) {
    Sort();
  }
  ShowSortArrow();
  return true;
}

int CGridCtrl::CompareRows(int a, int b) const {
  if (m_sortOrder != SortOrder::kAscending) {
    std::swap(a, b);
  }
  const auto textOf = [this](int row) {
    return m_sortTexts.empty() ? ItemText(row, m_sortColumn)
                               : m_sortTexts[static_cast<size_t>(row)];
  };
  return textOf(a).compare(textOf(b));
}

namespace {

int CALLBACK CompareRanks(LPARAM a, LPARAM b, LPARAM /*sort*/) {
  return a < b ? -1 : a > b ? 1 : 0;
}

}  // namespace

void CGridCtrl::Sort() {
  const int count = ItemCount();
  if (count < 2) {
    return;
  }
  m_sortTexts.reserve(static_cast<size_t>(count));
  for (int row = 0; row < count; ++row) {
    m_sortTexts.push_back(ItemText(row, m_sortColumn));
  }
  std::vector<int> rows(static_cast<size_t>(count));
  std::iota(rows.begin(), rows.end(), 0);
  std::stable_sort(rows.begin(), rows.end(),
                   [this](int a, int b) { return CompareRows(a, b) < 0; });
  m_sortTexts.clear();
  // The list view compares the numbers of its items. They are ranks for the time of the sort.
  std::vector<LPARAM> data;
  data.reserve(static_cast<size_t>(count));
  for (int row = 0; row < count; ++row) {
    data.push_back(ItemData(row));
  }
  for (int rank = 0; rank < count; ++rank) {
    SetItemData(rows[static_cast<size_t>(rank)], rank);
  }
  const int focused = m_focusRow;
  Send(LVM_SORTITEMS, 0, reinterpret_cast<LPARAM>(&CompareRanks));
  for (int rank = 0; rank < count; ++rank) {
    const int before = rows[static_cast<size_t>(rank)];
    SetItemData(rank, data[static_cast<size_t>(before)]);
    if (before == focused) {
      m_focusRow = rank;
    }
  }
  ::InvalidateRect(Handle(), nullptr, FALSE);
}

void CGridCtrl::SortByHeading(int col) {
  if (!m_sortable) {
    return;
  }
  if (std::find(m_unsortableColumns.begin(), m_unsortableColumns.end(), col) !=
      m_unsortableColumns.end()) {
    ::MessageBeep(MB_OK);
    return;
  }
  m_sortColumn = col;
  m_sortOrder = NextSortOrder(m_sortOrder);
  Sort();
  ShowSortArrow();
}

void CGridCtrl::ShowSortArrow() const {
  for (int col = 0; col < ColumnCount(); ++col) {
    HDITEMW item = {};
    item.mask = HDI_FORMAT;
    ::SendMessageW(Header(), HDM_GETITEMW, col, reinterpret_cast<LPARAM>(&item));
    item.fmt &= ~(HDF_SORTUP | HDF_SORTDOWN);
    if (col == m_sortColumn && m_sortOrder != SortOrder::kNone) {
      item.fmt |= m_sortOrder == SortOrder::kAscending ? HDF_SORTUP : HDF_SORTDOWN;
    }
    ::SendMessageW(Header(), HDM_SETITEMW, col, reinterpret_cast<LPARAM>(&item));
  }
  ::InvalidateRect(Header(), nullptr, TRUE);
}

bool CGridCtrl::PressHeading(const NMHDR& header) {
  if (header.hwndFrom != Header()) {
    return false;
  }
  const UINT code = header.code;
  if (code == HDN_BEGINTRACKW || code == HDN_BEGINTRACKA || code == HDN_BEGINDRAG) {
    // The cell would move away from under its editor.
    EndEdit(true);
    return IsEditing();
  }
  if (code == HDN_ITEMCLICKW || code == HDN_ITEMCLICKA) {
    EndEdit(true);
    if (!IsEditing()) {
      SortByHeading(reinterpret_cast<const NMHEADERW&>(header).iItem);
    }
  }
  return false;
}

LRESULT CGridCtrl::OnNotifyMessage(const MessageArgs& args) {
  // True from the handler of a heading's drag keeps it where it is.
  return PressHeading(*reinterpret_cast<const NMHDR*>(args.lParam)) ? TRUE : Default(args);
}

LRESULT CGridCtrl::OnRowInserted(const MessageArgs& args) {
  const LRESULT row = Default(args);
  if (row >= 0) {
    m_focusRow += m_focusRow >= row ? 1 : 0;
    m_editRow += m_editRow >= row ? 1 : 0;
    SetHover({});
    PlaceEditor();
  }
  return row;
}

LRESULT CGridCtrl::OnRowDeleted(const MessageArgs& args) {
  const LRESULT done = Default(args);
  const auto row = static_cast<int32_t>(args.wParam);
  if (done == 0) {
    return done;
  }
  if (m_editRow == row) {
    DropEditor();
  }
  for (int32_t* const kept : {&m_focusRow, &m_editRow}) {
    if (*kept > row) {
      --*kept;
    }
  }
  // What was below comes up under the focus.
  if (m_focusRow >= ItemCount()) {
    m_focusRow = ItemCount() - 1;
  }
  if (m_focusRow == -1) {
    m_focusCol = -1;
  }
  SetHover({});
  PlaceEditor();
  return done;
}

LRESULT CGridCtrl::OnAllRowsDeleted(const MessageArgs& args) {
  DropEditor();
  const LRESULT done = Default(args);
  SetCellFocus(-1, -1, false);
  SetHover({});
  return done;
}

LRESULT CGridCtrl::OnDestroy(const MessageArgs& args) {
  EndSearch();
  if (m_searchTip != nullptr) {
    ::DestroyWindow(m_searchTip);
    m_searchTip = nullptr;
  }
  // The editor's window goes with the list view's.
  m_editor = nullptr;
  m_editRow = m_editCol = -1;
  return Default(args);
}

CellKind CGridCtrl::GetCellKind(int /*row*/, int /*col*/) const {
  return CellKind::kNone;
}

std::wstring CGridCtrl::CellText(int row, int col) const {
  return ItemText(row, col);
}

void CGridCtrl::OnCellClicked(int /*row*/, int /*col*/) {}

void CGridCtrl::OnCellChecked(int /*row*/, int /*col*/) {}

void CGridCtrl::OnFocusCellChanged(GridCell /*before*/, GridCell /*now*/) {}

void CGridCtrl::OnHoverChanged(GridCell before, GridCell now) {
  InvalidateCell(before);
  InvalidateCell(now);
}

bool CGridCtrl::IsCellChecked(int /*row*/, int /*col*/) const {
  return false;
}

}  // namespace postmarker
