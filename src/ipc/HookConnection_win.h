// The commands that the suite's modules inside the clients answer.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "ipc/SharedMemClient_win.h"
#include "postmarker/MailFolderRef.h"
#include "postmarker/WizardRequest.h"

namespace postmarker {

// How long adapters let a module take for one step, in milliseconds.
inline constexpr uint32_t kHookTimeout = 2000;

// A connection to one module for one operation: after a command that was broken off its two ends
// are out of step. For one thread at a time.
//
// Each command returns kFail if the module is not there. Otherwise it returns 0: if the module's
// channel can't be reached, without having done anything; if a step fails on the way, with what has
// arrived until then in the out values. A first answer may take ten times the time of a step.
class HookConnection {
 public:
  // `module` is the module's file name, `timeout` the time of a step in milliseconds. Connects.
  HookConnection(const std::wstring& module, uint32_t timeout);

  // Connects once more, in place of the connection there was.
  void Connect(const std::wstring& module);

  // 0 when connected, kFail if the module is not there, kModuleUnreachable if it does not answer.
  [[nodiscard]] ResultCode Status() const { return m_client->Status(); }

  // Command 1: appends the client's folders to *folders, and replaces *text by the text that comes
  // ahead of them.
  ResultCode ListFolders(std::wstring* text, MailFolderList* folders);

  // Command 2: replaces *folder by the client's folder for a purpose. What `index` means is agreed
  // with each module.
  ResultCode LookUpFolder(uint32_t index, MailFolderRef* folder);

  // Commands 3 and 4: add the contacts, and those whom the person has written to, as they stand.
  ResultCode ListContacts(AddressSet* addresses);
  ResultCode ListSentAddresses(AddressSet* addresses);

  // Command 5: makes a folder below `parent`, and replaces *created by what the client made of it.
  ResultCode MakeFolder(const std::wstring& name, const MailFolderRef& parent,
                        MailFolderRef* created);

 private:
  using Command = std::function<void(ShmChannel& channel)>;

  ResultCode Run(uint32_t number, const Command& rest);
  ResultCode ListTexts(uint32_t number, AddressSet* addresses);
  static bool ReceiveFolder(ShmChannel& channel, uint32_t timeout, MailFolderRef* folder);
  [[nodiscard]] uint32_t LongTimeout() const;

  std::optional<SharedMemClient> m_client;
  uint32_t m_timeout;
};

// Hook first, store second: asks the module inside the client and, only if it is not there, the
// client's store. With `useHook` false the module is not asked.
//
// `ask` gets a connection with this time for a step, runs its command and returns the command's
// result, or a negative one to turn down an answer that is of no use; with 0 or more the operation
// ends and the result is 0, also when nothing came. `store` is called otherwise, and its result is
// returned. Both run on the calling thread.
ResultCode HookFirst(bool useHook, const std::wstring& module,
                     const std::function<ResultCode(HookConnection& hook)>& ask,
                     const std::function<ResultCode()>& store, uint32_t timeout = kHookTimeout);

}  // namespace postmarker
