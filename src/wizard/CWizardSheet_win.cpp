#include "wizard/CWizardSheet_win.h"

#include <mutex>
#include <utility>

#include "clients/ClientDetection.h"
#include "clients/ClientTable.h"
#include "resource.h"
#include "support/Bstr_win.h"
#include "support/DeviceContext_win.h"
#include "support/ModuleReference_win.h"
#include "ui/CWinApp.h"
#include "wizard/CPageChooseClient_win.h"
#include "wizard/CPageChooseSpamFolder_win.h"
#include "wizard/CPagePrefill_win.h"
#include "wizard/CPageSettings_win.h"
#include "wizard/CPageWizard_win.h"
#include "wizard/Colors_win.h"
#include "wizard/WindowHook_win.h"
#include "wizard/WorkerMap_win.h"

namespace postmarker {
namespace {

constexpr UINT kHelpLinkMessage = 0x6A9;  // WM_KS_HELP_LINK
constexpr wchar_t kHelpLinkProperty[] = L"KSHelpLink";
constexpr int kHelpLinkNumber = 4;
constexpr wchar_t kHelpTopic[] = L"Configure";

// A copy of a picture in another size.
BitmapHandle ScaleBitmap(HBITMAP picture, SIZE size) {
  BITMAP info = {};
  ::GetObjectW(picture, sizeof(info), &info);
  const WindowDc screen(nullptr);
  BitmapHandle scaled(::CreateCompatibleBitmap(screen.Get(), size.cx, size.cy));
  const MemoryDc from(::CreateCompatibleDC(screen.Get()));
  const MemoryDc to(::CreateCompatibleDC(screen.Get()));
  const ObjectSelection fromSelection(from.Get(), picture);
  const ObjectSelection toSelection(to.Get(), scaled.Get());
  ::SetStretchBltMode(to.Get(), HALFTONE);
  ::SetBrushOrgEx(to.Get(), 0, 0, nullptr);
  ::StretchBlt(to.Get(), 0, 0, size.cx, size.cy, from.Get(), 0, 0, info.bmWidth, info.bmHeight,
               SRCCOPY);
  return scaled;
}

}  // namespace

const MessageEntry CWizardSheet::kEntries[] = {
    OnMessage(WM_NCCREATE, &CWizardSheet::HandleNcCreate),
    OnMessage(WM_DESTROY, &CWizardSheet::HandleDestroy),
    OnMessage(WM_CTLCOLORDLG, &CWizardSheet::HandleColor),
    OnMessage(WM_CTLCOLORBTN, &CWizardSheet::HandleColor),
    OnMessage(WM_CTLCOLOREDIT, &CWizardSheet::HandleColor),
    OnMessage(WM_CTLCOLORLISTBOX, &CWizardSheet::HandleColor),
    OnMessage(WM_CTLCOLORSTATIC, &CWizardSheet::HandleColor),
};
const MessageTable CWizardSheet::kMessages = {&CPropertySheet::kMessages, CWizardSheet::kEntries};

CWizardSheet::CWizardSheet(const std::wstring& caption, WizardRequest* request, HWND owner,
                           UINT firstPage)
    : CPropertySheet(caption, owner, firstPage), m_request(request) {
  WorkerMap.Enter(this);
  AddPages();
  m_apartment = std::make_unique<ComApartment>();
}

CWizardSheet::CWizardSheet(UINT captionId, WizardRequest* request, HWND owner, UINT firstPage)
    : CWizardSheet(LoadText(captionId), request, owner, firstPage) {}

CWizardSheet::~CWizardSheet() {
  // From here on a running worker leaves the sheet alone.
  WorkerMap.Erase(this);
  m_settingsPage.reset();
  m_prefillPage.reset();
  m_folderPage.reset();
  m_clientPage.reset();
  m_welcomePage.reset();
  if (m_hookOwner) {
    EndWindowHook();
  }
  // The worker is not waited for: it holds the module itself and may be busy for long.
  m_workerThread.Reset();
  if (m_clientHold) {
    // A worker that is still busy keeps the object, but not the client.
    m_clientHold->Disconnect();
  }
  m_defaultFolder.reset();
  m_apartment.reset();
}

void CWizardSheet::AddPages() {
  m_welcomePage = std::make_unique<CPageWizard>();
  m_clientPage = std::make_unique<CPageChooseClient>();
  m_folderPage = std::make_unique<CPageChooseSpamFolder>();
  m_prefillPage = std::make_unique<CPagePrefill>();
  m_settingsPage = std::make_unique<CPageSettings>();
  AddPage(m_welcomePage.get());
  if (m_request == nullptr || m_request->clientName.empty()) {
    AddPage(m_clientPage.get());
  }
  AddPage(m_folderPage.get());
  AddPage(m_prefillPage.get());
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

const ClientRow& CWizardSheet::Client() const {
  return *FindClient(m_request != nullptr ? std::wstring_view(m_request->clientName)
                                          : std::wstring_view());
}

std::wstring CWizardSheet::GetClientSettingsName() const {
  return m_request != nullptr ? ClientSettingsName(m_request->clientName) : std::wstring();
}

bool CWizardSheet::CanCreateFolder() const {
  return Client().adapter->CanCreateFolder();
}

ClientHold* CWizardSheet::MakeHoldOnce() {
  if (!m_clientHold && m_request != nullptr) {
    m_clientHold = Client().adapter->MakeHold(m_request);
  }
  return m_clientHold.get();
}

ClientLink CWizardSheet::Link() const {
  return {Client().adapter, m_clientHold};
}

ResultCode CWizardSheet::EnsureOutlookSession() {
  ClientHold* const hold = MakeHoldOnce();
  return hold != nullptr ? hold->EnsureSession() : kOk;
}

void CWizardSheet::PrepareClient() {
  if (ClientHold* const hold = MakeHoldOnce()) {
    hold->Connect();
  }
}

void CWizardSheet::StartFolderWorker() {
  if (m_workerThread || m_request == nullptr) {
    return;
  }
  PrepareClient();
  auto start = std::make_unique<FolderWorkerStart>();
  start->sheet = this;
  start->receiver = this;
  start->client = Link();
  // Taken here and not by the thread, which might first run when the host has unloaded the module.
  start->module = ReferToThisModule();
  m_workerThread = CreateFolderWorker(start.get());
  if (!m_workerThread) {
    return;
  }
  FolderWorkerStart* const owned = start.release();
  owned->number = WorkerMap.SetWorker(this, reinterpret_cast<intptr_t>(m_workerThread.Get()));
  ::ResumeThread(m_workerThread.Get());
}

void CWizardSheet::ReceiveFolders(MailFolderList folders,
                                  std::unique_ptr<MailFolderRef> defaultFolder) {
  m_defaultFolder = std::move(defaultFolder);
  const std::lock_guard lock(FolderLock);
  m_request->folders = std::move(folders);
}

bool CWizardSheet::AreFoldersReady() const {
  if (m_request == nullptr) {
    return true;
  }
  if (m_workerThread && ::WaitForSingleObject(m_workerThread.Get(), 0) == WAIT_OBJECT_0) {
    return true;
  }
  const std::lock_guard lock(FolderLock);
  return !m_request->folders.empty();
}

void CWizardSheet::GetFolders(MailFolderList* list) {
  if (m_request == nullptr) {
    return;
  }
  if (!AreFoldersReady()) {
    PrepareClient();
    MailFolderList folders;
    Client().adapter->ListFolders(Link().OpenSession({}), &folders);
    const std::lock_guard lock(FolderLock);
    m_request->folders = std::move(folders);
  }
  const std::lock_guard lock(FolderLock);
  *list = m_request->folders;
}

void CWizardSheet::GetDefaultFolder(MailFolderRef* rec) {
  if (m_request == nullptr) {
    return;
  }
  if (m_defaultFolder) {
    *rec = *m_defaultFolder;
    return;
  }
  MailFolderList folders;
  GetFolders(&folders);
  (void)EnsureOutlookSession();
  m_defaultFolder = std::make_unique<MailFolderRef>(
      Client().adapter->FindDefaultFolder(Link().OpenSession({}), folders));
}

ResultCode CWizardSheet::CreateFolder(const std::wstring& name, const MailFolderRef& parent,
                                      MailFolderRef* rec) {
  if (m_request == nullptr) {
    return kFail;
  }
  // Deliberate: without a session the adapter is passed over and an empty record goes on.
  if (Succeeded(EnsureOutlookSession())) {
    const ResultCode result =
        Client().adapter->CreateFolder(Link().OpenSession({}), name, parent, rec);
    if (Failed(result)) {
      return result;
    }
  }
  m_request->spamFolder = *rec;
  const std::lock_guard lock(FolderLock);
  m_request->folders.push_back(*rec);
  return kOk;
}

ResultCode CWizardSheet::CollectSentAddresses(const WizardRequest* request,
                                              const ProgressCallbacks* callbacks,
                                              AddressSet* addresses) const {
  if (request == nullptr) {
    return kNullPointer;
  }
  const ClientLink client = {FindClient(request->clientName)->adapter, m_clientHold};
  return client.CollectSentAddresses(callbacks, {}, addresses);
}

HBITMAP CWizardSheet::BannerBitmap(SIZE size) {
  if (!m_bannerBitmap) {
    const BitmapHandle picture(
        static_cast<HBITMAP>(::LoadImageW(AfxGetResourceHandle(), MAKEINTRESOURCEW(IDB_BANNER),
                                          IMAGE_BITMAP, 0, 0, LR_CREATEDIBSECTION)));
    if (picture && size.cx > 0 && size.cy > 0) {
      m_bannerBitmap = ScaleBitmap(picture.Get(), size);
    }
  }
  return m_bannerBitmap.Get();
}

LRESULT CWizardSheet::HandleNcCreate(const MessageArgs& args) {
  const LRESULT result = Default(args);
  if (result == FALSE) {
    return result;
  }
  if (m_request != nullptr) {
    m_request->sheetWindow = Handle();
  }
  if (m_request == nullptr || m_request->useWindowHook != 0) {
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

LRESULT CWizardSheet::HandleDestroy(const MessageArgs& args) {
  const Bstr helpLink(static_cast<BSTR>(::RemovePropW(Handle(), kHelpLinkProperty)));
  if (m_request != nullptr) {
    m_request->sheetWindow = nullptr;
  }
  return Default(args);
}

LRESULT CWizardSheet::HandleColor(const MessageArgs& args) {
  return ColorForControl(args);
}

}  // namespace postmarker
