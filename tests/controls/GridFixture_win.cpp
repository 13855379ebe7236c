#include "controls/GridFixture_win.h"

#include <commctrl.h>

#include "support/HeldKey_win.h"
#include "support/WizardSession_win.h"

namespace postmarker::test {
namespace {

void SendKey(WORD key) {
  const HWND focus = ::GetFocus();
  ::SendMessageW(focus, WM_KEYDOWN, key, 1);
  if (key == VK_SPACE || key == VK_RETURN || key == VK_ESCAPE || key == VK_BACK) {
    ::SendMessageW(focus, WM_CHAR, key, 1);
  }
  ::SendMessageW(::GetFocus(), WM_KEYUP, key, static_cast<LPARAM>(0xC0000001));
}

}  // namespace

const MessageEntry GridParent::kEntries[] = {
    OnMessage(WM_DRAWITEM, &GridParent::HandleDraw),
    OnMessage(WM_MEASUREITEM, &GridParent::HandleMeasure),
    OnMessage(WM_NOTIFY, &GridParent::HandleNotify),
    OnMessage(WM_KEYUP, &GridParent::HandleKeyUp),
    OnMessage(0x65C, &GridParent::HandleActivity),
};
const MessageTable GridParent::kMessages = {&CWnd::kMessages, GridParent::kEntries};

LRESULT GridParent::HandleDraw(const MessageArgs& args) {
  ++drawn;
  return grid != nullptr ? grid->DrawItem(args) : 0;
}

LRESULT GridParent::HandleMeasure(const MessageArgs& args) {
  return grid != nullptr ? grid->MeasureItem(args) : 0;
}

LRESULT GridParent::HandleNotify(const MessageArgs& args) {
  const auto* const change = reinterpret_cast<const NMLISTVIEW*>(args.lParam);
  if (change->hdr.code == LVN_ITEMCHANGED) {
    itemChanges.push_back(change->uNewState ^ change->uOldState);
  }
  return 0;
}

LRESULT GridParent::HandleKeyUp(const MessageArgs& args) {
  keyUps.push_back(args.wParam);
  return 0;
}

LRESULT GridParent::HandleActivity(const MessageArgs& /*args*/) {
  ++activities;
  return 0;
}

GridFixture::GridFixture() {
  AfxGetApp()->SetModule(::GetModuleHandleW(nullptr));
  INITCOMMONCONTROLSEX controls = {sizeof(controls),
                                   ICC_LISTVIEW_CLASSES | ICC_USEREX_CLASSES | ICC_BAR_CLASSES};
  ::InitCommonControlsEx(&controls);
  m_parent.Subclass(::CreateWindowExW(0, L"STATIC", L"grids", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 60,
                                      60, 560, 420, nullptr, nullptr, nullptr, nullptr));
  m_other = ::CreateWindowExW(0, L"BUTTON", L"other", WS_CHILD | WS_VISIBLE, 450, 10, 80, 24,
                              m_parent.Handle(), nullptr, nullptr, nullptr);
  ::SetForegroundWindow(m_parent.Handle());
}

GridFixture::~GridFixture() {
  ::DestroyWindow(m_parent.Handle());
}

void GridFixture::Show(CGridCtrl* grid, DWORD style, SIZE size) {
  const HWND list = ::CreateWindowExW(
      0, WC_LISTVIEWW, L"", WS_CHILD | WS_VISIBLE | WS_TABSTOP | WS_BORDER | LVS_REPORT | style, 10,
      10, size.cx, size.cy, m_parent.Handle(), reinterpret_cast<HMENU>(INT_PTR{77}), nullptr,
      nullptr);
  m_parent.grid = grid;
  ASSERT_TRUE(grid->Attach(list));
}

void GridFixture::Pump() {
  MSG message = {};
  while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
    ::TranslateMessage(&message);
    ::DispatchMessageW(&message);
  }
}

bool GridFixture::PumpUntil(const std::function<bool()>& condition) {
  return WaitUntil([&condition] {
    Pump();
    return condition();
  });
}

void GridFixture::PressKey(WORD key) {
  SendKey(key);
  Pump();
}

void GridFixture::PressWith(WORD modifier, WORD key) {
  const HeldKey held(modifier);
  SendKey(key);
}

void GridFixture::Type(const std::wstring& text) {
  for (const wchar_t unit : text) {
    ::SendMessageW(::GetFocus(), WM_CHAR, unit, 1);
  }
}

void GridFixture::Click(const CGridCtrl& grid, int row, int col, WPARAM keys) {
  const RECT cell = grid.CellRectangle(row, col);
  const LPARAM place = MAKELPARAM((cell.left + cell.right) / 2, (cell.top + cell.bottom) / 2);
  ::PostMessageW(grid.Handle(), WM_LBUTTONDOWN, MK_LBUTTON | keys, place);
  ::PostMessageW(grid.Handle(), WM_LBUTTONUP, keys, place);
  Pump();
}

void GridFixture::SetEditText(HWND editor, const std::wstring& text) {
  ::SetWindowTextW(editor, text.c_str());
}

}  // namespace postmarker::test
