#include "controls/KsContextMenuDlg_win.h"

#include <algorithm>
#include <utility>

namespace postmarker {
namespace {

// In dialog units.
constexpr int kRowHeight = 14;
constexpr int kMargin = 2;
constexpr int kTextMargin = 7;
constexpr int kWidestText = 200;
constexpr int kFirstCommand = 3;

}  // namespace

const MessageEntry KsContextMenuDlg::kEntries[] = {
    OnMessage(WM_COMMAND, &KsContextMenuDlg::HandleCommand),
    OnMessage(WM_ACTIVATE, &KsContextMenuDlg::HandleActivate),
};
const MessageTable KsContextMenuDlg::kMessages = {&CDialog::kMessages, KsContextMenuDlg::kEntries};

KsContextMenuDlg::KsContextMenuDlg(HWND owner, std::vector<ContextMenuItem> items)
    : CDialog(0, owner), m_windowHook(::GetModuleHandleW(L"WndShim")), m_items(std::move(items)) {}

int KsContextMenuDlg::ShowAt(POINT screen) {
  m_point = screen;
  m_ended = false;
  const INT_PTR chosen = DoModal();
  return chosen >= kFirstCommand ? static_cast<int>(chosen) : 0;
}

const DLGTEMPLATE* KsContextMenuDlg::MemoryTemplate() {
  const DialogUnits units;
  int textWidth = 0;
  for (const ContextMenuItem& item : m_items) {
    textWidth =
        std::max(textWidth, static_cast<int>(units.TextSize(item.text, kWidestText, true).cx));
  }
  const int width = textWidth + 2 * kTextMargin + 2 * kMargin;
  const auto rows = static_cast<int>(m_items.size());
  m_template =
      std::make_unique<DialogTemplate>(std::wstring(), WS_POPUP | WS_BORDER, WS_EX_TOOLWINDOW,
                                       SIZE{width, rows * kRowHeight + 2 * kMargin});
  int top = kMargin;
  for (const ContextMenuItem& item : m_items) {
    m_template->AddControl(DialogTemplate::ControlClass::kButton, static_cast<uint16_t>(item.id),
                           item.text, WS_TABSTOP | BS_PUSHBUTTON | BS_FLAT | BS_LEFT,
                           {kMargin, top, width - kMargin, top + kRowHeight});
    top += kRowHeight;
  }
  return m_template->Get();
}

bool KsContextMenuDlg::OnInitDialog() {
  CDialog::OnInitDialog();
  RECT rect = {};
  ::GetWindowRect(Handle(), &rect);
  MONITORINFO monitor = {};
  monitor.cbSize = sizeof(monitor);
  ::GetMonitorInfoW(::MonitorFromPoint(m_point, MONITOR_DEFAULTTONEAREST), &monitor);
  const LONG x = std::max(monitor.rcWork.left,
                          std::min(m_point.x, monitor.rcWork.right - (rect.right - rect.left)));
  const LONG y = std::max(monitor.rcWork.top,
                          std::min(m_point.y, monitor.rcWork.bottom - (rect.bottom - rect.top)));
  ::SetWindowPos(Handle(), HWND_TOP, x, y, 0, 0, SWP_NOSIZE);
  return true;
}

LRESULT KsContextMenuDlg::HandleCommand(const MessageArgs& args) {
  if (HIWORD(args.wParam) == BN_CLICKED && !m_ended) {
    m_ended = true;
    EndDialog(LOWORD(args.wParam));
  }
  return 0;
}

LRESULT KsContextMenuDlg::HandleActivate(const MessageArgs& args) {
  if (LOWORD(args.wParam) == WA_INACTIVE && !m_ended) {
    m_ended = true;
    EndDialog(0);
  }
  return Default(args);
}

}  // namespace postmarker
