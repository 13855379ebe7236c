// The conversation with Thunderbird's extension: a command, and replies until its end marker.
#pragma once

#include <cstdint>
#include <string>

#include "postmarker/MailFolderRef.h"
#include "postmarker/ProgressCallbacks.h"
#include "postmarker/WizardRequest.h"
#include "support/Results.h"

namespace postmarker::thunderbird {

// The road to the extension. For one thread; texts are UTF-16.
class TbChannel {
 public:
  TbChannel() = default;
  TbChannel(const TbChannel&) = delete;
  TbChannel& operator=(const TbChannel&) = delete;
  virtual ~TbChannel() = default;

  // Would Read return at once, with a message or because the road is broken.
  virtual bool HasMessage() = 0;

  // Takes the next message; false if the road is broken.
  virtual bool Read(std::wstring* message) = 0;

  // Sends a message; false if it was not taken.
  virtual bool Write(const std::wstring& message) = 0;

  // Milliseconds of a clock that is not set back.
  virtual int64_t Now() = 0;

  virtual void Sleep(int32_t milliseconds) = 0;

  // Does nobody wait for the answer any more. Asked before each look for a message.
  virtual bool IsAbandoned() = 0;
};

// Each command fails with E_FAIL if it can't be sent. Otherwise it returns 0 with what arrived, be
// it cut short: at the end marker, when the channel breaks or is abandoned, or when the channel is
// silent and `limitSeconds` have gone by since the start. Deliberate: a pause, and not the length
// of the whole reply, ends a command, as a large mailbox takes its time; and what a slow or dying
// client has told by then is of use. A reply also ends once what it makes the bridge hold, besides
// texts that are held already, takes 64 MiB in a list and 64 KiB in an answer. One command at a
// time on a channel.

// Appends all folders in the order of their arrival.
ResultCode GiveAllFolders(TbChannel* channel, int32_t limitSeconds, MailFolderList* folders);

// Adds the contacts' addresses as they stand.
ResultCode GiveContacts(TbChannel* channel, int32_t limitSeconds, AddressSet* addresses);

// Counts the sent mails, for the progress bar. Without an answer *count is as it was.
ResultCode SentItemsEntries(TbChannel* channel, int32_t limitSeconds, int32_t* count);

// Adds the addresses of all recipients. With a `total` other than 0, `callbacks` (may be null) gets
// it as the number of steps at the start, and is asked whether to stop then and after each step.
ResultCode GiveAddressesFromSentItems(TbChannel* channel, int32_t total,
                                      const ProgressCallbacks* callbacks, int32_t limitSeconds,
                                      AddressSet* addresses);

// Creates a folder under `parent` and appends its record to *created.
ResultCode AddNewFolder(TbChannel* channel, const std::wstring& name, const MailFolderRef& parent,
                        int32_t limitSeconds, MailFolderList* created);

// Tells the extension whether to move spam.
ResultCode SetMoveMails(TbChannel* channel, bool move, int32_t limitSeconds);

}  // namespace postmarker::thunderbird
