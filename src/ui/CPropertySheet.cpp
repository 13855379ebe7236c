#include "ui/CPropertySheet.h"

#include <algorithm>
#include <utility>

#include "support/UniqueHandle.h"
#include "ui/CWinApp.h"
#include "ui/ThreadState.h"

namespace postmarker {
namespace {

constexpr INT_PTR kFinishCode = 12325;  // ID_WIZFINISH
constexpr INT_PTR kFailed = -1;

constexpr int kBackButton = 12323;
constexpr int kNextButton = 12324;
constexpr int kFinishButton = 12325;

constexpr UINT kOwnerWatchMs = 250;

// What a dialog takes before its controls do. Everything else goes straight to its window, as
// asking the sheet costs more than most messages do, and thousands may stand in the queue.
bool IsInput(UINT message) {
  return (message >= WM_KEYFIRST && message <= WM_KEYLAST) ||
         (message >= WM_MOUSEFIRST && message <= WM_MOUSELAST) ||
         (message >= WM_NCMOUSEMOVE && message <= WM_NCXBUTTONDBLCLK);
}

// What presses a button of the sheet or closes it.
bool IsPress(const MessageArgs& args) {
  return args.message == WM_COMMAND || args.message == WM_CLOSE ||
         args.message == PSM_PRESSBUTTON ||
         (args.message == WM_SYSCOMMAND && (args.wParam & 0xFFF0) == SC_CLOSE);
}

// The owner's end sends no message to a sheet of another thread. A timer wakes the modal loop,
// which looks.
class OwnerWatch {
 public:
  explicit OwnerWatch(HWND owner) {
    if (owner != nullptr && ::GetWindowThreadProcessId(owner, nullptr) != ::GetCurrentThreadId()) {
      m_timer = ::SetTimer(nullptr, 0, kOwnerWatchMs, nullptr);
    }
  }
  OwnerWatch(const OwnerWatch&) = delete;
  OwnerWatch& operator=(const OwnerWatch&) = delete;
  ~OwnerWatch() {
    if (m_timer != 0) {
      ::KillTimer(nullptr, m_timer);
    }
  }

