// The mouse, the keys and the search of the grid.
#include <algorithm>

#include "controls/CGridCtrl_win.h"

namespace postmarker {
namespace {

constexpr UINT_PTR kSearchTimer = 0x4753;

// Behind the searched text in its tip, as a text cursor.
constexpr wchar_t kSearchMark = L'|';

// Between the cell and the tip, in pixels.
constexpr int kTipDistance = 5;

bool IsDown(int key) {
  return ::GetKeyState(key) < 0;
}

POINT PointOf(LPARAM lParam) {
  return {static_cast<short>(LOWORD(lParam)), static_cast<short>(HIWORD(lParam))};
}

TTTOOLINFOW TipInfo(HWND owner) {
  TTTOOLINFOW info = {};
  // The shorter form is known to all versions of the control.
  info.cbSize = TTTOOLINFOW_V2_SIZE;
  info.uFlags = TTF_IDISHWND | TTF_TRACK | TTF_ABSOLUTE;
  info.hwnd = owner;
  info.uId = reinterpret_cast<UINT_PTR>(owner);
  return info;
}

}  // namespace

bool CGridCtrl::OnCellPressed(int row, int col, const RECT& /*rect*/, WPARAM keys) {
  SetCellFocus(row, col, true);
  if ((keys & (MK_CONTROL | MK_SHIFT)) != 0) {
    return false;
  }
  const CellKind kind = GetCellKind(row, col);
  if (kind == CellKind::kNone || kind == CellKind::kPlain) {
    ActOnCell(row, col, nullptr);
    return false;
  }
  // The list view does not see this press, so what it would do is done here.
  ::SetFocus(Handle());
  if (ItemState(row, LVIS_SELECTED) == 0) {
    SetCellFocus(row, col, false, true);
  }
  ActOnCell(row, col, nullptr);
  return true;
}

bool CGridCtrl::OnCellReleased(int /*row*/, int /*col*/, WPARAM /*keys*/) {
  return false;
}

bool CGridCtrl::OnCellDoubleClicked(int /*row*/, int /*col*/, const RECT& /*rect*/) {
  return false;
}

LRESULT CGridCtrl::OnLButtonDown(const MessageArgs& args) {
  if (IsEditing()) {
    ::SetFocus(Handle());
    return 0;
  }
  EndSearch();
  int row = -1;
  int col = -1;
  RECT rect = {};
  if (HitTest(PointOf(args.lParam), &row, &col, &rect) &&
      OnCellPressed(row, col, rect, args.wParam)) {
    return 0;
  }
  const LRESULT result = Default(args);
  SyncFocusRow();
  return result;
}

LRESULT CGridCtrl::OnLButtonUp(const MessageArgs& args) {
  int row = -1;
  int col = -1;
  const bool handled =
      HitTest(PointOf(args.lParam), &row, &col, nullptr) && OnCellReleased(row, col, args.wParam);
  return handled ? 0 : Default(args);
}

LRESULT CGridCtrl::OnLButtonDblClk(const MessageArgs& args) {
  if (IsEditing()) {
    ::SetFocus(Handle());
    return 0;
  }
  int row = -1;
  int col = -1;
  RECT rect = {};
  const bool handled =
      HitTest(PointOf(args.lParam), &row, &col, &rect) && OnCellDoubleClicked(row, col, rect);
  return handled ? 0 : Default(args);
}

LRESULT CGridCtrl::OnOtherButtonDown(const MessageArgs& args) {
  if (IsEditing()) {
    ::SetFocus(Handle());
    return 0;
  }
  return Default(args);
}

void CGridCtrl::SetHover(GridCell cell) {
  const GridCell before = HoverCell();
  if (cell != before) {
    m_hoverRow = cell.row;
    m_hoverCol = cell.col;
    OnHoverChanged(before, cell);
  }
}

LRESULT CGridCtrl::OnMouseMove(const MessageArgs& args) {
  if (m_trackHover) {
    GridCell cell;
    HitTest(PointOf(args.lParam), &cell.row, &cell.col, nullptr);
    SetHover(cell);
    TRACKMOUSEEVENT track = {};
    track.cbSize = sizeof(track);
    track.dwFlags = TME_LEAVE;
    track.hwndTrack = Handle();
    ::_TrackMouseEvent(&track);
  }
  return Default(args);
}

LRESULT CGridCtrl::OnMouseLeave(const MessageArgs& args) {
  SetHover({});
  return Default(args);
}

LRESULT CGridCtrl::OnKeyDown(const MessageArgs& args) {
  switch (args.wParam) {
    case VK_LEFT:
    case VK_RIGHT:
      MoveFocusColumn(args.wParam == VK_LEFT ? -1 : 1);
      return 0;
    case VK_F2:
      ActOnCell(m_focusRow, m_focusCol, nullptr);
      return 0;
    case VK_SPACE:
      // The character acts on the cell; with the control key it selects, as in every list view.
      return IsDown(VK_CONTROL) ? Default(args) : 0;
    default:
      break;
  }
  const LRESULT result = Default(args);
  SyncFocusRow();
  return result;
}

LRESULT CGridCtrl::OnKeyUp(const MessageArgs& args) {
  return Default(args);
}

LRESULT CGridCtrl::OnChar(const MessageArgs& args) {
  if (IsDown(VK_CONTROL) && !IsDown(VK_MENU)) {
    return 0;
  }
  switch (m_searchText.Type(static_cast<wchar_t>(args.wParam), m_typeAhead, m_textCapacity)) {
    case SearchKey::kAction:
      ActOnCell(m_focusRow, m_focusCol, nullptr);
      break;
    case SearchKey::kChanged:
      Search();
      break;
    case SearchKey::kIgnored:
      break;
  }
  return 0;
}

void CGridCtrl::SetSearch(const SearchOptions& options, bool blanksSearch, UINT timeoutMs) {
  m_searchMode = options.mode;
  m_searchCaseSensitive = options.caseSensitive;
  m_searchAnywhere = options.anywhere;
  m_typeAhead = blanksSearch;
  m_searchTimeout = timeoutMs;
}

void CGridCtrl::Search() {
  const SearchOptions options = {m_searchMode, m_searchCaseSensitive, m_searchAnywhere};
  const GridCell found =
      FindCell({ItemCount(), ColumnCount()}, FocusCell(), m_searchText.Text(), options,
               [this](int32_t row, int32_t col) { return CellText(row, col); });
  if (!found.IsNone()) {
    SetCellFocus(found.row, found.col, true, true);
  }
  ::SetTimer(Handle(), kSearchTimer, m_searchTimeout, nullptr);
  ShowSearchTip(CellRectangle(m_focusRow, m_focusCol));
}

void CGridCtrl::ShowSearchTip(const RECT& cell) {
  if (m_searchTip == nullptr) {
    m_searchTip = ::CreateWindowExW(WS_EX_TOPMOST, TOOLTIPS_CLASSW, nullptr,
                                    WS_POPUP | TTS_ALWAYSTIP | TTS_NOPREFIX, 0, 0, 0, 0, Handle(),
                                    nullptr, nullptr, nullptr);
    TTTOOLINFOW info = TipInfo(Handle());
    ::SendMessageW(m_searchTip, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&info));
  }
  std::wstring text = m_searchText.Text() + kSearchMark;
  TTTOOLINFOW info = TipInfo(Handle());
  info.lpszText = text.data();
  ::SendMessageW(m_searchTip, TTM_UPDATETIPTEXTW, 0, reinterpret_cast<LPARAM>(&info));
  POINT corner = {cell.right + kTipDistance, cell.bottom + kTipDistance};
  ::ClientToScreen(Handle(), &corner);
  ::SendMessageW(m_searchTip, TTM_TRACKPOSITION, 0, MAKELPARAM(corner.x, corner.y));
  ::SendMessageW(m_searchTip, TTM_TRACKACTIVATE, m_searchText.IsActive() ? TRUE : FALSE,
                 reinterpret_cast<LPARAM>(&info));
}

