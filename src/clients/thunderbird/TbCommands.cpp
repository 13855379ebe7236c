#include "clients/thunderbird/TbCommands.h"

#include <functional>
#include <string_view>

#include "clients/thunderbird/TbRecords.h"

namespace postmarker::thunderbird {
namespace {

constexpr int32_t kPollMilliseconds = 100;

// Characters, a million mails with their recipients. A reply that never ends must not keep a worker
// and all memory.
constexpr size_t kLongestReply = 100'000'000;

// Takes one message of a reply; false ends the command.
using MessageHandler = std::function<bool(const std::wstring& message)>;

// Whole seconds, rounded to the nearest.
int64_t Seconds(int64_t milliseconds) {
  return (milliseconds + 500) / 1000;
}

void ReadReply(TbChannel* channel, std::wstring_view command, int32_t limitSeconds,
               const MessageHandler& handle) {
  const std::wstring endMarker = EndMarker(command);
  const int64_t start = channel->Now();
  size_t length = 0;
  std::wstring message;
  while (length < kLongestReply && !channel->IsAbandoned()) {
    if (!channel->HasMessage()) {
      if (Seconds(channel->Now() - start) >= limitSeconds) {
        return;
      }
      channel->Sleep(kPollMilliseconds);
    } else if (!channel->Read(&message) || message == endMarker || !handle(message)) {
      return;
    } else {
      length += message.size() + 1;
    }
  }
}

ResultCode RunCommand(TbChannel* channel, const wchar_t* command, int32_t limitSeconds,
                      const MessageHandler& handle) {
  if (!channel->Write(command)) {
    return kFail;
  }
  ReadReply(channel, command, limitSeconds, handle);
  return kOk;
}

bool CanReport(const ProgressCallbacks* callbacks) {
  return callbacks != nullptr && callbacks->handle != nullptr;
}

}  // namespace

bool IsCancelled(const ProgressCallbacks* callbacks) {
  return CanReport(callbacks) && callbacks->isCancelled != nullptr &&
         callbacks->isCancelled(callbacks->handle) != 0;
}

ResultCode GiveAllFolders(TbChannel* channel, int32_t limitSeconds, MailFolderList* folders) {
  return RunCommand(channel, L"GiveAllFolders", limitSeconds, [&](const std::wstring& message) {
    folders->push_back(ParseFolderRecord(message));
    return true;
  });
}

ResultCode GiveContacts(TbChannel* channel, int32_t limitSeconds, AddressSet* addresses) {
  return RunCommand(channel, L"GiveContacts", limitSeconds, [&](const std::wstring& message) {
    addresses->insert(message);
    return true;
  });
}

ResultCode SentItemsEntries(TbChannel* channel, int32_t limitSeconds, int32_t* count) {
  return RunCommand(channel, L"SentItemsEntries", limitSeconds, [&](const std::wstring& message) {
    *count = ParseCount(message);
    return true;
  });
}

ResultCode GiveAddressesFromSentItems(TbChannel* channel, int32_t total,
                                      const ProgressCallbacks* callbacks, int32_t limitSeconds,
                                      AddressSet* addresses) {
  constexpr wchar_t kCommand[] = L"GiveAddressesFromSentItems";
  if (!channel->Write(kCommand)) {
    return kFail;
  }
  if (total != 0 && CanReport(callbacks)) {
    if (callbacks->setProgress != nullptr) {
      callbacks->setProgress(callbacks->handle, callbacks->text, total);
    }
    if (IsCancelled(callbacks)) {
      return kOk;
    }
  }
  ReadReply(channel, kCommand, limitSeconds, [&](const std::wstring& message) {
    if (message != L"IncreaseProgressBar") {
      AddAddressList(message, addresses);
      return true;
    }
    if (total <= 0) {
      return true;
    }
    if (CanReport(callbacks) && callbacks->increaseProgress != nullptr) {
      callbacks->increaseProgress(callbacks->handle, 1);
    }
    return !IsCancelled(callbacks);
  });
  return kOk;
}

ResultCode AddNewFolder(TbChannel* channel, const std::wstring& name, const MailFolderRef& parent,
                        int32_t limitSeconds, MailFolderList* created) {
  const std::wstring request = NewFolderRequest(parent, name);
  return RunCommand(channel, L"AddNewFolder", limitSeconds, [&](const std::wstring& message) {
    if (message == L"OK") {
      (void)channel->Write(request);
    } else {
      created->push_back(ParseNewFolderRecord(message, parent.flag));
    }
    return true;
  });
}

ResultCode SetMoveMails(TbChannel* channel, bool move, int32_t limitSeconds) {
  return RunCommand(channel, L"SetMoveMails", limitSeconds, [&](const std::wstring& message) {
    if (message == L"OK") {
      (void)channel->Write(move ? L"true" : L"false");
    }
    return true;
  });
}

}  // namespace postmarker::thunderbird
