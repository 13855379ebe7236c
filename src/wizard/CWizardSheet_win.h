// The spine of the wizard: a property sheet that owns the pages, reads the client's folders on a
// worker, and turns every question of the pages into a call to the right client adapter.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "postmarker/ProgressCallbacks.h"
#include "postmarker/WizardRequest.h"
#include "support/ComPtr_win.h"
#include "support/Handles_win.h"
#include "support/Results.h"
#include "ui/CPropertySheet.h"
#include "wizard/FolderWorker_win.h"

namespace postmarker {

class CPageChooseClient;
class CPageChooseSpamFolder;
class CPagePrefill;
class CPageSettings;
class CPageWizard;
struct ClientRow;

// Built on the stack of ShowWizard. All operations are for the sheet's thread unless told
// otherwise, and each does nothing, or fails with E_FAIL, without a request.
class CWizardSheet : public CPropertySheet, private FolderReceiver {
 public:
  // Builds the pages and joins the thread to a single-threaded apartment until the destructor.
  // `request` may be null and must outlive the sheet; `owner` may be null.
  CWizardSheet(const std::wstring& caption, WizardRequest* request, HWND owner, UINT firstPage);
  CWizardSheet(UINT captionId, WizardRequest* request, HWND owner, UINT firstPage);
  ~CWizardSheet() override;

  [[nodiscard]] WizardRequest* Request() const { return m_request; }

  // The row of the request's client; the row of defaults without a request.
  [[nodiscard]] const ClientRow& Client() const;

  // The settings key of the request's client; empty without a request.
  [[nodiscard]] std::wstring GetClientSettingsName() const;

  // What the detection of mail clients says of a display name.
  [[nodiscard]] bool IsClientInstalled(const std::wstring& name) const;
  [[nodiscard]] bool IsClientSupported(const std::wstring& name) const;
  [[nodiscard]] bool IsClientReady(const std::wstring& name) const;

  // May the folder page offer a new folder.
  [[nodiscard]] bool CanCreateFolder() const;

  // Creates a folder under `parent` in the client. On success *rec is the new folder, the request's
  // spam folder and the last of its folders; a failure changes nothing.
  ResultCode CreateFolder(const std::wstring& name, const MailFolderRef& parent,
                          MailFolderRef* rec);

  // Gets hold of the client, which is started if need be; blocks until that is done.
  void PrepareClient();

  // Makes sure that the session that the client's operations need is there: 0 if it is, and for
  // clients that need none. The operations of the sheet ask for it themselves.
  ResultCode EnsureOutlookSession();

  // Starts reading the folders on a worker; at most once a sheet.
  void StartFolderWorker();

  // Has the folder list arrived. A worker that found no folders counts as ready when it has ended.
  [[nodiscard]] bool AreFoldersReady() const;

  // Copies the folder list; reads it now, on this thread, if it is not there yet.
  void GetFolders(MailFolderList* list);

  // Copies the client's deleted items folder. Deliberate: *rec is left alone on a first call that
  // has to find the folder; the pages ask once to fill the cache.
  void GetDefaultFolder(MailFolderRef* rec);

  // The folder saved earlier; it becomes the request's spam folder.
  ResultCode LoadConfiguredSpamFolder(MailFolderRef* rec);

  // Takes the person's choice over. For clients with local folder ids the default folder gets the
  // id "0".
  ResultCode SetSpamFolder(const MailFolderRef& rec);

  // The finishing run: writes everything out in a fixed order. Each step's failure is passed over.
  // Returns 0.
  ResultCode ApplySettings();

  // Adds the addresses the person has written to in the request's client. E_POINTER without a
  // request. Any thread, in an apartment of its own.
  ResultCode CollectSentAddresses(const WizardRequest* request, const ProgressCallbacks* callbacks,
                                  AddressSet* addresses) const;

  // The request's client as a worker takes it along.
  [[nodiscard]] ClientLink Link() const;

  // The picture of the first and last page, loaded when it is first asked for and scaled to `size`.
  // Null if there is none.
  HBITMAP BannerBitmap(SIZE size);

 protected:
  bool OnInitDialog() override;
  [[nodiscard]] const MessageTable* Messages() const override { return &kMessages; }
  static const MessageTable kMessages;
  static const MessageEntry kEntries[];

 private:
  LRESULT HandleNcCreate(const MessageArgs& args);
  LRESULT HandleDestroy(const MessageArgs& args);
  LRESULT HandleColor(const MessageArgs& args);

  void ReceiveFolders(MailFolderList folders,
                      std::unique_ptr<MailFolderRef> defaultFolder) override;
  void AddPages();
  ClientHold* MakeHoldOnce();
  void SetHelpLink(int number, const wchar_t* topic);
  void RefreshStoreId(const ClientRow& client) const;
  void SaveSettings(const ClientRow& client, bool* moveChanged, bool* folderChanged) const;
  void NotifyClient(const ClientRow& client) const;

  // In the order in which the destructor needs them to go: the pages first, the apartment last.
  std::unique_ptr<ComApartment> m_apartment;
  std::shared_ptr<ClientHold> m_clientHold;
  std::unique_ptr<MailFolderRef> m_defaultFolder;
  std::unique_ptr<CPageWizard> m_welcomePage;
  std::unique_ptr<CPageChooseClient> m_clientPage;
  std::unique_ptr<CPageChooseSpamFolder> m_folderPage;
  std::unique_ptr<CPagePrefill> m_prefillPage;
  std::unique_ptr<CPageSettings> m_settingsPage;
  WizardRequest* m_request;
  bool m_hookOwner = false;
  KernelHandle m_workerThread;
  BitmapHandle m_bannerBitmap;
};

}  // namespace postmarker
