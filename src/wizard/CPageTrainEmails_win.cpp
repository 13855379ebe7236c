#include "wizard/CPageTrainEmails_win.h"

#include "resource.h"
#include "support/Text.h"
#include "ui/CWaitCursor.h"
#include "ui/CWinApp.h"
#include "wizard/FolderTreeControl_win.h"
#include "wizard/WizardServices_win.h"

namespace postmarker {

const MessageEntry CPageTrainEmails::kEntries[] = {
    OnMessage(WM_DESTROY, &CPageTrainEmails::HandleDestroy),
    OnNotify(IDC_TRAIN_TREE, static_cast<UINT>(NM_CLICK), &CPageTrainEmails::HandleTreeClick),
    OnNotify(IDC_TRAIN_TREE, static_cast<UINT>(NM_RCLICK), &CPageTrainEmails::HandleTreeRightClick),
};
const MessageTable CPageTrainEmails::kMessages = {&CPageWizardDefault::kMessages,
                                                  CPageTrainEmails::kEntries};

CPageTrainEmails::CPageTrainEmails(WizardServices* wizard, uint32_t isFirst)
    : CPageWizardDefault(wizard, IDD_PAGE_TRAIN), m_isFirst(isFirst) {}

bool CPageTrainEmails::OnInitDialog() {
  CPageWizardDefault::OnInitDialog();
  const bool isFirst = m_isFirst != 0;
  m_folderTree.Attach(Item(IDC_TRAIN_TREE));
  m_note.Attach(Item(isFirst ? IDC_TRAIN_NOTE_FIRST : IDC_TRAIN_NOTE_SECOND));
  // As all that stands on a page, whatever the colors of the system.
  m_note.SetTextColor(L"Black");
  m_note.SetBackColor(L"White");
  ::ShowWindow(Item(IDC_TRAIN_NOTE_FIRST), isFirst ? SW_SHOW : SW_HIDE);
  ::ShowWindow(Item(IDC_TRAIN_NOTE_SECOND), isFirst ? SW_HIDE : SW_SHOW);
  ::SetWindowTextW(Item(IDC_HEADING),
                   LoadText(isFirst ? IDS_TRAIN_FIRST : IDS_TRAIN_SECOND).c_str());
  FillTree();
  return true;
}

// Again at each visit: only stores that the tree has not seen are added.
bool CPageTrainEmails::OnSetActive() {
  FillTree();
  return CPageWizardDefault::OnSetActive();
}

void CPageTrainEmails::FillTree() {
  const CWaitCursor wait;
  MailFolderList folders;
  Wizard().GetFolders(&folders);
  FillFolderTree(folders, m_folderTree);
}

bool CPageTrainEmails::OnKillActive() {
  WizardRequest& request = Wizard().Request();
  ReadTree(m_isFirst != 0 ? &request.trainFoldersFirst : &request.trainFoldersSecond);
  return CPageWizardDefault::OnKillActive();
}

// An item without a folder is only a level of a path. Deliberate: of two folders with the same id,
// which can lie in different stores, the last one stays.
void CPageTrainEmails::ReadTree(TrainFolderMap* folders) const {
  folders->clear();
  for (HTREEITEM item = m_folderTree.FirstChild(TVI_ROOT); item != nullptr;
       item = m_folderTree.NextInWalk(item, TVI_ROOT)) {
    if (const MailFolderRef* const folder = FolderOf(m_folderTree, item)) {
      (*folders)[Widen(folder->firstId)] = {*folder, m_folderTree.IsChecked(item) ? 1U : 0U};
    }
  }
}

LRESULT CPageTrainEmails::HandleDestroy(const MessageArgs& args) {
  FreeTreeItemData(m_folderTree, TVI_ROOT);
  return Default(args);
}

}  // namespace postmarker
