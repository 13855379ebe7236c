#include "controls/KsImageGridCtrl_win.h"

#include <algorithm>
#include <mutex>

#include "controls/WindowAccessible_win.h"
#include "support/DeviceContext_win.h"

namespace postmarker {
namespace {

constexpr int kDefaultImageSize = 32;  // at 96 pixels per inch
constexpr int kMinColumnWidth = 10;
constexpr int kSkinMark = 7028;

constexpr COLORREF kBorderColor = 13224908;
constexpr COLORREF kPlainColor = 0xFFFFFF;
constexpr COLORREF kSelectedColor = 15461616;
constexpr COLORREF kHoverColor = 0xF5F5F7;

// The font of a window, or the system's for windows without one.
LOGFONTW FontOf(HWND window) {
  auto font = reinterpret_cast<HFONT>(::SendMessageW(window, WM_GETFONT, 0, 0));
  if (font == nullptr) {
    font = static_cast<HFONT>(::GetStockObject(DEFAULT_GUI_FONT));
  }
  LOGFONTW description = {};
  ::GetObjectW(font, sizeof(description), &description);
  return description;
}

FontHandle WithWeight(LOGFONTW description, LONG weight) {
  description.lfWeight = weight;
  return FontHandle(::CreateFontIndirectW(&description));
}

int IconSize(HICON icon) {
  ICONINFO info = {};
  if (icon == nullptr || !::GetIconInfo(icon, &info)) {
    return 0;
  }
  const BitmapHandle color(info.hbmColor);
  const BitmapHandle mask(info.hbmMask);
  BITMAP bitmap = {};
  ::GetObjectW(info.hbmColor != nullptr ? info.hbmColor : info.hbmMask, sizeof(bitmap), &bitmap);
  return bitmap.bmWidth;
}

}  // namespace

const MessageEntry KsImageGridCtrl::kEntries[] = {
    OnMessage(WM_GETOBJECT, &KsImageGridCtrl::HandleGetObject),
};
const MessageTable KsImageGridCtrl::kMessages = {&CGridCtrl::kMessages, KsImageGridCtrl::kEntries};

KsImageGridCtrl::KsImageGridCtrl()
    : m_borderBrush(::CreateSolidBrush(kBorderColor)),
      m_plainBrush(::CreateSolidBrush(kPlainColor)),
      m_selectedBrush(::CreateSolidBrush(kSelectedColor)),
      m_hoverBrush(::CreateSolidBrush(kHoverColor)) {
  if (const HMODULE skin = ::GetModuleHandleW(L"WndShim")) {
    m_mark.Reset(::LoadBitmapW(skin, MAKEINTRESOURCEW(kSkinMark)));
  }
}

KsImageGridCtrl::~KsImageGridCtrl() = default;

void KsImageGridCtrl::OnAttached() {
  m_imageSize = Scaled(kDefaultImageSize);
  MakeFonts();
  SetTrackHover(true);
  SearchOptions options;
  options.anywhere = false;
  SetSearch(options, true, 2500);
}

void KsImageGridCtrl::MakeFonts() {
  const LOGFONTW font = FontOf(Handle());
  m_nameFont = WithWeight(font, FW_NORMAL);
  m_statusFont = WithWeight(font, FW_NORMAL);
  m_selectedFont = WithWeight(font, FW_BOLD);
}

bool KsImageGridCtrl::Initialise(int columnWidth) {
  RECT client = {};
  ::GetClientRect(Handle(), &client);
  DeleteAllItems();
  while (ColumnCount() > 0) {
    Send(LVM_DELETECOLUMN, 0);
  }
  m_columnWidth = columnWidth;
  m_columnCount = TileColumnCount(client.right, ::GetSystemMetrics(SM_CXVSCROLL), columnWidth);
  for (int col = 0; col < m_columnCount; ++col) {
    if (InsertColumn(col, std::wstring(), columnWidth) == -1) {
      return false;
    }
  }
  if (!SetColumnState(TileColumnState(m_columnCount, columnWidth), kMinColumnWidth, true)) {
    return false;
  }
  UpdateRowHeight();
  for (int entry = 0; entry < EntryCount(); ++entry) {
    ShowEntry(entry);
  }
  return true;
}

TileLayout KsImageGridCtrl::Layout(HDC dc) const {
  const ObjectSelection font(dc, m_selectedFont.Get());
  SIZE line = {};
  ::GetTextExtentPoint32W(dc, kLineSample, static_cast<int>(std::size(kLineSample)) - 1, &line);
  TileMetrics metrics;
  metrics.columnWidth = m_columnWidth;
  metrics.imageSize = m_imageSize;
  metrics.lineHeight = line.cy;
  metrics.margin = Scaled(8);
  metrics.gap = Scaled(4);
  metrics.stateLines = 2;
  return LayOutTile(metrics);
}

void KsImageGridCtrl::UpdateRowHeight() {
  SetRowHeight(Layout(WindowDc(Handle()).Get()).tile.bottom);
}

int KsImageGridCtrl::AddEntry(const std::wstring& name, const std::wstring& status, HICON icon,
                              bool enabled) {
  IconHandle copy(icon != nullptr ? ::CopyIcon(icon) : nullptr);
  int entry = 0;
  {
    const std::lock_guard lock(m_lock);
    entry = static_cast<int>(m_entries.size());
    m_entries.push_back({name, status, std::move(copy), enabled});
  }
  if (const int size = IconSize(icon); size > m_imageSize) {
    m_imageSize = size;
    UpdateRowHeight();
  }
  ShowEntry(entry);
  if (::GetFocus() == Handle()) {
    FocusFirstTile();
  }
  return entry;
}

// Fills the entry's cell of the list view.
void KsImageGridCtrl::ShowEntry(int entry) {
  Tile tile;
  const GridCell cell = TileCell(entry, m_columnCount);
  if (ColumnCount() == 0 || !ReadTile(entry, &tile)) {
    return;
  }
  if (cell.row >= ItemCount()) {
    InsertItem(cell.row, std::wstring());
  }
  SetItemText(cell.row, cell.col, TileText(tile.name, tile.status));
}

int KsImageGridCtrl::EntryCount() const {
  const std::lock_guard lock(m_lock);
  return static_cast<int>(m_entries.size());
}

bool KsImageGridCtrl::ReadTile(int entry, Tile* tile) const {
  const std::lock_guard lock(m_lock);
  if (entry < 0 || static_cast<size_t>(entry) >= m_entries.size()) {
    return false;
  }
  const Entry& read = m_entries[static_cast<size_t>(entry)];
  *tile = {read.name, read.status, read.icon.Get(), read.enabled};
  return true;
}

int KsImageGridCtrl::EntryAt(int row, int col) const {
  return TileEntry({row, col}, m_columnCount, EntryCount());
}

std::wstring KsImageGridCtrl::SelectedText() const {
  Tile tile;
  return ReadTile(m_selected, &tile) && tile.enabled ? tile.name : std::wstring();
}

void KsImageGridCtrl::SelectEntry(int entry) {
  const int before = m_selected;
  const GridCell cell = TileCell(entry < EntryCount() ? entry : -1, m_columnCount);
  m_selected = cell.IsNone() ? -1 : entry;
  if (m_selected != before) {
    InvalidateEntry(before);
    InvalidateEntry(m_selected);
    if (m_selected != -1) {
      ::NotifyWinEvent(EVENT_OBJECT_SELECTION, Handle(), OBJID_CLIENT, m_selected + 1);
    }
  }
  if (m_selected != -1) {
    SetCellFocus(cell.row, cell.col, true, true);
  } else {
    SetItemState(-1, 0, LVIS_SELECTED);
  }
}

void KsImageGridCtrl::InvalidateEntry(int entry) const {
  InvalidateCell(TileCell(entry, m_columnCount));
}

void KsImageGridCtrl::TellActivity() const {
  ::SendMessageW(::GetParent(Handle()), kActivityMessage, 0, 0);
}

CellKind KsImageGridCtrl::GetCellKind(int row, int col) const {
  return EntryAt(row, col) == -1 ? CellKind::kNone : CellKind::kPlain;
}

bool KsImageGridCtrl::OnCellPressed(int row, int col, const RECT& /*rect*/, WPARAM /*keys*/) {
  ActOnCell(row, col, nullptr);
  return true;
}

void KsImageGridCtrl::OnCellClicked(int row, int col) {
  SelectEntry(EntryAt(row, col));
  TellActivity();
}

void KsImageGridCtrl::AnnounceFocus() const {
  const GridCell focus = FocusCell();
  const int entry = EntryAt(focus.row, focus.col);
  if (entry != -1 && ::GetFocus() == Handle()) {
    ::NotifyWinEvent(EVENT_OBJECT_FOCUS, Handle(), OBJID_CLIENT, entry + 1);
  }
}

void KsImageGridCtrl::OnFocusCellChanged(GridCell /*before*/, GridCell now) {
  AnnounceFocus();
  const int entry = EntryAt(now.row, now.col);
  if (m_selectsWithFocus && entry != -1 && entry != m_selected) {
    SelectEntry(entry);
    TellActivity();
  }
}

LRESULT KsImageGridCtrl::OnLButtonDown(const MessageArgs& args) {
  ::SetFocus(Handle());
  int row = -1;
  int col = -1;
  const POINT point = {static_cast<short>(LOWORD(args.lParam)),
                       static_cast<short>(HIWORD(args.lParam))};
  // Beside the tiles nothing is to be selected, and the selection is not to be lost.
  return HitTest(point, &row, &col, nullptr) ? CGridCtrl::OnLButtonDown(args) : 0;
}

LRESULT KsImageGridCtrl::OnKeyDown(const MessageArgs& args) {
  TileMove move = TileMove::kFirst;
  switch (args.wParam) {
    case VK_LEFT:
      move = TileMove::kLeft;
      break;
    case VK_RIGHT:
      move = TileMove::kRight;
      break;
    case VK_UP:
      move = TileMove::kUp;
      break;
    case VK_DOWN:
      move = TileMove::kDown;
      break;
    case VK_HOME:
    case VK_PRIOR:
      break;
    case VK_END:
    case VK_NEXT:
      move = TileMove::kLast;
      break;
    default:
      return CGridCtrl::OnKeyDown(args);
  }
  const GridCell focus = FocusCell();
  const int entry =
      MoveAmongTiles(EntryAt(focus.row, focus.col), move, m_columnCount, EntryCount());
  if (entry != -1) {
    SelectEntry(entry);
    TellActivity();
  }
  return 0;
}

// The focus alone selects nothing: who only passes by with the Tab key has not chosen.
void KsImageGridCtrl::FocusFirstTile() {
  if (FocusCell().IsNone() && EntryCount() > 0) {
    m_selectsWithFocus = false;
    SetCellFocus(0, 0, false);
    m_selectsWithFocus = true;
  }
}

LRESULT KsImageGridCtrl::OnSetFocus(const MessageArgs& args) {
  const GridCell before = FocusCell();
  m_selectsWithFocus = false;
  const LRESULT result = CGridCtrl::OnSetFocus(args);
  m_selectsWithFocus = true;
  // The system tells of the grid, or of a row, but not of the tile; a change has told of it
  // already.
  if (FocusCell() == before) {
    AnnounceFocus();
  }
  return result;
}

LRESULT KsImageGridCtrl::HandleGetObject(const MessageArgs& args) {
  if (!AsksForClientArea(args.lParam)) {
    return Default(args);
  }
  if (!m_accessible) {
    m_accessible = MakeTileAccessible(Handle());
  }
  return m_accessible ? ::LresultFromObject(__uuidof(IAccessible), args.wParam, m_accessible.Get())
                      : Default(args);
}

LRESULT KsImageGridCtrl::OnDestroy(const MessageArgs& args) {
  m_accessible.Reset();
  return CGridCtrl::OnDestroy(args);
}

bool KsImageGridCtrl::ReadTileFacts(int tile, ItemFacts* facts) const {
  Tile read;
  if (!ReadTile(tile, &read)) {
    return false;
  }
  const GridCell cell = TileCell(tile, m_columnCount);
  facts->name = TileText(read.name, read.status);
  facts->place = CellRectangle(cell.row, cell.col);
  ::MapWindowPoints(Handle(), nullptr, reinterpret_cast<POINT*>(&facts->place), 2);
  facts->enabled = read.enabled && ::IsWindowEnabled(Handle());
  facts->selected = tile == m_selected;
  facts->focused = ::GetFocus() == Handle() && FocusCell() == cell;
  return true;
}

void KsImageGridCtrl::ChooseTile(int tile) {
  const GridCell cell = TileCell(tile, m_columnCount);
  ActOnCell(cell.row, cell.col, nullptr);
}

LRESULT KsImageGridCtrl::OnScroll(const MessageArgs& args) {
  TellActivity();
  return CGridCtrl::OnScroll(args);
}

}  // namespace postmarker
