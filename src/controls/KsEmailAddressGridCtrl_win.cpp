#include "controls/KsEmailAddressGridCtrl_win.h"

#include <algorithm>
#include <utility>

#include "settings/AddressMatcher.h"
#include "settings/VbScriptRegExp_win.h"
#include "support/Text.h"
#include "ui/Clipboard.h"

namespace postmarker {
namespace {

constexpr int kAddressColumn = 0;
constexpr int kDomainColumn = 1;
constexpr UINT kTipMs = 8000;

// Addresses arrive by the thousand, and a visible list view takes far longer to paint one more row
// than to take it. The timer's message comes when no other waits.
constexpr UINT_PTR kPaintTimer = 0x4750;
constexpr UINT kPaintDelayMs = 10;
constexpr ULONGLONG kMaxHoldMs = 100;

bool IsDown(int key) {
  return ::GetKeyState(key) < 0;
}

}  // namespace

KsEmailAddressGridCtrl::KsEmailAddressGridCtrl()
    : m_validator(std::make_unique<AddressValidator>(MakePromptEngine(CreateVbScriptRegExp()))) {}

KsEmailAddressGridCtrl::~KsEmailAddressGridCtrl() = default;

void KsEmailAddressGridCtrl::OnAttached() {
  m_tip.Create(Handle(), 0, kTipMs, true);
}

bool KsEmailAddressGridCtrl::Initialise(int columnWidth, int rowHeight,
                                        AddressGridPrompts prompts) {
  m_prompts = std::move(prompts);
  SetMode(AddressMode::kAddress);
  if (InsertColumn(kAddressColumn, m_prompts.address, columnWidth) == -1 ||
      InsertColumn(kDomainColumn, m_prompts.domain, columnWidth) == -1) {
    return false;
  }
  SetRowHeight(rowHeight);
  SetEmptyText(m_prompts.empty);
  SetAccessibleName(m_prompts.name);
  return true;
}

void KsEmailAddressGridCtrl::SetMode(AddressMode mode) {
  m_validator->SetMode(mode);
}

CellKind KsEmailAddressGridCtrl::GetCellKind(int /*row*/, int col) const {
  // The domain is part of the address and changes with it. A click on it selects the row.
  return col == kAddressColumn ? CellKind::kEdit : CellKind::kNone;
}

std::wstring KsEmailAddressGridCtrl::EditorName(int /*row*/, int /*col*/) const {
  return m_prompts.address;
}

std::wstring KsEmailAddressGridCtrl::Address(int row) const {
  return ItemText(row, kAddressColumn);
}

// The rows that are sorted: all but a new one, which stands at the end.
int KsEmailAddressGridCtrl::OrderedCount() const {
  return ItemCount() - (m_hasNewRow ? 1 : 0);
}

RowPlace KsEmailAddressGridCtrl::Find(const std::wstring& address) const {
  return FindRowPlace(
      OrderedCount(), [this](int32_t row) { return Address(row); }, address);
}

int KsEmailAddressGridCtrl::InsertAddress(int row, const std::wstring& address) {
  const int inserted = InsertItem(row, address);
  if (inserted != -1) {
    SetItemText(inserted, kDomainColumn, DomainOf(address));
  }
  return inserted;
}

int KsEmailAddressGridCtrl::AddAddress(const std::wstring& text) {
  if (text.empty()) {
    return -1;
  }
  const std::wstring address = ToLower(text);
  const RowPlace place = Find(address);
  if (place.exists) {
    return place.row;
  }
  HoldPainting();
  return InsertAddress(place.row, address);
}

void KsEmailAddressGridCtrl::HoldPainting() {
  const ULONGLONG now = ::GetTickCount64();
  if (m_heldSince != 0 && now - m_heldSince > kMaxHoldMs) {
    ReleasePainting();
  }
  if (m_heldSince == 0) {
    SetRedraw(false);
    ::SetTimer(Handle(), kPaintTimer, kPaintDelayMs, nullptr);
    m_heldSince = std::max<ULONGLONG>(1, now);
  }
}

void KsEmailAddressGridCtrl::ReleasePainting() {
  if (std::exchange(m_heldSince, 0) != 0) {
    ::KillTimer(Handle(), kPaintTimer);
    SetRedraw(true);
    ::InvalidateRect(Handle(), nullptr, TRUE);
  }
}

LRESULT KsEmailAddressGridCtrl::OnTimer(const MessageArgs& args) {
  return args.wParam == kPaintTimer ? 0 : CGridCtrl::OnTimer(args);
}

LRESULT KsEmailAddressGridCtrl::WindowProc(const MessageArgs& args) {
  // Whatever else happens needs the scroll bars as they are: only rows come and go without them.
  const bool isListMessage = args.message >= LVM_FIRST && args.message < LVM_FIRST + 0x100;
  if (!isListMessage || args.message == LVM_ENSUREVISIBLE || args.message == LVM_SCROLL) {
    ReleasePainting();
  }
  return CGridCtrl::WindowProc(args);
}

int KsEmailAddressGridCtrl::FindAddress(const std::wstring& text) const {
  const RowPlace place = Find(text);
  return place.exists ? place.row : -1;
}

void KsEmailAddressGridCtrl::ReadAddresses(AddressSet* out) const {
  const int count = OrderedCount();
  for (int row = 0; row < count; ++row) {
    out->insert(out->end(), Address(row));
  }
}

bool KsEmailAddressGridCtrl::BeginNewRow() {
  EndEdit(true);
  if (IsEditing()) {
    return false;
  }
  const int row = InsertItem(ItemCount(), std::wstring());
  if (row == -1) {
    return false;
  }
  m_hasNewRow = true;
  ::SetFocus(Handle());
  SetCellFocus(row, kAddressColumn, true, true);
  ActOnCell(row, kAddressColumn, nullptr);
  if (!IsEditing()) {
    RemoveRow(row);
    return false;
  }
  ShowTip(m_prompts.newRow, row);
  return true;
}

void KsEmailAddressGridCtrl::ClearEditState() {
  EndEdit(false);
}

void KsEmailAddressGridCtrl::RemoveRow(int row) {
  // The parent hears of a selection's end, but not of a selected row that goes.
  SetItemState(row, 0, LVIS_SELECTED);
  m_hasNewRow = m_hasNewRow && row + 1 < ItemCount();
  DeleteItem(row);
}

void KsEmailAddressGridCtrl::RemoveSelected() {
  ClearEditState();
  const std::vector<int> rows = SelectedItems();
  if (rows.empty()) {
    return;
  }
  SetRedraw(false);
  SetItemState(-1, 0, LVIS_SELECTED);
  if (rows.size() == static_cast<size_t>(ItemCount())) {
    DeleteAllItems();
  } else {
    std::for_each(rows.rbegin(), rows.rend(), [this](int row) { DeleteItem(row); });
  }
  SetRedraw(true);
  ::InvalidateRect(Handle(), nullptr, TRUE);
  SetCellFocus(std::min(rows.front(), ItemCount() - 1), kAddressColumn, true, true);
}

bool KsEmailAddressGridCtrl::OnCellEditDone(int row, int /*col*/, const std::wstring& text,
                                            const ComboItem& /*item*/, bool cancelled) {
  const EditOutcome outcome = DecideEdit(
      {Address(row), text, cancelled},
      [this](const std::wstring& address) { return m_validator->IsValid(address.c_str()); },
      [this](const std::wstring& address) { return Find(address).exists; });
  if (outcome == EditOutcome::kInvalid || outcome == EditOutcome::kDuplicate) {
    ShowTip(outcome == EditOutcome::kInvalid ? m_prompts.invalid : m_prompts.duplicate, row);
    return false;
  }
  m_tip.Hide();
  if (outcome == EditOutcome::kRemove) {
    RemoveRow(row);
    SetCellFocus(std::min(row, ItemCount() - 1), kAddressColumn, true, true);
  } else if (outcome == EditOutcome::kStore) {
    StoreAddress(row, AddressForm(text));
  }
  return true;
}

// Moves the row to where its new text belongs.
void KsEmailAddressGridCtrl::StoreAddress(int row, const std::wstring& address) {
  SetRedraw(false);
  RemoveRow(row);
  const int moved = AddAddress(address);
  SetRedraw(true);
  ::InvalidateRect(Handle(), nullptr, TRUE);
  SetCellFocus(moved, kAddressColumn, true, true);
}

void KsEmailAddressGridCtrl::ShowTip(const std::wstring& text, int row) {
  // A text that is refused because its window was left must not be spoken of over another one.
  if (!OwnsActiveWindow()) {
    return;
  }
  RECT cell = CellRectangle(row, kAddressColumn);
  ::MapWindowPoints(Handle(), nullptr, reinterpret_cast<POINT*>(&cell), 2);
  m_tip.ShowAt(text, cell);
}

LRESULT KsEmailAddressGridCtrl::OnKeyDown(const MessageArgs& args) {
  if (IsDown(VK_CONTROL) && !IsDown(VK_MENU)) {
    switch (args.wParam) {
      case L'A':
        SelectAll();
        return 0;
      case L'C':
      case VK_INSERT:
        CopySelected();
        return 0;
      case L'V':
        Paste();
        return 0;
      default:
        break;
    }
  }
  return CGridCtrl::OnKeyDown(args);
}

LRESULT KsEmailAddressGridCtrl::OnKeyUp(const MessageArgs& args) {
  const bool isPlain = !IsDown(VK_CONTROL) && !IsDown(VK_SHIFT) && !IsDown(VK_MENU);
  if (isPlain && (args.wParam == VK_INSERT || args.wParam == VK_DELETE)) {
    return ::SendMessageW(::GetParent(Handle()), WM_KEYUP, args.wParam, args.lParam);
  }
  return CGridCtrl::OnKeyUp(args);
}

LRESULT KsEmailAddressGridCtrl::OnAllRowsDeleted(const MessageArgs& args) {
  m_hasNewRow = false;
  return CGridCtrl::OnAllRowsDeleted(args);
}

void KsEmailAddressGridCtrl::SelectAll() const {
  SetItemState(-1, LVIS_SELECTED, LVIS_SELECTED);
}

void KsEmailAddressGridCtrl::CopySelected() const {
  std::wstring text;
  for (const int row : SelectedItems()) {
    text.append(Address(row)).append(L"\r\n");
  }
  if (!text.empty()) {
    SetClipboardText(Handle(), text);
  }
}

void KsEmailAddressGridCtrl::Paste() {
  int leftOut = 0;
  std::vector<std::wstring> added;
  for (const std::wstring& address : SplitAddresses(ClipboardText(Handle()))) {
    if (!m_validator->IsValid(address.c_str())) {
      ++leftOut;
    } else if (AddAddress(address) != -1) {
      added.push_back(address);
    }
  }
  if (!added.empty()) {
    SetItemState(-1, 0, LVIS_SELECTED);
    for (const std::wstring& address : added) {
      SetItemState(FindAddress(address), LVIS_SELECTED, LVIS_SELECTED);
    }
    SetCellFocus(FindAddress(added.back()), kAddressColumn, true);
  }
  if (leftOut > 0) {
    ShowTip(WithNumber(m_prompts.leftOut, leftOut), std::max(0, FocusCell().row));
  }
}

}  // namespace postmarker
