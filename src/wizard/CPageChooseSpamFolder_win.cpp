#include "wizard/CPageChooseSpamFolder_win.h"

#include "resource.h"
#include "support/Results.h"
#include "ui/CWaitCursor.h"
#include "ui/CWinApp.h"
#include "wizard/Colors_win.h"
#include "wizard/FolderTreeControl_win.h"
#include "wizard/WizardServices_win.h"

namespace postmarker {
namespace {

constexpr UINT_PTR kStartTimer = 1;
constexpr UINT_PTR kPollTimer = 2;
constexpr UINT kTimerMs = 10;

// Other processes of the suite look for it while the client is being used.
KernelHandle CreateLaunchEvent() {
  return KernelHandle(::CreateEventW(nullptr, TRUE, TRUE, L"Global\\Kestrelon.LaunchProcess"));
}

}  // namespace

const MessageEntry CDlgAddNewFolder::kEntries[] = {
    OnMessage(WM_CTLCOLORDLG, &CDlgAddNewFolder::HandleColor),
    OnMessage(WM_CTLCOLOREDIT, &CDlgAddNewFolder::HandleColor),
    OnMessage(WM_CTLCOLORBTN, &CDlgAddNewFolder::HandleColor),
    OnMessage(WM_CTLCOLORSTATIC, &CDlgAddNewFolder::HandleColor),
};
const MessageTable CDlgAddNewFolder::kMessages = {&CDialog::kMessages, CDlgAddNewFolder::kEntries};

CDlgAddNewFolder::CDlgAddNewFolder(HWND owner) : CDialog(IDD_NEW_FOLDER, owner) {}

void CDlgAddNewFolder::DoDataExchange(const CDataExchange& exchange) {
  exchange.Text(IDC_NEW_FOLDER_NAME, &m_folderName);
}

LRESULT CDlgAddNewFolder::HandleColor(const MessageArgs& args) {
  return ColorForControl(args);
}

const MessageEntry CPageChooseSpamFolder::kEntries[] = {
    OnMessage(WM_TIMER, &CPageChooseSpamFolder::HandleTimer),
    OnMessage(WM_SETCURSOR, &CPageChooseSpamFolder::HandleSetCursor),
    OnMessage(WM_DESTROY, &CPageChooseSpamFolder::HandleDestroy),
    OnCommand(IDC_NEW_FOLDER, &CPageChooseSpamFolder::HandleNewFolder),
    OnNotify(IDC_FOLDER_TREE, static_cast<UINT>(NM_CLICK), &CPageChooseSpamFolder::HandleTreeClick),
    OnNotify(IDC_FOLDER_TREE, static_cast<UINT>(NM_RCLICK),
             &CPageChooseSpamFolder::HandleTreeRightClick),
};
const MessageTable CPageChooseSpamFolder::kMessages = {&CPageWizardDefault::kMessages,
                                                       CPageChooseSpamFolder::kEntries};

CPageChooseSpamFolder::CPageChooseSpamFolder(WizardServices* wizard)
    : CPageWizardDefault(wizard, IDD_PAGE_SPAM_FOLDER, 0) {}

bool CPageChooseSpamFolder::OnInitDialog() {
  CPageWizardDefault::OnInitDialog();
  m_folderTree.Subclass(Item(IDC_FOLDER_TREE));
  ::EnableWindow(m_folderTree.Handle(), FALSE);
  ::EnableWindow(Item(IDC_NEW_FOLDER), FALSE);
  if (Wizard().CanCreateFolder()) {
    const std::wstring text =
        WindowText(Item(IDC_BODY)) + L" " + LoadText(IDS_FOLDER_CAN_BE_CREATED);
    ::SetWindowTextW(Item(IDC_BODY), text.c_str());
  }
  m_folderTree.InsertItem(LoadText(IDS_READING_FOLDERS), TVI_ROOT);
  ::SetTimer(Handle(), kStartTimer, kTimerMs, nullptr);
  return true;
}

LRESULT CPageChooseSpamFolder::HandleTimer(const MessageArgs& args) {
  if (args.wParam != kStartTimer && args.wParam != kPollTimer) {
    return Default(args);
  }
  if (!Wizard().AreFoldersReady()) {
    if (args.wParam == kStartTimer) {
      // In a step of its own, so that the page is painted before the slow part begins.
      ::KillTimer(Handle(), kStartTimer);
      ::SetTimer(Handle(), kPollTimer, kTimerMs, nullptr);
      m_isReading = true;
      Wizard().StartFolderWorker();
      UpdateCursor();
    }
    return 0;
  }
  ::KillTimer(Handle(), args.wParam);
  FillTree();
  m_isReading = false;
  UpdateCursor();
  if (::IsWindowEnabled(m_folderTree.Handle())) {
    FocusTree();
  }
  return 0;
}

void CPageChooseSpamFolder::FillTree() {
  const CWaitCursor wait;
  const KernelHandle launchEvent = CreateLaunchEvent();
  MailFolderList folders;
  Wizard().GetFolders(&folders);
  FreeTreeItemData(m_folderTree, TVI_ROOT);
  m_folderTree.DeleteAllItems();
  FillFolderTree(folders, m_folderTree);
  MailFolderRef configured;
  if (Succeeded(Wizard().LoadConfiguredSpamFolder(&configured))) {
    SelectFolderItem(m_folderTree, configured, TVI_ROOT);
  }
  ::EnableWindow(m_folderTree.Handle(), TRUE);
  if (Wizard().CanCreateFolder()) {
    ::EnableWindow(Item(IDC_NEW_FOLDER), TRUE);
  }
  SetButtonMask(PSWIZB_NEXT);
}

bool CPageChooseSpamFolder::OnKillActive() {
  const HTREEITEM selected = m_folderTree.Selection();
  // An item at the top is a store and no folder.
  const bool valid = selected != nullptr && m_folderTree.Parent(selected) != nullptr;
  if (!valid) {
    const std::wstring text = LoadText(IDS_MUST_SELECT_FOLDER);
    ShowAtNext(text.empty() ? L"Must select a folder" : text);
    return false;
  }
  m_tooltip.Hide();
  const MailFolderRef* const folder = FolderOf(m_folderTree, selected);
  if (folder != nullptr) {
    (void)Wizard().SetSpamFolder(MailFolderRef(*folder));
  }
  return CPageWizardDefault::OnKillActive();
}

LRESULT CPageChooseSpamFolder::HandleNewFolder(const MessageArgs& /*args*/) {
  m_tooltip.Hide();
  CreateFolderBelowSelection();
  FocusTree();
  return 0;
}

void CPageChooseSpamFolder::CreateFolderBelowSelection() {
  const HTREEITEM selected = m_folderTree.Selection();
  const MailFolderRef* const parent = FolderOf(m_folderTree, selected);
  if (parent == nullptr) {
    return;
  }
  CDlgAddNewFolder dialog(Handle());
  if (dialog.DoModal() != IDOK || dialog.FolderName().empty()) {
    return;
  }
  const CWaitCursor wait;
  MailFolderRef created;
  // A record without an id is no folder of the client, whatever the result says.
  if (Failed(Wizard().CreateFolder(dialog.FolderName(), *parent, &created)) ||
      created.firstId.empty()) {
    ShowAtNext(LoadText(IDS_FOLDER_NOT_CREATED));
    return;
  }
  TreeControlTarget tree(m_folderTree);
  const TreeItem item =
      InsertPath(&tree, dialog.FolderName(), TreeControlTarget::From(selected), &created, parent);
  if (item != 0) {
    m_folderTree.SelectItem(TreeControlTarget::To(item));
  }
}

void CPageChooseSpamFolder::FocusTree() {
  // Not with SetFocus, which would leave the dialog's default button as it was.
  Send(WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(m_folderTree.Handle()), TRUE);
}

LRESULT CPageChooseSpamFolder::HandleDestroy(const MessageArgs& args) {
  FreeTreeItemData(m_folderTree, TVI_ROOT);
  m_folderTree.Detach();
  return Default(args);
}

// While the worker reads, the page can be looked at and closed, but has nothing to offer yet.
LRESULT CPageChooseSpamFolder::HandleSetCursor(const MessageArgs& args) {
  if (!m_isReading) {
    return Default(args);
  }
  ::SetCursor(WaitCursor());
  return TRUE;
}

}  // namespace postmarker
