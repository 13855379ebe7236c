#include "wizard/CWizardSheet_win.h"

#include "clients/ClientDetection.h"
#include "clients/ClientTable.h"
#include "resource.h"
#include "settings/GlobalSettings.h"
#include "support/Bstr_win.h"
#include "ui/CWinApp.h"
#include "wizard/Banner_win.h"
#include "wizard/CPageChooseClient_win.h"
#include "wizard/CPageChooseSpamFolder_win.h"
#include "wizard/CPagePrefill_win.h"
#include "wizard/CPageSettings_win.h"
#include "wizard/CPageTrainEmails_win.h"
#include "wizard/CPageWizard_win.h"
#include "wizard/Colors_win.h"
#include "wizard/FinishRun_win.h"
#include "wizard/SpamFolderChoice_win.h"
#include "wizard/WindowHook_win.h"
#include "wizard/WorkerMap_win.h"

namespace postmarker {
namespace {

constexpr UINT kHelpLinkMessage = 0x6A9;  // WM_KS_HELP_LINK
constexpr wchar_t kHelpLinkProperty[] = L"KSHelpLink";
constexpr int kHelpLinkNumber = 4;
constexpr wchar_t kHelpTopic[] = L"Configure";

// An empty record as a sheet has it that was given none. Deliberate: such a sheet is hooked.
WizardRequest EmptyRequest() {
  WizardRequest request;
  request.useWindowHook = 1;
  return request;
}

}  // namespace

const MessageEntry CWizardSheet::kEntries[] = {
    OnMessage(WM_NCCREATE, &CWizardSheet::HandleNcCreate),
    OnMessage(WM_DESTROY, &CWizardSheet::HandleDestroy),
    OnMessage(kHelpLinkMessage, &CWizardSheet::HandleHelpLink),
    OnMessage(WM_CTLCOLORDLG, &CWizardSheet::HandleColor),
    OnMessage(WM_CTLCOLORBTN, &CWizardSheet::HandleColor),
    OnMessage(WM_CTLCOLOREDIT, &CWizardSheet::HandleColor),
    OnMessage(WM_CTLCOLORLISTBOX, &CWizardSheet::HandleColor),
    OnMessage(WM_CTLCOLORSTATIC, &CWizardSheet::HandleColor),
};
const MessageTable CWizardSheet::kMessages = {&CPropertySheet::kMessages, CWizardSheet::kEntries};

CWizardSheet::CWizardSheet(const std::wstring& caption, WizardRequest* request, HWND owner,
                           UINT firstPage)
    : CPropertySheet(caption, owner, firstPage),
      m_apartment(std::make_unique<ComApartment>()),
      m_hasRequest(request != nullptr),
      m_ownRequest(EmptyRequest()),
      m_request(request != nullptr ? request : &m_ownRequest),
      m_client(this, m_request) {
  WorkerMap.Enter(this);
  AddPages();
}

CWizardSheet::CWizardSheet(UINT captionId, WizardRequest* request, HWND owner, UINT firstPage)
    : CWizardSheet(LoadText(captionId), request, owner, firstPage) {}

CWizardSheet::~CWizardSheet() {
  // From here on a running worker leaves the sheet alone.
  WorkerMap.Erase(this);
  m_settingsPage.reset();
  m_trainPageSecond.reset();
  m_trainPageFirst.reset();
  m_prefillPage.reset();
  m_folderPage.reset();
  m_clientPage.reset();
  m_welcomePage.reset();
  if (m_hookOwner) {
    EndWindowHook();
  }
}

void CWizardSheet::AddPages() {
  m_welcomePage = std::make_unique<CPageWizard>(this);
  m_clientPage = std::make_unique<CPageChooseClient>(this);
  m_folderPage = std::make_unique<CPageChooseSpamFolder>(this);
  m_prefillPage = std::make_unique<CPagePrefill>(this);
  m_trainPageFirst = std::make_unique<CPageTrainEmails>(this, 1);
  m_trainPageSecond = std::make_unique<CPageTrainEmails>(this, 0);
  m_settingsPage = std::make_unique<CPageSettings>(this);
  AddPage(m_welcomePage.get());
  if (m_request->clientName.empty()) {
    AddPage(m_clientPage.get());
  }
  AddPage(m_folderPage.get());
  AddPage(m_prefillPage.get());
  if (m_request->offerTraining != 0) {
    AddPage(m_trainPageFirst.get());
    AddPage(m_trainPageSecond.get());
  }
  AddPage(m_settingsPage.get());
}

bool CWizardSheet::IsClientInstalled(const std::wstring& name) const {
  return postmarker::IsClientInstalled(name);
}

bool CWizardSheet::IsClientSupported(const std::wstring& name) const {
  return postmarker::IsClientSupported(name);
}

bool CWizardSheet::IsClientReady(const std::wstring& name) const {
  return postmarker::IsClientReady(name);
}

std::wstring CWizardSheet::GetClientSettingsName() const {
  return ClientSettingsName(m_request->clientName);
}

ResultCode CWizardSheet::ChooseClient(const std::wstring& name) {
  if (!m_hasRequest) {
    return kNullPointer;
  }
  m_request->clientName = name;
  // At once and not at Finish, so that the next run begins with the client that this one was for.
  (void)SetActionPlugin(name);
  return kOk;
}

bool CWizardSheet::CanCreateFolder() const {
  return Client().adapter->CanCreateFolder();
}

ResultCode CWizardSheet::CreateFolder(const std::wstring& name, const MailFolderRef& parent,
                                      MailFolderRef* rec) {
  return m_hasRequest ? m_client.CreateFolder(name, parent, rec) : kFail;
}

void CWizardSheet::StartFolderWorker() {
  if (m_hasRequest) {
    m_client.StartFolderWorker();
  }
}

bool CWizardSheet::AreFoldersReady() const {
  return !m_hasRequest || m_client.AreFoldersReady();
}

void CWizardSheet::GetFolders(MailFolderList* list) {
  if (m_hasRequest) {
    m_client.GetFolders(list);
  }
}

void CWizardSheet::GetDefaultFolder(MailFolderRef* rec) {
  if (m_hasRequest) {
    m_client.GetDefaultFolder(rec);
  }
}

ResultCode CWizardSheet::LoadConfiguredSpamFolder(MailFolderRef* rec) {
  if (!m_hasRequest) {
    return kFail;
  }
  *rec = ReadConfiguredSpamFolder(this);
  return kOk;
}

ResultCode CWizardSheet::SetSpamFolder(const MailFolderRef& rec) {
  if (!m_hasRequest) {
    return kFail;
  }
  TakeSpamFolder(this, rec);
  return kOk;
}

ResultCode CWizardSheet::ApplySettings() {
  if (m_hasRequest) {
    (void)FinishRun(*m_request, Client(), GetClientSettingsName(), Caption()).Run();
  }
  return kOk;
}

ResultCode CWizardSheet::CollectSentAddresses(const WizardRequest* request,
                                              const ProgressCallbacks* callbacks,
                                              AddressSet* addresses) const {
  if (request == nullptr) {
    return kNullPointer;
  }
  const ClientLink client = {FindClient(request->clientName)->adapter, Link().hold};
  return client.CollectSentAddresses(callbacks, {}, addresses);
}

HBITMAP CWizardSheet::BannerBitmap(SIZE size) {
  if (!m_bannerBitmap) {
    m_bannerBitmap = LoadBanner(size);
  }
  return m_bannerBitmap.Get();
}

LRESULT CWizardSheet::HandleNcCreate(const MessageArgs& args) {
  const LRESULT result = Default(args);
  if (result == FALSE) {
    return result;
  }
  m_request->sheetWindow = Handle();
  if (m_request->useWindowHook != 0) {
    m_hookOwner = BeginWindowHook(Handle());
  }
  return result;
}

bool CWizardSheet::OnInitDialog() {
  CPropertySheet::OnInitDialog();
  for (const WPARAM kind : {ICON_SMALL, ICON_BIG}) {
    const bool isSmall = kind == ICON_SMALL;
    const HANDLE icon =
        ::LoadImageW(AfxGetResourceHandle(), MAKEINTRESOURCEW(IDI_POSTMARKER), IMAGE_ICON,
                     ::GetSystemMetrics(isSmall ? SM_CXSMICON : SM_CXICON),
                     ::GetSystemMetrics(isSmall ? SM_CYSMICON : SM_CYICON), LR_SHARED);
    Send(WM_SETICON, kind, reinterpret_cast<LPARAM>(icon));
  }
  SetSkinnedCaption(Handle(), LoadText(IDS_SHEET_CAPTION), false);
  SetHelpLink(kHelpLinkNumber, kHelpTopic);
  return true;
}

void CWizardSheet::SetHelpLink(int number, const wchar_t* topic) {
  const Bstr former(static_cast<BSTR>(::RemovePropW(Handle(), kHelpLinkProperty)));
  LRESULT answer = 0;
  if (const HWND owner = ::GetAncestor(Handle(), GA_ROOTOWNER)) {
    // The receiver owns the topic, and the answer is ours.
    answer = ::SendMessageW(owner, kHelpLinkMessage, static_cast<WPARAM>(number),
                            reinterpret_cast<LPARAM>(MakeBstr(topic).Release()));
  }
  ::SetPropW(Handle(), kHelpLinkProperty, reinterpret_cast<HANDLE>(answer));
}

LRESULT CWizardSheet::HandleHelpLink(const MessageArgs& args) {
  // A sheet without an owner is its own root owner, and gets the topic itself.
  const Bstr topic(reinterpret_cast<BSTR>(args.lParam));
  return 0;
}

LRESULT CWizardSheet::HandleDestroy(const MessageArgs& args) {
  const Bstr helpLink(static_cast<BSTR>(::RemovePropW(Handle(), kHelpLinkProperty)));
  m_request->sheetWindow = nullptr;
  return Default(args);
}

LRESULT CWizardSheet::HandleColor(const MessageArgs& args) {
  return ColorForControl(args);
}

}  // namespace postmarker