void CGridCtrl::EndSearch() {
  m_searchText.Clear();
  ::KillTimer(Handle(), kSearchTimer);
  if (m_searchTip != nullptr) {
    TTTOOLINFOW info = TipInfo(Handle());
    ::SendMessageW(m_searchTip, TTM_TRACKACTIVATE, FALSE, reinterpret_cast<LPARAM>(&info));
  }
}

LRESULT CGridCtrl::OnTimer(const MessageArgs& args) {
  if (args.wParam != kSearchTimer) {
    return Default(args);
  }
  EndSearch();
  return 0;
}

LRESULT CGridCtrl::OnSetFocus(const MessageArgs& args) {
  const LRESULT result = Default(args);
  SyncFocusRow();
  if (m_focusRow == -1 && ItemCount() > 0) {
    SetCellFocus(0, StepColumn(ColumnOrder(), -1, 0), false);
  }
  InvalidateCell(FocusCell());
  return result;
}

LRESULT CGridCtrl::OnKillFocus(const MessageArgs& args) {
  EndSearch();
  const LRESULT result = Default(args);
  InvalidateCell(FocusCell());
  return result;
}

LRESULT CGridCtrl::OnGetDlgCode(const MessageArgs& args) {
  return Default(args) | DLGC_WANTARROWS | DLGC_WANTCHARS;
}

LRESULT CGridCtrl::OnScroll(const MessageArgs& args) {
  // The cell would move away from under its editor.
  EndEdit(true);
  return IsEditing() ? 0 : Default(args);
}

}  // namespace postmarker
