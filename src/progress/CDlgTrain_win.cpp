#include "progress/CDlgTrain_win.h"

#include <string>
#include <utility>
#include <vector>

#include "progress/SupportLinks.h"
#include "resource.h"
#include "ui/CWinApp.h"
#include "wizard/Banner_win.h"
#include "wizard/HeadingFont_win.h"
#include "wizard/WindowHook_win.h"

namespace postmarker {
namespace {

// Posted by the worker: the target of the link with this number is known.
constexpr UINT kLinkKnown = WM_USER + 10;

// A page of the suite's web site: where the link leads, and what is shown of it.
struct SupportPage {
  const wchar_t* path;
  const wchar_t* shown;
};
constexpr SupportPage kPages[] = {{L"/support/spamfilter.aspx", L"/support/spamfilter"},
                                  {L"/support", L"/support"}};

// On white, as all of the window is.
constexpr COLORREF kLinkColor = RGB(0, 0, 192);

constexpr int kRunningControls[] = {IDC_PROGRESS_BODY, IDC_PROGRESS_NOTE, IDC_PROGRESS_TEXT,
                                    IDC_PROGRESS_BAR, IDC_PROGRESS_STOP};
constexpr int kFinishedControls[] = {IDC_PROGRESS_HELP, IDC_SUPPORT_LABEL, IDC_SUPPORT_LINK,
                                     IDC_SECOND_LABEL, IDC_SECOND_LINK};

}  // namespace

const MessageEntry CDlgTrain::kEntries[] = {
    OnMessage(kProgressEnd, &CDlgTrain::HandleEnd),
    OnMessage(kLinkKnown, &CDlgTrain::HandleLink),
    OnCommand(IDC_PROGRESS_STOP, &CDlgTrain::HandleStop),
    OnCommand(IDC_PROGRESS_CLOSE, &CDlgTrain::HandleClose),
};
const MessageTable CDlgTrain::kMessages = {&CDlgProgressBase::kMessages, CDlgTrain::kEntries};

CDlgTrain::CDlgTrain(ProgressHandle* handle, const AccountToolsRoute& route)
    : CDlgProgressBase(handle, IDD_TRAIN, Hook::kAsHandleSays), m_route(route) {}

bool CDlgTrain::OnInitDialog() {
  CDlgProgressBase::OnInitDialog();
  // Not a shared one: the system may make it again for each window, and keep it.
  m_icon.Reset(static_cast<HICON>(
      ::LoadImageW(AfxGetResourceHandle(), MAKEINTRESOURCEW(IDI_POSTMARKER), IMAGE_ICON,
                   ::GetSystemMetrics(SM_CXSMICON), ::GetSystemMetrics(SM_CYSMICON), 0)));
  Send(WM_SETICON, ICON_SMALL, reinterpret_cast<LPARAM>(m_icon.Get()));
  SetSkinnedCaption(Handle(), LoadText(IDS_PROGRESS_CAPTION), true);
  SetStyles();
  MakeLinks();
  if (const HWND banner = Item(IDC_BANNER)) {
    RECT rect = {};
    ::GetClientRect(banner, &rect);
    m_banner = LoadBanner({rect.right, rect.bottom});
    ShowBanner(banner, m_banner.Get());
  }
  SetSkinnedButton(Item(IDC_PROGRESS_CLOSE));
  m_isReady = true;
  // The host can have sent the end ahead of all this.
  ShowFace();
  if (Progress().window == nullptr) {
    EndDialog(IDCANCEL);
  }
  return true;
}

void CDlgTrain::SetStyles() {
  m_headingFont = SetHeadingFont(Handle(), Item(IDC_PROGRESS_HEADING));
  SetSkinnedHeading(Item(IDC_PROGRESS_HEADING));
  for (const int id :
       {IDC_PROGRESS_BODY, IDC_PROGRESS_FINISHED, IDC_PROGRESS_STOPPED, IDC_PROGRESS_NOTE}) {
    SetSkinnedBody(Item(id));
  }
  SetSkinnedPlain(Item(IDC_PROGRESS_SEPARATOR));
}

void CDlgTrain::MakeLinks() {
  const std::wstring site = LoadText(IDS_SUPPORT_SITE);
  std::vector<std::wstring> addresses;
  for (const SupportPage& page : kPages) {
    addresses.push_back(L"https://" + site + page.path);
  }
  for (const auto& [link, id] :
       {std::pair(&m_supportLink, IDC_SUPPORT_LINK), std::pair(&m_secondLink, IDC_SECOND_LINK)}) {
    link->Attach(Item(id));
    link->SetTextColor(CXNamedColors(kLinkColor));
    link->SetBackColor(CXNamedColors(RGB(255, 255, 255)));
  }
  m_links.emplace(m_route, std::move(addresses), Handle(), kLinkKnown);
  ShowLink(0);
  ShowLink(1);
}

void CDlgTrain::ShowLink(size_t number) {
  const CXHTMLStatic& link = number == 0 ? m_supportLink : m_secondLink;
  if (link.Handle() != nullptr) {
    link.SetText(
        LinkMarkup(m_links->Target(number), LoadText(IDS_SUPPORT_SITE) + kPages[number].shown));
  }
}

void CDlgTrain::ShowFace() {
  const int shown = m_done ? SW_SHOW : SW_HIDE;
  for (const int id : kRunningControls) {
    ::ShowWindow(Item(id), m_done ? SW_HIDE : SW_SHOW);
  }
  for (const int id : kFinishedControls) {
    ::ShowWindow(Item(id), shown);
  }
  ::ShowWindow(Item(IDC_PROGRESS_FINISHED), m_stopped ? SW_HIDE : shown);
  ::ShowWindow(Item(IDC_PROGRESS_STOPPED), m_stopped ? shown : SW_HIDE);
  ::ShowWindow(Item(IDC_PROGRESS_CLOSE), SW_SHOW);
  ::EnableWindow(Item(IDC_PROGRESS_CLOSE), m_done ? TRUE : FALSE);
  FocusClose();
}

// The button that had the focus is hidden now. While the question is open, it keeps the focus.
void CDlgTrain::FocusClose() {
  if (m_done && Progress().window != nullptr && ::IsWindowEnabled(Handle())) {
    Send(WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(Item(IDC_PROGRESS_CLOSE)), TRUE);
  }
}

void CDlgTrain::Close() {
  if (m_done) {
    EndWith(IDOK);
  }
}

void CDlgTrain::OnOK() {
  Close();
}

void CDlgTrain::OnCancel() {
  if (m_done) {
    Progress().cancelled = 1;
    EndWith(IDCANCEL);
  } else if (ConfirmStop()) {
    Progress().cancelled = 1;
    PostToSelf(kProgressEnd, 1, 0);
  } else {
    FocusClose();
  }
}

LRESULT CDlgTrain::HandleEnd(const MessageArgs& args) {
  m_stopped = m_stopped || args.wParam != 0;
  m_done = true;
  if (m_isReady) {
    ShowFace();
  }
  if (args.lParam != 0) {
    Progress().cancelled = 1;
    EndWith(IDCANCEL);
  }
  if (IsAsking()) {
    // Wakes the loop of the question, which then looks whether there is something to ask.
    PostToSelf(WM_NULL, 0, 0);
  }
  return 0;
}

LRESULT CDlgTrain::HandleStop(const MessageArgs& /*args*/) {
  if (!m_done) {
    Progress().cancelled = 1;
    PostToSelf(kProgressEnd, 1, 0);
  }
  return 0;
}

LRESULT CDlgTrain::HandleClose(const MessageArgs& /*args*/) {
  Close();
  return 0;
}

LRESULT CDlgTrain::HandleLink(const MessageArgs& args) {
  if (m_links && args.wParam < std::size(kPages)) {
    ShowLink(args.wParam);
  }
  return 0;
}

}  // namespace postmarker