 private:
  UINT_PTR m_timer = 0;
};

}  // namespace

const MessageEntry CPropertySheet::kEntries[] = {
    OnMessage(WM_INITDIALOG, &CPropertySheet::HandleInitDialog),
};
const MessageTable CPropertySheet::kMessages = {&CWnd::kMessages, CPropertySheet::kEntries};

CPropertySheet::CPropertySheet(std::wstring caption, HWND owner, UINT firstPage)
    : m_caption(std::move(caption)),
      m_owner(owner != nullptr ? ::GetAncestor(owner, GA_ROOT) : nullptr),
      m_firstPage(firstPage) {}

void CPropertySheet::AddPage(CPropertyPage* page) {
  page->m_sheet = this;
  m_pages.push_back(page);
}

bool CPropertySheet::TemplatesExist() const {
  return !m_pages.empty() && std::all_of(m_pages.begin(), m_pages.end(), [](const auto* page) {
    return HasDialogTemplate(page->TemplateId());
  });
}

bool CPropertySheet::CreateSheet() {
  std::vector<HPROPSHEETPAGE> handles;
  for (CPropertyPage* page : m_pages) {
    const PROPSHEETPAGEW description = page->Description();
    handles.push_back(::CreatePropertySheetPageW(&description));
  }
  PROPSHEETHEADERW header = {};
  header.dwSize = sizeof(header);
  header.dwFlags = PSH_WIZARD | PSH_MODELESS;
  header.hwndParent = m_owner;
  header.hInstance = AfxGetResourceHandle();
  header.pszCaption = m_caption.c_str();
  header.nPages = static_cast<UINT>(handles.size());
  header.nStartPage = m_firstPage;
  header.phpage = handles.data();
  const CreationHook hook(this);
  const INT_PTR made = ::PropertySheetW(&header);
  return made > 0 && Handle() != nullptr;
}

INT_PTR CPropertySheet::DoModal() {
  // Without this look the system shows an empty sheet that can't be told from a real one.
  if (!TemplatesExist()) {
    return kFailed;
  }
  const bool ownerWasEnabled = m_owner != nullptr && ::IsWindowEnabled(m_owner);
  const ScopeExit end([this, ownerWasEnabled] {
    // The owner is enabled before the sheet goes, or another program's window would come to the
    // front.
    if (ownerWasEnabled) {
      ::EnableWindow(m_owner, TRUE);
    }
    if (Handle() != nullptr) {
      ::DestroyWindow(Handle());
    }
  });
  // Before the sheet shows: there is no moment in which both take input.
  if (ownerWasEnabled) {
    ::EnableWindow(m_owner, FALSE);
  }
  if (!CreateSheet()) {
    return kFailed;
  }
  ::ShowWindow(Handle(), SW_SHOW);
  return RunModalLoop();
}

bool CPropertySheet::IsOpen() const {
  return Handle() != nullptr && Send(PSM_GETCURRENTPAGEHWND) != 0;
}

// The page in front sees input before the sheet does, and the sheet before the controls.
bool CPropertySheet::TakesInput(MSG* message) const {
  if (Handle() == nullptr || !IsInput(message->message)) {
    return false;
  }
  const auto window = reinterpret_cast<HWND>(Send(PSM_GETCURRENTPAGEHWND));
  auto* const page = dynamic_cast<CPropertyPage*>(CWnd::FromHandle(window));
  const bool isForPage =
      page != nullptr && (message->hwnd == window || ::IsChild(window, message->hwnd) != FALSE);
  return (isForPage && page->PreTranslate(*message)) ||
         Send(PSM_ISDIALOGMESSAGE, 0, reinterpret_cast<LPARAM>(message)) != 0;
}

INT_PTR CPropertySheet::RunModalLoop() {
  ThreadState* const state = ThreadState::Current();
  const OwnerWatch watch(m_owner);
  while (!std::exchange(m_mayHaveEnded, false) || IsOpen()) {
    if (m_owner != nullptr && !::IsWindow(m_owner)) {
      return IDCANCEL;
    }
    MSG message = {};
    const BOOL got = ::GetMessageW(&message, nullptr, 0, 0);
    if (got < 0) {
      return kFailed;
    }
    if (got == 0) {
      // The host's own loop must see it as well.
      ::PostQuitMessage(static_cast<int>(message.wParam));
      return IDCANCEL;
    }
    if (!TakesInput(&message)) {
      ::TranslateMessage(&message);
      ::DispatchMessageW(&message);
    }
    state->RethrowException();
  }
  const bool finished = Handle() != nullptr && Send(PSM_GETRESULT) > 0;
  return finished ? kFinishCode : IDCANCEL;
}

bool CPropertySheet::OnInitDialog() {
  CenterWindow(Handle(), m_owner);
  return true;
}

LRESULT CPropertySheet::HandleInitDialog(const MessageArgs& args) {
  Default(args);
  return OnInitDialog() ? TRUE : FALSE;
}

// The button that had the focus may have been disabled or hidden by a change of the buttons.
// Without a focus no key reaches the sheet.
void CPropertySheet::EnsureFocus() const {
  const HWND focus = ::GetFocus();
  if (::GetActiveWindow() != Handle() || (focus != nullptr && focus != Handle() &&
                                          ::IsWindowVisible(focus) && ::IsWindowEnabled(focus))) {
    return;
  }
  const auto page = reinterpret_cast<HWND>(Send(PSM_GETCURRENTPAGEHWND));
  HWND target = page != nullptr ? ::GetNextDlgTabItem(page, nullptr, FALSE) : nullptr;
  for (const int id : {kFinishButton, kNextButton, kBackButton, IDCANCEL}) {
    if (target != nullptr && ::IsWindowVisible(target) && ::IsWindowEnabled(target)) {
      break;
    }
    target = Item(id);
  }
  Send(WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(target), TRUE);
}

LRESULT CPropertySheet::WindowProc(const MessageArgs& args) {
  if (m_pauses > 0 && IsPress(args)) {
    return 0;
  }
  if (m_pauses > 0 && args.message == WM_SETCURSOR) {
    ::SetCursor(WaitCursor());
    return TRUE;
  }
  const LRESULT result = CWnd::WindowProc(args);
  if (args.message == PSM_SETWIZBUTTONS) {
    EnsureFocus();
  }
  const bool mayEnd = args.message == WM_COMMAND || args.message == WM_CLOSE ||
                      args.message == WM_SYSCOMMAND || args.message == PSM_PRESSBUTTON ||
                      args.message == WM_NCDESTROY;
  m_mayHaveEnded = m_mayHaveEnded || mayEnd;
  // A message sent by another thread is handled within GetMessage, which then goes on waiting: wake
  // the loop.
  if (mayEnd && !IsOpen()) {
    ::PostThreadMessageW(::GetCurrentThreadId(), WM_NULL, 0, 0);
  }
  return result;
}

CPropertySheet::InputPause::InputPause(CPropertySheet* sheet) : m_sheet(sheet) {
  if (m_sheet == nullptr || m_sheet->m_pauses++ > 0) {
    return;
  }
  m_wasForeground = ::GetForegroundWindow() == m_sheet->Handle();
  ::EnableWindow(m_sheet->Handle(), FALSE);
}

CPropertySheet::InputPause::~InputPause() {
  if (m_sheet == nullptr || --m_sheet->m_pauses > 0) {
    return;
  }
  ::EnableWindow(m_sheet->Handle(), TRUE);
  // A message box that closed over a disabled sheet has let another window come to the front.
  if (m_wasForeground && ::GetForegroundWindow() != m_sheet->Handle()) {
    ::SetForegroundWindow(m_sheet->Handle());
  }
}

void CenterWindow(HWND window, HWND over) {
  RECT area = {};
  if (over != nullptr && ::IsWindowVisible(over) && !::IsIconic(over)) {
    ::GetWindowRect(over, &area);
  } else {
    ::SystemParametersInfoW(SPI_GETWORKAREA, 0, &area, 0);
  }
  RECT work = {};
  ::SystemParametersInfoW(SPI_GETWORKAREA, 0, &work, 0);
  RECT rect = {};
  ::GetWindowRect(window, &rect);
  const LONG width = rect.right - rect.left;
  const LONG height = rect.bottom - rect.top;
  const LONG left = area.left + (area.right - area.left - width) / 2;
  const LONG top = area.top + (area.bottom - area.top - height) / 2;
  // A window that is larger than the screen keeps its caption reachable.
  const LONG x = std::max(work.left, std::min(left, work.right - width));
  const LONG y = std::max(work.top, std::min(top, work.bottom - height));
  ::SetWindowPos(window, nullptr, x, y, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

}  // namespace postmarker
