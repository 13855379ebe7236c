// The commands that the suite's modules inside the clients answer.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "ipc/SharedMemClient_win.h"
#include "postmarker/MailFolderRef.h"
#include "postmarker/WizardRequest.h"
#include "support/StopQuery.h"

namespace postmarker {

// What a module may cost at most. A healthy one with 50,000 addresses stays far below.
struct HookLimits {
  // For one step of a command, and for connecting. A first answer may take ten times as long.
  uint32_t stepMilliseconds = 2'000;

  // For a whole command. Where the system's clock ticks every 16 ms, so does a conversation: one
  // about 50,000 addresses takes 13 minutes there.
  uint32_t commandMilliseconds = 20 * 60 * 1'000;

  // What a command may receive. A text counts with kHookTextCost more than its UTF-16 units, so
  // that empty ones are not free.
  size_t commandBytes = size_t{64} << 20;
};

// About what it costs to hold an empty text that a module sent, in bytes.
inline constexpr size_t kHookTextCost = 128;

// A connection to one module for one operation: after a command that was broken off its two ends
// are out of step. For one thread at a time.
//
// Each command returns kFail if the module is not there. Otherwise it returns 0: if the module's
// channel can't be reached, without having done anything; if a step fails on the way, with what has
// arrived until then in the out values. A step also fails when the command exceeds its limits, and
// when the connection's stop query says so, which is asked at each step and at least every 100 ms
// of a wait. Nothing throws but for want of memory.
class HookConnection {
 public:
  // `module` is the module's file name. Connects, which takes a few times the time of a step if the
  // module does not answer, and ends as soon as `stop` says so.
  explicit HookConnection(const std::wstring& module, const HookLimits& limits = {},
                          StopQuery stop = {});

  // Connects again, in place of the connection there was.
  void Connect(const std::wstring& module);

  // 0 when connected, kFail if the module is not there, kModuleUnreachable if it does not answer or
  // connecting was stopped.
  [[nodiscard]] ResultCode Status() const { return m_client->Status(); }

  // Command 1: replaces *text by the text that comes ahead of the client's folders, and appends the
  // folders to *folders.
  ResultCode ListFolders(std::wstring* text, MailFolderList* folders);

  // Command 2: replaces *folder by the client's folder for a purpose, or by an empty record if none
  // came. What `index` means is agreed with each module.
  ResultCode LookUpFolder(uint32_t index, MailFolderRef* folder);

  // Commands 3 and 4: add the contacts, and those whom the person has written to, as they stand.
  ResultCode ListContacts(AddressSet* addresses);
  ResultCode ListSentAddresses(AddressSet* addresses);

  // Command 5: makes a folder below `parent`, and replaces *created by what the client made of it,
  // or by an empty record if no answer came.
  ResultCode MakeFolder(const std::wstring& name, const MailFolderRef& parent,
                        MailFolderRef* created);

 private:
  class Conversation;
  using Command = std::function<void(Conversation& conversation)>;

  ResultCode Run(uint32_t number, const Command& rest);
  ResultCode ListTexts(uint32_t number, AddressSet* addresses);

  HookLimits m_limits;
  StopQuery m_stop;
  std::optional<SharedMemClient> m_client;
};

// What became of asking the module, for HookFirst.
enum class HookOutcome {
  kDone,      // it has answered, be it with nothing: the operation ends with 0
  kFailed,    // it has answered, and the answer is a failure: the operation ends with kFail
  kAskStore,  // the answer is of no use, or there was none
};

// What a command's result means where every answer is taken as it is.
constexpr HookOutcome OutcomeOf(ResultCode result) {
  return Succeeded(result) ? HookOutcome::kDone : HookOutcome::kAskStore;
}

// Hook first, store second: asks the module inside the client and, only if it is not there, the
// client's store. With `useHook` false the module is not asked.
//
// `ask` gets a connection with these limits, runs its command and tells what became of it. `store`
// is called for kAskStore only, and its result is returned. Both run on the calling thread.
//
// When `stop` has ended the asking, the command has returned 0 with what it had, so that the store
// stays closed. A module that is not there is found out without looking at `stop`: `store` has to.
ResultCode HookFirst(bool useHook, const std::wstring& module,
                     const std::function<HookOutcome(HookConnection& hook)>& ask,
                     const std::function<ResultCode()>& store, const HookLimits& limits = {},
                     const StopQuery& stop = {});

}  // namespace postmarker
