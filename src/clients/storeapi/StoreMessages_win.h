// The messages in the store: those whom the person has written to, and what the filter does with
// single messages. Everything here runs in the apartment of the folders that are handed over.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "analysis/message/HeaderMap.h"
#include "clients/storeapi/StoreInterfaces_win.h"
#include "postmarker/ProgressCallbacks.h"
#include "postmarker/WizardRequest.h"
#include "support/StopQuery.h"

namespace postmarker::storeapi {

// Messages by the folder that they lie in.
using MessagesOfFolders = std::map<FolderId, std::vector<MessageId>>;

// Reads the beginning of a message, at most kMessageBytesRead bytes, in one read.
class MessageReader {
 public:
  MessageReader();

  // The bytes, until the next call; none if the message can't be opened or read.
  std::string_view Read(IStoreFolder* folder, MessageId message);

 private:
  std::vector<char> m_buffer;
};

// Adds the recipients of each message of the sent folder. Reports the number of messages and each
// of them; `callbacks` may be null. `stop` is asked before each message. Returns the code with
// which the folder could not be opened, otherwise 0: a message that can't be read is skipped.
HRESULT ReadSentMessages(IStoreNamespace* store, const ProgressCallbacks* callbacks,
                         const StopQuery& stop, AddressSet* addresses);

// Has the message in the store the headers of a certain mail? False if it can't be read.
bool IsSameMessage(IStoreFolder* folder, MessageId message, const HeaderMap& headers);

// Takes the filter's mark out of the subject of a message. `subject` is its subject now, bytes.
// Returns 1 without the mark, 0 when the message is changed, or the code of the call that failed.
// `allocator` may be null: then one is created.
HRESULT RemoveSubjectMark(IMimeAllocator* allocator, IStoreFolder* folder, MessageId message,
                          std::string_view subject);

// Moves messages to `target`, or marks them as read or unread. Folders that fail don't keep the
// others from it; the first code of a failure is returned, otherwise 0.
HRESULT MoveStoreMessages(IStoreNamespace* store, const MessagesOfFolders& messages,
                          IStoreFolder* target);
HRESULT MarkStoreMessagesRead(IStoreNamespace* store, const MessagesOfFolders& messages, bool read);

}  // namespace postmarker::storeapi
