// The spine of the wizard: a property sheet that owns the pages, reads the client's folders on a
// worker, and turns every question of the pages into a call to the right client adapter.
#pragma once

#include <memory>
#include <string>

#include "postmarker/ProgressCallbacks.h"
#include "postmarker/WizardRequest.h"
#include "support/ComPtr_win.h"
#include "support/Handles_win.h"
#include "support/Results.h"
#include "ui/CPropertySheet.h"
#include "wizard/ClientConnection_win.h"
#include "wizard/WizardServices_win.h"

namespace postmarker {

class CPageChooseClient;
class CPageChooseSpamFolder;
class CPagePrefill;
class CPageSettings;
class CPageTrainEmails;
class CPageWizard;

// Built on the stack of ShowWizard. Pages see it as WizardServices, which tells what the operations
// do. All are for the sheet's thread unless told otherwise.
class CWizardSheet : public CPropertySheet, public WizardServices {
 public:
  // Builds the pages and joins the thread to a single-threaded apartment until the destructor.
  // `request` may be null and must outlive the sheet; `owner` may be null.
  CWizardSheet(const std::wstring& caption, WizardRequest* request, HWND owner, UINT firstPage);
  CWizardSheet(UINT captionId, WizardRequest* request, HWND owner, UINT firstPage);
  ~CWizardSheet() override;

  [[nodiscard]] WizardRequest& Request() override { return *m_request; }
  [[nodiscard]] const ClientRow& Client() const override { return m_client.Client(); }
  [[nodiscard]] ClientLink Link() const override { return m_client.Link(); }
  [[nodiscard]] std::wstring GetClientSettingsName() const override;
  [[nodiscard]] bool IsClientInstalled(const std::wstring& name) const override;
  [[nodiscard]] bool IsClientSupported(const std::wstring& name) const override;
  [[nodiscard]] bool IsClientReady(const std::wstring& name) const override;
  ResultCode ChooseClient(const std::wstring& name) override;
  [[nodiscard]] bool CanCreateFolder() const override;
  ResultCode CreateFolder(const std::wstring& name, const MailFolderRef& parent,
                          MailFolderRef* rec) override;
  void StartFolderWorker() override;
  [[nodiscard]] bool AreFoldersReady() const override;
  void GetFolders(MailFolderList* list) override;
  void GetDefaultFolder(MailFolderRef* rec) override;
  ResultCode LoadConfiguredSpamFolder(MailFolderRef* rec) override;
  ResultCode SetSpamFolder(const MailFolderRef& rec) override;
  ResultCode ApplySettings() override;
  [[nodiscard]] HBITMAP BannerBitmap(SIZE size) override;

  // Gets hold of the client, which is started if need be; blocks until that is done.
  void PrepareClient() { m_client.Prepare(); }

  // Makes sure that the session that the client's operations need is there: 0 if it is, and for
  // clients that need none. The operations of the sheet ask for it themselves.
  ResultCode EnsureOutlookSession() { return m_client.EnsureSession(); }

  // Adds the addresses the user has written to in the request's client. E_POINTER without a
  // request. Any thread that is in an apartment.
  ResultCode CollectSentAddresses(const WizardRequest* request, const ProgressCallbacks* callbacks,
                                  AddressSet* addresses) const;

 protected:
  bool OnInitDialog() override;
  [[nodiscard]] const MessageTable* Messages() const override { return &kMessages; }
  static const MessageTable kMessages;
  static const MessageEntry kEntries[];

 private:
  LRESULT HandleNcCreate(const MessageArgs& args);
  LRESULT HandleDestroy(const MessageArgs& args);
  LRESULT HandleHelpLink(const MessageArgs& args);
  LRESULT HandleColor(const MessageArgs& args);

  void AddPages();
  void SetHelpLink(int number, const wchar_t* topic);

  // In the order in which the destructor needs them to go: the pages first, then the client, the
  // apartment last.
  std::unique_ptr<ComApartment> m_apartment;
  bool m_hasRequest;
  WizardRequest m_ownRequest;  // what the pages see if there is no other
  WizardRequest* m_request;    // never null
  ClientConnection m_client;
  std::unique_ptr<CPageWizard> m_welcomePage;
  std::unique_ptr<CPageChooseClient> m_clientPage;
  std::unique_ptr<CPageChooseSpamFolder> m_folderPage;
  std::unique_ptr<CPagePrefill> m_prefillPage;
  std::unique_ptr<CPageTrainEmails> m_trainPageFirst;
  std::unique_ptr<CPageTrainEmails> m_trainPageSecond;
  std::unique_ptr<CPageSettings> m_settingsPage;
  bool m_hookOwner = false;
  BitmapHandle m_bannerBitmap;
};

}  // namespace postmarker
