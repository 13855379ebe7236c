#include "controls/LabelFixture_win.h"

#include <algorithm>

#include "support/HeldKey_win.h"

namespace postmarker::test {
namespace {

constexpr int kWidth = 300;
constexpr int kHeight = 120;

HWND MakeButton(HWND parent, int id, int top) {
  return ::CreateWindowExW(0, L"BUTTON", L"button", WS_CHILD | WS_VISIBLE | WS_TABSTOP, 10, top, 80,
                           24, parent, reinterpret_cast<HMENU>(INT_PTR{id}), nullptr, nullptr);
}

}  // namespace

const MessageEntry LabelParent::kEntries[] = {
    OnMessage(WM_NCLBUTTONDOWN, &LabelParent::HandleDrag),
    OnMessage(kCommand, &LabelParent::HandleAppCommand),
    OnMessage(WM_NEXTDLGCTL, &LabelParent::HandleNextControl),
    OnCommand(IDOK, &LabelParent::HandleButton),
};
const MessageTable LabelParent::kMessages = {&CWnd::kMessages, LabelParent::kEntries};

LRESULT LabelParent::HandleDrag(const MessageArgs& args) {
  drags.emplace_back(args.wParam, args.lParam);
  return 0;
}

LRESULT LabelParent::HandleAppCommand(const MessageArgs& args) {
  commands.emplace_back(args.wParam, args.lParam);
  return 0;
}

LRESULT LabelParent::HandleButton(const MessageArgs& /*args*/) {
  ++pressedButtons;
  return 0;
}

LRESULT LabelParent::HandleNextControl(const MessageArgs& /*args*/) {
  ++shortcuts;
  return 0;
}

bool LabelPicture::Has(const LabelRect& rect, COLORREF color) const {
  for (int y = rect.top; y < std::min(rect.bottom, Height()); ++y) {
    for (int x = rect.left; x < std::min(rect.right, Width()); ++x) {
      if (At(x, y) == color) {
        return true;
      }
    }
  }
  return false;
}

LabelFixture::LabelFixture() {
  AfxGetApp()->SetModule(::GetModuleHandleW(nullptr));
  m_parent.Subclass(::CreateWindowExW(WS_EX_CONTROLPARENT, L"STATIC", L"labels",
                                      WS_OVERLAPPEDWINDOW | WS_VISIBLE, 60, 60, 400, 300, nullptr,
                                      nullptr, nullptr, nullptr));
  m_before = MakeButton(m_parent.Handle(), 1001, 10);
  ::SetForegroundWindow(m_parent.Handle());
}

LabelFixture::~LabelFixture() {
  ::DestroyWindow(m_parent.Handle());
}

void LabelFixture::Show(const std::wstring& text, DWORD style, HWND parent) {
  const HWND owner = parent != nullptr ? parent : m_parent.Handle();
  const HWND label = ::CreateWindowExW(0, L"STATIC", text.c_str(), WS_CHILD | WS_VISIBLE | style,
                                       10, 40, kWidth, kHeight, owner, nullptr, nullptr, nullptr);
  // The font of dialogs.
  ::SendMessageW(label, WM_SETFONT, reinterpret_cast<WPARAM>(::GetStockObject(DEFAULT_GUI_FONT)),
                 FALSE);
  ASSERT_TRUE(m_label.Attach(label));
  m_after = MakeButton(m_parent.Handle(), IDOK, 180);
}

void LabelFixture::Pump() {
  MSG message = {};
  while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
    ::DispatchMessageW(&message);
  }
}

void LabelFixture::PressKey(WORD key, LPARAM flags) {
  MSG message = {};
  message.hwnd = ::GetFocus();
  message.message = WM_KEYDOWN;
  message.wParam = key;
  message.lParam = flags;
  if (!::IsDialogMessageW(m_parent.Handle(), &message)) {
    ::DispatchMessageW(&message);
  }
  Pump();
}

void LabelFixture::PressShiftTab() {
  const HeldKey shift(VK_SHIFT);
  const HeldKey tab(VK_TAB);
  PressKey(VK_TAB);
}

LPARAM LabelFixture::At(const LabelRect& rect) {
  return MAKELPARAM((rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2);
}

}  // namespace postmarker::test
