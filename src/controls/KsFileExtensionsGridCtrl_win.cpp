#include "controls/KsFileExtensionsGridCtrl_win.h"

#include <algorithm>
#include <utility>

#include "controls/FileExtension.h"

namespace postmarker {
namespace {

constexpr int kCheckColumn = 0;
constexpr int kExtensionColumn = 1;
constexpr int kActionColumn = 2;
constexpr UINT kTipMs = 8000;

// Widths at 96 pixels per inch.
constexpr int kCheckWidth = 60;
constexpr int kTextWidth = 130;

}  // namespace

void KsFileExtensionsGridCtrl::OnAttached() {
  m_tip.Create(Handle(), 0, kTipMs, true);
  SetSortable(true);
  SetUnsortableColumns({kCheckColumn});
}

bool KsFileExtensionsGridCtrl::Initialise(FileExtensionsPrompts prompts,
                                          std::vector<std::wstring> actions) {
  m_prompts = std::move(prompts);
  m_actions = std::move(actions);
  SetAccessibleName(m_prompts.name);
  SetRowHeight(Scaled(22));
  return InsertColumn(kCheckColumn, m_prompts.extension, Scaled(kCheckWidth)) != -1 &&
         InsertColumn(kExtensionColumn, m_prompts.spelling, Scaled(kTextWidth)) != -1 &&
         InsertColumn(kActionColumn, m_prompts.action, Scaled(kTextWidth)) != -1;
}

int KsFileExtensionsGridCtrl::FindExtension(const std::wstring& extension) const {
  const int count = ItemCount();
  for (int row = 0; row < count; ++row) {
    if (ItemText(row, kExtensionColumn) == extension) {
      return row;
    }
  }
  return -1;
}

int KsFileExtensionsGridCtrl::AddExtension(const FileExtensionRow& row) {
  const auto form = FileExtensionForm(row.extension);
  if (!form || FindExtension(*form) != -1) {
    return -1;
  }
  const int inserted = InsertItem(ItemCount(), std::wstring(), row.checked ? 1 : 0);
  if (inserted != -1) {
    SetItemText(inserted, kExtensionColumn, *form);
    SetItemText(inserted, kActionColumn, row.action);
  }
  return inserted;
}

std::vector<FileExtensionRow> KsFileExtensionsGridCtrl::ReadExtensions() const {
  const int count = ItemCount();
  std::vector<FileExtensionRow> rows;
  rows.reserve(static_cast<size_t>(count));
  for (int row = 0; row < count; ++row) {
    rows.push_back({ItemText(row, kExtensionColumn), ItemText(row, kActionColumn),
                    IsCellChecked(row, kCheckColumn)});
  }
  return rows;
}

CellKind KsFileExtensionsGridCtrl::GetCellKind(int /*row*/, int col) const {
  return col == kCheckColumn       ? CellKind::kCheck
         : col == kExtensionColumn ? CellKind::kEdit
                                   : CellKind::kEditableCombo;
}

bool KsFileExtensionsGridCtrl::IsCellChecked(int row, int /*col*/) const {
  return ItemData(row) != 0;
}

void KsFileExtensionsGridCtrl::OnCellChecked(int row, int /*col*/) {
  SetItemData(row, ItemData(row) != 0 ? 0 : 1);
}

std::vector<std::wstring> KsFileExtensionsGridCtrl::ComboChoices(int /*row*/, int /*col*/) const {
  return m_actions;
}

bool KsFileExtensionsGridCtrl::OnCellEditDone(int row, int col, const std::wstring& text,
                                              const ComboItem& item, bool cancelled) {
  m_tip.Hide();
  if (cancelled || col != kExtensionColumn) {
    // A new action is offered for the other rows from here on.
    const bool isNew = !cancelled && item.index >= static_cast<int>(m_actions.size());
    if (isNew) {
      m_actions.push_back(text);
    }
    return CGridCtrl::OnCellEditDone(row, col, text, item, cancelled);
  }
  const auto form = FileExtensionForm(text);
  if (!form) {
    ShowTip(m_prompts.invalid, row, col);
    return false;
  }
  if (const int other = FindExtension(*form); other != -1 && other != row) {
    ShowTip(m_prompts.duplicate, row, col);
    return false;
  }
  SetItemText(row, col, *form);
  return true;
}

void KsFileExtensionsGridCtrl::ShowTip(const std::wstring& text, int row, int col) {
  if (!OwnsActiveWindow()) {
    return;
  }
  RECT cell = CellRectangle(row, col);
  ::MapWindowPoints(Handle(), nullptr, reinterpret_cast<POINT*>(&cell), 2);
  m_tip.ShowAt(text, cell);
}

}  // namespace postmarker
