// What is done with a cell, and in-place editing.
#include <utility>

#include "controls/CGridCtrl_win.h"
#include "controls/CellEditor_win.h"

namespace postmarker {
namespace {

// While an edit is being ended. Ending it moves the focus, which says the same again.
bool g_finishing = false;

class FinishingGuard {
 public:
  FinishingGuard() { g_finishing = true; }
  FinishingGuard(const FinishingGuard&) = delete;
  FinishingGuard& operator=(const FinishingGuard&) = delete;
  ~FinishingGuard() { g_finishing = false; }
};

bool EndsEdit(UINT notification) {
  return notification == EN_KILLFOCUS || notification == CBN_KILLFOCUS ||
         notification == KillMeMessage();
}

}  // namespace

void CGridCtrl::ActOnCell(int row, int col, const RECT* rect) {
  if (!HasCell(row, col) || !::IsWindowEnabled(Handle()) || !IsReportMode()) {
    return;
  }
  EnsureCellVisible(row, col);
  RECT place = rect != nullptr ? *rect : CellRectangle(row, col);
  place.bottom += m_padCellRect ? 1 : 0;
  const CellKind kind = GetCellKind(row, col);
  const bool opensEditor =
      kind == CellKind::kEdit || kind == CellKind::kCombo || kind == CellKind::kEditableCombo;
  if (opensEditor && col == 0) {
    place.left += ImageWidth(row, col);
  }
  switch (kind) {
    case CellKind::kPlain:
      m_editRow = row;
      m_editCol = col;
      OnCellClicked(row, col);
      if (!IsEditing()) {
        m_editRow = m_editCol = -1;
      }
      break;
    case CellKind::kEdit:
      StartEdit(row, col, place);
      break;
    case CellKind::kCombo:
    case CellKind::kEditableCombo:
      StartCombo(row, col, place, kind == CellKind::kEditableCombo);
      break;
    case CellKind::kCheck:
    case CellKind::kRadio:
      CheckCell(row, col);
      break;
    case CellKind::kNone:
      break;
  }
}

void CGridCtrl::CheckCell(int row, int col) {
  const std::vector<int32_t> rows = RowsToCheck(
      {row, col}, SelectedItems(), [this](int32_t r, int32_t c) { return GetCellKind(r, c); });
  for (const int32_t reached : rows) {
    OnCellChecked(reached, col);
  }
  ::InvalidateRect(Handle(), nullptr, FALSE);
}

RECT CGridCtrl::EditorRect(const RECT& rect) const {
  RECT client = {};
  ::GetClientRect(Handle(), &client);
  RECT visible = rect;
  ::IntersectRect(&visible, &rect, &client);
  return visible;
}

std::wstring CGridCtrl::EditorName(int /*row*/, int col) const {
  wchar_t heading[256] = {};
  LVCOLUMNW column = {};
  column.mask = LVCF_TEXT;
  column.pszText = heading;
  column.cchTextMax = static_cast<int>(std::size(heading));
  Send(LVM_GETCOLUMNW, col, reinterpret_cast<LPARAM>(&column));
  return heading;
}

std::vector<std::wstring> CGridCtrl::ComboChoices(int /*row*/, int /*col*/) const {
  return {};
}

bool CGridCtrl::OpenEditor(HWND editor, int row, int col) {
  if (editor == nullptr) {
    return false;
  }
  m_editor = editor;
  m_editRow = row;
  m_editCol = col;
  return true;
}

bool CGridCtrl::StartEdit(int row, int col, const RECT& rect) {
  const CellEditorPlace place = {Handle(), EditorRect(rect), EditorName(row, col),
                                 CellText(row, col)};
  return OpenEditor(CreateCellEdit(place, m_editLimit), row, col);
}

bool CGridCtrl::StartCombo(int row, int col, const RECT& rect, bool editable) {
  const CellEditorPlace place = {Handle(), EditorRect(rect), EditorName(row, col),
                                 CellText(row, col)};
  return OpenEditor(CreateCellCombo(place, ComboChoices(row, col), editable, m_editLimit), row,
                    col);
}

LRESULT CGridCtrl::OnCommandMessage(const MessageArgs& args) {
  if (LOWORD(args.wParam) != kEditorId || !EndsEdit(HIWORD(args.wParam))) {
    return Default(args);
  }
  // A posted end may come when the loss of focus has done the work already.
  if (m_editor != nullptr && reinterpret_cast<HWND>(args.lParam) == m_editor) {
    FinishEdit();
  }
  return 0;
}

void CGridCtrl::EndEdit(bool accept) {
  if (IsEditing()) {
    MarkCellEditor(m_editor, accept);
    FinishEdit();
  }
}

bool CGridCtrl::OwnsActiveWindow() const {
  return ::GetActiveWindow() == ::GetAncestor(Handle(), GA_ROOT);
}

void CGridCtrl::FinishEdit() {
  if (g_finishing) {
    return;
  }
  const FinishingGuard guard;
  const HWND editor = m_editor;
  m_textBuffer = CellEditorText(editor);
  ComboItem item;
  item.index = CellEditorItem(editor);
  if (item.index >= 0) {
    item.data = ::SendMessageW(editor, CB_GETITEMDATA, static_cast<WPARAM>(item.index), 0);
  }
  const bool done =
      OnCellEditDone(m_editRow, m_editCol, m_textBuffer, item, IsCellEditorCancelled(editor));
  if (done) {
    m_editor = nullptr;
    m_editRow = m_editCol = -1;
  } else {
    ReopenCellEditor(editor);
  }
  // A window that is losing its place at the front must not take it back by the focus.
  if (OwnsActiveWindow()) {
    ::SetFocus(done ? Handle() : editor);
  }
  if (done) {
    DestroyCellEditor(editor);
    ::InvalidateRect(Handle(), nullptr, FALSE);
  }
}

// Keeps the editor over its cell.
void CGridCtrl::PlaceEditor() const {
  if (IsEditing()) {
    RECT editor = {};
    ::GetWindowRect(m_editor, &editor);
    ::MapWindowPoints(nullptr, Handle(), reinterpret_cast<POINT*>(&editor), 2);
    ::SetWindowPos(m_editor, nullptr, editor.left, CellRectangle(m_editRow, m_editCol).top, 0, 0,
                   SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
  }
}

void CGridCtrl::DropEditor() {
  if (const HWND editor = std::exchange(m_editor, nullptr)) {
    m_editRow = m_editCol = -1;
    DestroyCellEditor(editor);
  }
}

bool CGridCtrl::OnCellEditDone(int row, int col, const std::wstring& text,
                               const ComboItem& /*item*/, bool cancelled) {
  if (!cancelled) {
    SetItemText(row, col, text);
  }
  return true;
}

}  // namespace postmarker
