// The drawing of the grid.
#include <algorithm>

#include "controls/CGridCtrl_win.h"
#include "support/DeviceContext_win.h"

namespace postmarker {
namespace {

// Sizes at 96 pixels per inch.
constexpr int kTextMargin = 6;
constexpr int kCheckSize = 13;

void FillSolid(HDC dc, const RECT& rect, COLORREF color) {
  ::SetBkColor(dc, color);
  ::ExtTextOutW(dc, 0, 0, ETO_OPAQUE, &rect, nullptr, 0, nullptr);
}

}  // namespace

int CGridCtrl::Scaled(int size) const {
  const WindowDc dc(Handle());
  return ::MulDiv(size, ::GetDeviceCaps(dc.Get(), LOGPIXELSX), 96);
}

LRESULT CGridCtrl::MeasureItem(const MessageArgs& args) const {
  auto* const measure = reinterpret_cast<MEASUREITEMSTRUCT*>(args.lParam);
  if (Handle() == nullptr || m_rowPixels == 0 ||
      measure->CtlID != static_cast<UINT>(::GetDlgCtrlID(Handle()))) {
    return 0;
  }
  measure->itemHeight = static_cast<UINT>(m_rowPixels);
  return TRUE;
}

LRESULT CGridCtrl::DrawItem(const MessageArgs& args) {
  const auto* const draw = reinterpret_cast<const DRAWITEMSTRUCT*>(args.lParam);
  if (Handle() == nullptr || draw->hwndItem != Handle()) {
    return 0;
  }
  const SavedDcState saved(draw->hDC);
  const bool hasFocus = ::GetFocus() == Handle();
  const int row = static_cast<int>(draw->itemID);
  RECT rest = draw->rcItem;
  for (const int col : ColumnOrder()) {
    const RECT rect = CellRectangle(row, col);
    DrawContext context = {};
    context.dc = draw->hDC;
    context.row = row;
    context.col = col;
    context.rect = rect;
    context.selected = (draw->itemState & ODS_SELECTED) != 0;
    context.focused = hasFocus && FocusCell() == GridCell{row, col};
    context.hovered = HoverCell() == GridCell{row, col};
    context.enabled = ::IsWindowEnabled(Handle()) != FALSE;
    DrawCell(&context);
    rest.left = std::max(rest.left, rect.right);
  }
  // Beside the last column.
  RECT client = {};
  ::GetClientRect(Handle(), &client);
  rest.right = client.right;
  if (rest.left < rest.right) {
    FillSolid(draw->hDC, rest, ::GetSysColor(COLOR_WINDOW));
  }
  return TRUE;
}

COLORREF CGridCtrl::CellBackColor(const DrawContext& context) const {
  if (!context.selected || !context.enabled) {
    return ::GetSysColor(COLOR_WINDOW);
  }
  return ::GetSysColor(::GetFocus() == Handle() ? COLOR_HIGHLIGHT : COLOR_BTNFACE);
}

COLORREF CGridCtrl::CellTextColor(const DrawContext& context) const {
  if (!context.enabled) {
    return ::GetSysColor(COLOR_GRAYTEXT);
  }
  if (!context.selected) {
    return ::GetSysColor(COLOR_WINDOWTEXT);
  }
  return ::GetSysColor(::GetFocus() == Handle() ? COLOR_HIGHLIGHTTEXT : COLOR_BTNTEXT);
}

void CGridCtrl::DrawCell(DrawContext* context) const {
  const RECT whole = context->rect;
  FillSolid(context->dc, whole, CellBackColor(*context));
  ::SetTextColor(context->dc, CellTextColor(*context));
  ::SetBkMode(context->dc, TRANSPARENT);
  context->rect.left += Scaled(kTextMargin);
  context->rect.right -= Scaled(kTextMargin);
  DrawCellCheck(context);
  DrawCellImage(context);
  DrawCellText(*context);
  context->rect = whole;
  if (context->focused) {
    DrawCellFocus(*context);
  }
}

void CGridCtrl::DrawCellCheck(DrawContext* context) const {
  const CellKind kind = GetCellKind(context->row, context->col);
  if (kind != CellKind::kCheck && kind != CellKind::kRadio) {
    return;
  }
  const int size = Scaled(kCheckSize);
  const int top = (context->rect.top + context->rect.bottom - size) / 2;
  RECT box = {context->rect.left, top, context->rect.left + size, top + size};
  UINT state = kind == CellKind::kCheck ? DFCS_BUTTONCHECK : DFCS_BUTTONRADIO;
  state |= IsCellChecked(context->row, context->col) ? DFCS_CHECKED : 0U;
  state |= context->enabled ? 0U : DFCS_INACTIVE;
  ::DrawFrameControl(context->dc, &box, DFC_BUTTON, state);
  context->rect.left = box.right + Scaled(kTextMargin);
}

void CGridCtrl::DrawCellImage(DrawContext* context) const {
  context->rect.left += ImageWidth(context->row, context->col);
}

int CGridCtrl::ImageWidth(int /*row*/, int /*col*/) const {
  return 0;
}

void CGridCtrl::DrawCellText(const DrawContext& context) const {
  RECT rect = context.rect;
  const std::wstring text = CellText(context.row, context.col);
  ::DrawTextW(context.dc, text.c_str(), static_cast<int>(text.size()), &rect,
              DT_SINGLELINE | DT_VCENTER | DT_END_ELLIPSIS | DT_NOPREFIX);
}

void CGridCtrl::DrawCellFocus(const DrawContext& context) const {
  // In the color of the text, which stands out on every background.
  const BrushHandle brush(::CreateSolidBrush(CellTextColor(context)));
  RECT frame = context.rect;
  ::InflateRect(&frame, -1, -1);
  ::FrameRect(context.dc, &frame, brush.Get());
}

LRESULT CGridCtrl::OnColorChange(const MessageArgs& args) {
  const LRESULT result = Default(args);
  Send(LVM_SETBKCOLOR, 0, static_cast<LPARAM>(::GetSysColor(COLOR_WINDOW)));
  return result;
}

void CGridCtrl::SetEmptyText(const std::wstring& text) {
  m_emptyText = text;
  ::InvalidateRect(Handle(), nullptr, TRUE);
}

void CGridCtrl::PaintEmptyText() const {
  const WindowDc window(Handle());
  const HDC dc = window.Get();
  const SavedDcState saved(dc);
  RECT rect = {};
  ::GetClientRect(Handle(), &rect);
  RECT header = {};
  if (Header() != nullptr && ::IsWindowVisible(Header())) {
    ::GetClientRect(Header(), &header);
  }
  rect.top = header.bottom;
  ::InflateRect(&rect, -2 * Scaled(kTextMargin), -2 * Scaled(kTextMargin));
  const ObjectSelection font(dc, reinterpret_cast<HGDIOBJ>(Send(WM_GETFONT)));
  ::SetBkMode(dc, TRANSPARENT);
  ::SetTextColor(dc, ::GetSysColor(COLOR_WINDOWTEXT));
  ::DrawTextW(dc, m_emptyText.c_str(), static_cast<int>(m_emptyText.size()), &rect,
              DT_CENTER | DT_WORDBREAK | DT_NOPREFIX);
}

LRESULT CGridCtrl::OnPaint(const MessageArgs& args) {
  const LRESULT result = Default(args);
  if (!m_emptyText.empty() && ItemCount() == 0) {
    PaintEmptyText();
  }
  return result;
}

}  // namespace postmarker
