// The page on which the folder for spam is chosen or created.
#pragma once

#include <string>

#include "ui/CTreeCtrl.h"
#include "wizard/CPageWizardDefault_win.h"

namespace postmarker {

// Asks for the name of a new folder. It checks nothing: the client decides what it takes.
class CDlgAddNewFolder : public CDialog {
 public:
  explicit CDlgAddNewFolder(HWND owner);

  [[nodiscard]] const std::wstring& FolderName() const { return m_folderName; }

 protected:
  void DoDataExchange(const CDataExchange& exchange) override;
  [[nodiscard]] const MessageTable* Messages() const override { return &kMessages; }
  static const MessageTable kMessages;
  static const MessageEntry kEntries[];

 private:
  LRESULT HandleColor(const MessageArgs& args);

  std::wstring m_folderName;
};

// It is the first page that touches the client: it starts the sheet's folder worker and waits for
// it without blocking its own window.
class CPageChooseSpamFolder : public CPageWizardDefault {
 public:
  explicit CPageChooseSpamFolder(WizardServices* wizard);

 protected:
  bool OnInitDialog() override;
  bool OnKillActive() override;
  [[nodiscard]] const MessageTable* Messages() const override { return &kMessages; }
  static const MessageTable kMessages;
  static const MessageEntry kEntries[];

 private:
  LRESULT HandleTimer(const MessageArgs& args);
  LRESULT HandleNewFolder(const MessageArgs& args);
  LRESULT HandleDestroy(const MessageArgs& args);
  LRESULT HandleSetCursor(const MessageArgs& args);

  void FillTree();
  void CreateFolderBelowSelection();
  void FocusTree();

  CTreeCtrl m_folderTree;
  bool m_isReading = false;  // the worker was started and the tree is not filled yet
};

}  // namespace postmarker
