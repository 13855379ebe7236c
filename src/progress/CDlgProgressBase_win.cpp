#include "progress/CDlgProgressBase_win.h"

#include "progress/CDlgConfirmation_win.h"
#include "resource.h"
#include "support/UniqueHandle.h"
#include "wizard/Colors_win.h"
#include "wizard/PostedTexts_win.h"
#include "wizard/ProgressBar_win.h"
#include "wizard/WindowHook_win.h"

namespace postmarker {
namespace {

// How often gathered steps are shown. Timers wait for posted messages and for input, so that a host
// that never stops reporting leaves room for both.
constexpr UINT_PTR kStepsTimer = 1;
constexpr UINT kStepsTimerMs = 30;

}  // namespace

const MessageEntry CDlgProgressBase::kEntries[] = {
    OnMessage(WM_NCCREATE, &CDlgProgressBase::HandleNcCreate),
    OnMessage(WM_DESTROY, &CDlgProgressBase::HandleDestroy),
    OnMessage(kProgressText, &CDlgProgressBase::HandleText),
    OnMessage(kProgressSteps, &CDlgProgressBase::HandleSteps),
    OnMessage(WM_TIMER, &CDlgProgressBase::HandleTimer),
    OnMessage(WM_ENTERIDLE, &CDlgProgressBase::HandleIdle),
    OnMessage(WM_CTLCOLORDLG, &CDlgProgressBase::HandleColor),
    OnMessage(WM_CTLCOLORBTN, &CDlgProgressBase::HandleColor),
    OnMessage(WM_CTLCOLORSTATIC, &CDlgProgressBase::HandleColor),
};
const MessageTable CDlgProgressBase::kMessages = {&CDialog::kMessages, CDlgProgressBase::kEntries};

CDlgProgressBase::CDlgProgressBase(ProgressHandle* handle, UINT templateId, Hook hook)
    : CDialog(templateId), m_handle(handle), m_hook(hook) {}

CDlgProgressBase::~CDlgProgressBase() {
  if (m_hookOwner) {
    EndWindowHook();
  }
}

bool CDlgProgressBase::OnInitDialog() {
  // The template's text is shown until the host sends one.
  m_text = WindowText(Item(IDC_PROGRESS_TEXT));
  return CDialog::OnInitDialog();
}

void CDlgProgressBase::DoDataExchange(const CDataExchange& exchange) {
  exchange.Text(IDC_PROGRESS_TEXT, &m_text);
}

bool CDlgProgressBase::ConfirmStop() {
  // The window can be told to close while the question is open, by other programs for example.
  if (m_isAsking) {
    return false;
  }
  m_isAsking = true;
  const ScopeExit answered([this] { m_isAsking = false; });
  return CDlgConfirmation(Handle()).DoModal() == IDOK && IsRunning();
}

void CDlgProgressBase::EndWith(INT_PTR result) {
  m_handle->Close();
  EndDialog(result);
}

void CDlgProgressBase::PostToSelf(UINT message, WPARAM wParam, LPARAM lParam) const {
  if (!::PostMessageW(Handle(), message, wParam, lParam)) {
    Send(message, wParam, lParam);
  }
}

LRESULT CDlgProgressBase::HandleNcCreate(const MessageArgs& args) {
  const LRESULT result = Default(args);
  if (result == FALSE) {
    return result;
  }
  if (m_hook == Hook::kAlways || m_handle->useHook != 0) {
    m_hookOwner = BeginWindowHook(Handle());
  }
  m_handle->Open(Handle());
  return result;
}

LRESULT CDlgProgressBase::HandleDestroy(const MessageArgs& args) {
  m_handle->Close();
  DropPostedTexts(Handle(), kProgressText);
  OnDestroy();
  return Default(args);
}

LRESULT CDlgProgressBase::HandleText(const MessageArgs& args) {
  m_text = ReadPostedText(args);
  if (!m_text.empty()) {
    UpdateData(false);
  }
  SetProgressRange(Item(IDC_PROGRESS_BAR), static_cast<int32_t>(args.lParam));
  return 0;
}

LRESULT CDlgProgressBase::HandleSteps(const MessageArgs& args) {
  const int64_t told = static_cast<int32_t>(args.lParam);
  AdvanceProgress(Item(IDC_PROGRESS_BAR), told);
  AdvanceProgress(Item(IDC_PROGRESS_BAR), m_handle->StepsArrived());
  ::SetTimer(Handle(), kStepsTimer, kStepsTimerMs, nullptr);
  return 0;
}

LRESULT CDlgProgressBase::HandleTimer(const MessageArgs& args) {
  if (args.wParam != kStepsTimer) {
    return Default(args);
  }
  const PendingSteps::Gathered gathered = m_handle->FetchSteps();
  AdvanceProgress(Item(IDC_PROGRESS_BAR), gathered.steps);
  if (!gathered.more) {
    ::KillTimer(Handle(), kStepsTimer);
  }
  return 0;
}

LRESULT CDlgProgressBase::HandleIdle(const MessageArgs& args) {
  // The question has become pointless: the host has ended the job, or closes the window and waits.
  if (args.wParam == MSGF_DIALOGBOX && !IsRunning()) {
    ::EndDialog(reinterpret_cast<HWND>(args.lParam), IDCANCEL);
  }
  return Default(args);
}

LRESULT CDlgProgressBase::HandleColor(const MessageArgs& args) {
  return ColorForControl(args, IDC_PROGRESS_HEADING);
}

}  // namespace postmarker
