#include "wizard/CPagePrefill_win.h"

#include <commctrl.h>

#include <algorithm>
#include <memory>

#include "resource.h"
#include "support/Bstr_win.h"
#include "ui/CPropertySheet.h"
#include "ui/CWinApp.h"
#include "wizard/CPostmarkerApp_win.h"
#include "wizard/PostedTexts_win.h"
#include "wizard/PrefillWorker_win.h"
#include "wizard/ProgressBar_win.h"
#include "wizard/WizardServices_win.h"

namespace postmarker {
namespace {

constexpr int kRowHeight = 22;
constexpr int kColumns = 2;
constexpr uint32_t kBackAndNext = PSWIZB_BACK | PSWIZB_NEXT;

constexpr int kRunningControls[] = {IDC_PREFILL_RUNNING, IDC_PREFILL_PROGRESS, IDC_PREFILL_STOP};
constexpr int kFinishedControls[] = {IDC_ADDRESS_LABEL, IDC_ADDRESS_GRID, IDC_ADD_ADDRESS,
                                     IDC_REMOVE_ADDRESS};

AddressGridPrompts LoadPrompts() {
  return {.address = LoadText(IDS_ADDRESS_COLUMN),
          .domain = LoadText(IDS_DOMAIN_COLUMN),
          .empty = LoadText(IDS_NO_ADDRESSES),
          .newRow = LoadText(IDS_TYPE_ADDRESS),
          .name = LoadText(IDS_ADDRESS_GRID),
          .duplicate = LoadText(IDS_ADDRESS_IS_THERE),
          .leftOut = LoadText(IDS_ADDRESSES_LEFT_OUT),
          .invalid = LoadText(IDS_ADDRESS_INVALID)};
}

}  // namespace

const MessageEntry CPagePrefill::kEntries[] = {
    OnMessage(kPrefillRange, &CPagePrefill::HandleRange),
    OnMessage(kPrefillAdvance, &CPagePrefill::HandleAdvance),
    OnMessage(kPrefillAddress, &CPagePrefill::HandleAddress),
    OnMessage(kPrefillFinished, &CPagePrefill::HandleFinished),
    OnCommand(IDC_PREFILL_STOP, &CPagePrefill::HandleStop),
    OnCommand(IDC_ADD_ADDRESS, &CPagePrefill::HandleAdd),
    OnCommand(IDC_REMOVE_ADDRESS, &CPagePrefill::HandleRemove),
    OnNotify(IDC_ADDRESS_GRID, static_cast<UINT>(LVN_ITEMCHANGED),
             &CPagePrefill::HandleItemChanged),
    OnMessage(WM_KEYUP, &CPagePrefill::HandleKeyUp),
    OnMessage(WM_DRAWITEM, &CPagePrefill::HandleDrawItem),
    OnMessage(WM_MEASUREITEM, &CPagePrefill::HandleMeasureItem),
    OnMessage(WM_DESTROY, &CPagePrefill::HandleDestroy),
};
const MessageTable CPagePrefill::kMessages = {&CPageWizardDefault::kMessages,
                                              CPagePrefill::kEntries};

CPagePrefill::CPagePrefill(WizardServices* wizard)
    : CPageWizardDefault(wizard, IDD_PAGE_PREFILL, 0),
      m_stopEvent(::CreateEventW(nullptr, TRUE, FALSE, nullptr)) {}

CPagePrefill::~CPagePrefill() {
  StopWorker();
}

void CPagePrefill::DoDataExchange(const CDataExchange& /*exchange*/) {
  m_addressGrid.Attach(Item(IDC_ADDRESS_GRID));
}

bool CPagePrefill::OnInitDialog() {
  CPageWizardDefault::OnInitDialog();
  ::EnableWindow(Item(IDC_REMOVE_ADDRESS), FALSE);
  ShowFinished(0);
  SetUpGrid();
  StartWorker();
  return true;
}

void CPagePrefill::SetUpGrid() {
  RECT client = {};
  ::GetClientRect(m_addressGrid.Handle(), &client);
  const int width = client.right - ::GetSystemMetrics(SM_CXVSCROLL);
  m_addressGrid.Initialise(width / kColumns, CurrentScreenScale().Height(kRowHeight),
                           LoadPrompts());
}

void CPagePrefill::StartWorker() {
  auto job = std::make_unique<PrefillJob>();
  job->pageWindow = Handle();
  job->progressWindow = Item(IDC_PREFILL_PROGRESS);
  job->client = Wizard().Link();
  job->stopEvent = m_stopEvent.Get();
  job->abandoned = &m_abandoned;
  job->unreadAddresses = &m_unreadAddresses;
  m_workerThread = StartPrefillWorker(std::move(job));
}

void CPagePrefill::StopWorker() {
  m_abandoned = true;
  if (m_stopEvent) {
    ::SetEvent(m_stopEvent.Get());
  }
  if (m_workerThread) {
    // A client that lives in this apartment must be able to answer the worker meanwhile, so
    // messages go on. Nothing may close the wizard a second time.
    const CPropertySheet::InputPause pause(Sheet());
    DWORD index = 0;
    HANDLE thread = m_workerThread.Get();
    if (FAILED(::CoWaitForMultipleHandles(0, INFINITE, 1, &thread, &index))) {
      ::WaitForSingleObject(thread, INFINITE);
    }
    m_workerThread.Reset();
  }
  m_stopEvent.Reset();
}

void CPagePrefill::OnReset() {
  StopWorker();
}

LRESULT CPagePrefill::HandleDestroy(const MessageArgs& args) {
  StopWorker();
  DropPostedTexts(Handle(), kPrefillAddress);
  return Default(args);
}

void CPagePrefill::ShowFinished(uint32_t finished) {
  m_finished = finished;
  for (const int id : kRunningControls) {
    ::ShowWindow(Item(id), finished == 0 ? SW_SHOW : SW_HIDE);
  }
  for (const int id : kFinishedControls) {
    ::ShowWindow(Item(id), finished == 0 ? SW_HIDE : SW_SHOW);
  }
  SetButtonMask(finished != 0 ? kBackAndNext : 0);
}

LRESULT CPagePrefill::HandleRange(const MessageArgs& args) {
  SetProgressRange(Item(IDC_PREFILL_PROGRESS), static_cast<int32_t>(args.lParam));
  return 0;
}

LRESULT CPagePrefill::HandleAdvance(const MessageArgs& args) {
  AdvanceProgress(Item(IDC_PREFILL_PROGRESS), static_cast<int32_t>(args.lParam));
  return 0;
}

LRESULT CPagePrefill::HandleAddress(const MessageArgs& args) {
  --m_unreadAddresses;
  const Bstr address(reinterpret_cast<BSTR>(args.wParam));
  if (address) {
    m_addressGrid.AddAddress(std::wstring(address.Get(), ::SysStringLen(address.Get())));
  }
  return 0;
}

LRESULT CPagePrefill::HandleFinished(const MessageArgs& args) {
  ShowFinished(static_cast<uint32_t>(args.lParam));
  // The button that had it is gone, or the system has moved it on to Cancel.
  FocusGrid();
  return 0;
}

LRESULT CPagePrefill::HandleStop(const MessageArgs& /*args*/) {
  ::SetEvent(m_stopEvent.Get());
  ::EnableWindow(Item(IDC_PREFILL_STOP), FALSE);
  return 0;
}

LRESULT CPagePrefill::HandleAdd(const MessageArgs& /*args*/) {
  FocusGrid();
  m_addressGrid.BeginNewRow();
  return 0;
}

LRESULT CPagePrefill::HandleRemove(const MessageArgs& /*args*/) {
  UpdateData(true);
  m_addressGrid.ClearEditState();
  m_addressGrid.RemoveSelected();
  FocusGrid();
  return 0;
}

void CPagePrefill::FocusGrid() const {
  // Not with SetFocus, which would leave the dialog's default button as it was.
  Send(WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(m_addressGrid.Handle()), TRUE);
}

LRESULT CPagePrefill::HandleItemChanged(const MessageArgs& /*args*/) {
  const bool any = ::SendMessageW(m_addressGrid.Handle(), LVM_GETSELECTEDCOUNT, 0, 0) != 0;
  const HWND button = Item(IDC_REMOVE_ADDRESS);
  if (any != (::IsWindowEnabled(button) != FALSE)) {
    ::EnableWindow(button, any ? TRUE : FALSE);
  }
  return 0;
}

// The grid passes the keys of its commands on; buttons keep theirs.
bool CPagePrefill::PreTranslate(const MSG& message) {
  const auto isDown = [](int key) { return ::GetKeyState(key) < 0; };
  const bool isCommandKey = message.message == WM_KEYUP &&
                            (message.wParam == VK_INSERT || message.wParam == VK_DELETE) &&
                            !isDown(VK_CONTROL) && !isDown(VK_SHIFT) && !isDown(VK_MENU);
  if (!isCommandKey || m_finished == 0 || ::GetParent(message.hwnd) != Handle() ||
      message.hwnd == m_addressGrid.Handle()) {
    return false;
  }
  Send(message.message, message.wParam, message.lParam);
  return true;
}

LRESULT CPagePrefill::HandleKeyUp(const MessageArgs& args) {
  const int command = args.wParam == VK_INSERT   ? IDC_ADD_ADDRESS
                      : args.wParam == VK_DELETE ? IDC_REMOVE_ADDRESS
                                                 : 0;
  if (command == 0) {
    return Default(args);
  }
  if (!m_addressGrid.IsEditing()) {
    ::PostMessageW(Handle(), WM_COMMAND, MAKEWPARAM(command, BN_CLICKED), 0);
  }
  return 0;
}

LRESULT CPagePrefill::HandleDrawItem(const MessageArgs& args) {
  return m_addressGrid.DrawItem(args);
}

LRESULT CPagePrefill::HandleMeasureItem(const MessageArgs& args) {
  return m_addressGrid.MeasureItem(args);
}

bool CPagePrefill::OnKillActive() {
  if (m_finished == 0 || m_addressGrid.IsEditing()) {
    return false;
  }
  AddressSet& addresses = Wizard().Request().prefillAddresses;
  addresses.clear();
  m_addressGrid.ReadAddresses(&addresses);
  return CPageWizardDefault::OnKillActive();
}

}  // namespace postmarker
