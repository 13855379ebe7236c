#include "controls/KsMessageBoxDlg_win.h"

#include <algorithm>
#include <utility>

#include "resource.h"
#include "ui/CPropertySheet.h"
#include "ui/CWinApp.h"
#include "ui/Clipboard.h"

namespace postmarker {
namespace {

constexpr UINT kButtonSetMask = 0xF;
constexpr uint16_t kIconId = 20;
constexpr uint16_t kTextId = 0xFFFF;

// Windows' own spacing, in dialog units.
constexpr int kMargin = 7;
constexpr int kIconSize = 21;
constexpr int kWidestText = 220;
constexpr int kButtonHeight = 14;
constexpr int kMinButtonWidth = 50;
constexpr int kButtonGap = 4;

constexpr MessageBoxButton kOkButton = {IDOK, IDS_BUTTON_OK, L"OK"};
constexpr MessageBoxButton kCancelButton = {IDCANCEL, IDS_BUTTON_CANCEL, L"Cancel"};
constexpr MessageBoxButton kAbortButton = {IDABORT, IDS_BUTTON_ABORT, L"&Abort"};
constexpr MessageBoxButton kRetryButton = {IDRETRY, IDS_BUTTON_RETRY, L"&Retry"};
constexpr MessageBoxButton kIgnoreButton = {IDIGNORE, IDS_BUTTON_IGNORE, L"&Ignore"};
constexpr MessageBoxButton kYesButton = {IDYES, IDS_BUTTON_YES, L"&Yes"};
constexpr MessageBoxButton kNoButton = {IDNO, IDS_BUTTON_NO, L"&No"};
constexpr MessageBoxButton kTryAgainButton = {IDTRYAGAIN, IDS_BUTTON_TRY_AGAIN, L"&Try again"};
constexpr MessageBoxButton kContinueButton = {IDCONTINUE, IDS_BUTTON_CONTINUE, L"&Continue"};

std::wstring ButtonText(const MessageBoxButton& button) {
  std::wstring text = LoadText(button.textId);
  return text.empty() ? button.fallback : text;
}

LPCWSTR SystemIcon(UINT style) {
  switch (style & MB_ICONMASK) {
    case MB_ICONERROR:
      return MAKEINTRESOURCEW(32513);
    case MB_ICONQUESTION:
      return MAKEINTRESOURCEW(32514);
    case MB_ICONWARNING:
      return MAKEINTRESOURCEW(32515);
    case MB_ICONINFORMATION:
      return MAKEINTRESOURCEW(32516);
    default:
      return nullptr;
  }
}

}  // namespace

std::vector<MessageBoxButton> MessageBoxButtons(UINT style) {
  switch (style & kButtonSetMask) {
    case MB_OKCANCEL:
      return {kOkButton, kCancelButton};
    case MB_ABORTRETRYIGNORE:
      return {kAbortButton, kRetryButton, kIgnoreButton};
    case MB_YESNOCANCEL:
      return {kYesButton, kNoButton, kCancelButton};
    case MB_YESNO:
      return {kYesButton, kNoButton};
    case MB_RETRYCANCEL:
      return {kRetryButton, kCancelButton};
    case MB_CANCELTRYCONTINUE:
      return {kCancelButton, kTryAgainButton, kContinueButton};
    default:
      return {kOkButton};
  }
}

const MessageEntry KsMessageBoxDlg::kEntries[] = {
    OnMessage(WM_COMMAND, &KsMessageBoxDlg::HandleCommand),
    OnMessage(WM_COPY, &KsMessageBoxDlg::HandleCopy),
};
const MessageTable KsMessageBoxDlg::kMessages = {&CDialog::kMessages, KsMessageBoxDlg::kEntries};

KsMessageBoxDlg::KsMessageBoxDlg(HWND owner, std::wstring text, std::wstring caption, UINT style)
    : CDialog(0, owner),
      m_ownerWindow(owner),
      m_text(std::move(text)),
      m_caption(std::move(caption)),
      m_style(style),
      m_buttons(MessageBoxButtons(style)) {}

bool KsMessageBoxDlg::HasButton(int result) const {
  return std::any_of(m_buttons.begin(), m_buttons.end(),
                     [result](const auto& button) { return button.result == result; });
}

const DLGTEMPLATE* KsMessageBoxDlg::MemoryTemplate() {
  // Both are looked at on building: a box of a skinned program is styled by the window hook module.
  m_user32 = ::GetModuleHandleW(L"USER32");
  m_windowHook = ::GetModuleHandleW(L"WndShim");
  const DialogUnits units;
  const bool icon = SystemIcon(m_style) != nullptr;
  const int textLeft = kMargin + (icon ? kIconSize + kMargin : 0);
  const SIZE text = units.TextSize(m_text, kWidestText, false);
  std::vector<std::wstring> labels;
  int buttonWidth = kMinButtonWidth;
  for (const MessageBoxButton& button : m_buttons) {
    labels.push_back(ButtonText(button));
    const SIZE label = units.TextSize(labels.back(), kWidestText, true);
    buttonWidth = std::max(buttonWidth, static_cast<int>(label.cx) + 2 * kMargin);
  }
  const auto count = static_cast<int>(m_buttons.size());
  const int buttonsWidth = count * buttonWidth + (count - 1) * kButtonGap;
  const int width =
      2 * kMargin + std::max(buttonsWidth, textLeft - kMargin + static_cast<int>(text.cx));
  const int contentHeight = std::max(static_cast<int>(text.cy), icon ? kIconSize : 0);
  const int buttonTop = kMargin + contentHeight + kMargin;
  m_template = std::make_unique<DialogTemplate>(
      m_caption, WS_POPUP | WS_CAPTION | WS_SYSMENU | DS_MODALFRAME, 0,
      SIZE{width, buttonTop + kButtonHeight + kMargin});
  using Control = DialogTemplate::ControlClass;
  if (icon) {
    m_template->AddControl(Control::kStatic, kIconId, std::wstring(), SS_ICON,
                           {kMargin, kMargin, kMargin + kIconSize, kMargin + kIconSize});
  }
  const int textTop = kMargin + (contentHeight - static_cast<int>(text.cy)) / 2;
  m_template->AddControl(
      Control::kStatic, kTextId, m_text, SS_NOPREFIX,
      {textLeft, textTop, textLeft + static_cast<int>(text.cx), textTop + text.cy});
  int left = (width - buttonsWidth) / 2;
  for (size_t i = 0; i < m_buttons.size(); ++i) {
    m_template->AddControl(Control::kButton, static_cast<uint16_t>(m_buttons[i].result), labels[i],
                           WS_TABSTOP | (i == 0 ? BS_DEFPUSHBUTTON : BS_PUSHBUTTON),
                           {left, buttonTop, left + buttonWidth, buttonTop + kButtonHeight});
    left += buttonWidth + kButtonGap;
  }
  return m_template->Get();
}

bool KsMessageBoxDlg::OnInitDialog() {
  CDialog::OnInitDialog();
  if (const LPCWSTR icon = SystemIcon(m_style)) {
    ::SendDlgItemMessageW(Handle(), kIconId, STM_SETICON,
                          reinterpret_cast<WPARAM>(::LoadIconW(nullptr, icon)), 0);
    constexpr UINT kSounds[] = {MB_OK, MB_ICONERROR, MB_ICONQUESTION, MB_ICONWARNING,
                                MB_ICONINFORMATION};
    ::MessageBeep(kSounds[(m_style & MB_ICONMASK) >> 4]);
  }
  if (!HasButton(IDCANCEL) && m_buttons.size() > 1) {
    ::EnableMenuItem(::GetSystemMenu(Handle(), FALSE), SC_CLOSE, MF_BYCOMMAND | MF_GRAYED);
  }
  CenterWindow(Handle(), m_ownerWindow);
  const size_t wanted = (m_style & MB_DEFMASK) >> 8;
  const MessageBoxButton& button = m_buttons[std::min(wanted, m_buttons.size() - 1)];
  Send(WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(Item(button.result)), TRUE);
  Send(DM_SETDEFID, static_cast<WPARAM>(button.result));
  return false;
}

LRESULT KsMessageBoxDlg::HandleCommand(const MessageArgs& args) {
  const int id = LOWORD(args.wParam);
  if (HIWORD(args.wParam) == BN_CLICKED && HasButton(id)) {
    EndDialog(id);
    return 0;
  }
  if (id == IDCANCEL) {
    OnCancel();
  }
  return 0;
}

void KsMessageBoxDlg::OnOK() {}

void KsMessageBoxDlg::OnCancel() {
  if (m_buttons.size() == 1) {
    EndDialog(m_buttons.front().result);
  }
}

LRESULT KsMessageBoxDlg::HandleCopy(const MessageArgs& /*args*/) {
  SetClipboardText(Handle(), m_caption + L"\r\n\r\n" + m_text + L"\r\n");
  return 0;
}

int ShowMessageBox(HWND owner, const std::wstring& text, const std::wstring& caption, UINT style) {
  return static_cast<int>(KsMessageBoxDlg(owner, text, caption, style).DoModal());
}

}  // namespace postmarker
