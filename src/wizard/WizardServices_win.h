// What the pages ask of the wizard that they are pages of.
#pragma once

#include <windows.h>

#include <string>

#include "clients/ClientLink.h"
#include "postmarker/WizardRequest.h"
#include "support/Results.h"

namespace postmarker {

struct ClientRow;

// The sheet as its pages see it. All operations are for the sheet's thread. A wizard that was given
// no request has an empty one of its own: its operations then do nothing, or fail with E_FAIL where
// nothing else is said.
class WizardServices {
 public:
  WizardServices() = default;
  WizardServices(const WizardServices&) = delete;
  WizardServices& operator=(const WizardServices&) = delete;

  // The record that host and wizard share.
  [[nodiscard]] virtual WizardRequest& Request() = 0;

  // The row of the request's client; the row of defaults for a client that nobody knows.
  [[nodiscard]] virtual const ClientRow& Client() const = 0;

  // The request's client as a worker takes it along.
  [[nodiscard]] virtual ClientLink Link() const = 0;

  // The settings key of the request's client; empty without a request.
  [[nodiscard]] virtual std::wstring GetClientSettingsName() const = 0;

  // What the detection of mail clients says of a display name.
  [[nodiscard]] virtual bool IsClientInstalled(const std::wstring& name) const = 0;
  [[nodiscard]] virtual bool IsClientSupported(const std::wstring& name) const = 0;
  [[nodiscard]] virtual bool IsClientReady(const std::wstring& name) const = 0;

  // Makes this the request's client and at once the one that the next run begins with. E_POINTER
  // without a request.
  virtual ResultCode ChooseClient(const std::wstring& name) = 0;

  // May the folder page offer a new folder.
  [[nodiscard]] virtual bool CanCreateFolder() const = 0;

  // Creates a folder under `parent` in the client. On success *rec is the new folder, the request's
  // spam folder and the last of its folders; a failure changes nothing. A client that reports
  // success and gives no id has failed. Deliberate: without the session that the client needs,
  // nothing is created, and an empty record is added all the same: a page must look at the id.
  virtual ResultCode CreateFolder(const std::wstring& name, const MailFolderRef& parent,
                                  MailFolderRef* rec) = 0;

  // Starts reading the folders on a worker; at most once a sheet. Blocks until the client is there
  // or can't be reached.
  virtual void StartFolderWorker() = 0;

  // Has the folder list arrived. A worker that found no folders counts as ready when it has ended;
  // without a request it is always there.
  [[nodiscard]] virtual bool AreFoldersReady() const = 0;

  // Copies the folder list; reads it now, on this thread, if it is not there yet.
  virtual void GetFolders(MailFolderList* list) = 0;

  // Copies the client's deleted items folder. Deliberate: *rec is left alone on a first call that
  // has to find the folder; the pages ask once to fill the cache.
  virtual void GetDefaultFolder(MailFolderRef* rec) = 0;

  // The folder saved earlier; it becomes the request's spam folder.
  virtual ResultCode LoadConfiguredSpamFolder(MailFolderRef* rec) = 0;

  // Makes this the request's spam folder. For clients with local folder ids the default folder gets
  // the id "0".
  virtual ResultCode SetSpamFolder(const MailFolderRef& rec) = 0;

  // The finishing run (see FinishRun). Always 0.
  virtual ResultCode ApplySettings() = 0;

  // The picture of the first and last page, scaled to `size` when it is first asked for. Null if
  // there is none.
  [[nodiscard]] virtual HBITMAP BannerBitmap(SIZE size) = 0;

 protected:
  ~WizardServices() = default;
};

}  // namespace postmarker
