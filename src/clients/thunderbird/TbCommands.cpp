#include "clients/thunderbird/TbCommands.h"

#include <algorithm>
#include <functional>
#include <optional>
#include <string_view>

#include "clients/Cancel.h"
#include "clients/thunderbird/TbRecords.h"

namespace postmarker::thunderbird {
namespace {

constexpr int32_t kPollMilliseconds = 100;

// What a reply may make the bridge hold, in bytes: in a list half a million addresses, in an answer
// a few texts. A list that repeats what is held already may be longer.
constexpr size_t kMaxHeldListBytes = size_t{64} * 1024 * 1024;
constexpr size_t kMaxHeldAnswerBytes = size_t{64} * 1024;

// Each message counts as this much at least, so that a reply that never ends and holds nothing ends
// as well.
constexpr size_t kMinChargeBytes = 8;

// An entry of a set or a list besides its text.
constexpr size_t kEntryBytes = 64;

size_t BytesHeld(const std::wstring& text) {
  return kEntryBytes + text.size() * sizeof(wchar_t);
}

size_t BytesHeld(const MailFolderRef& folder) {
  return BytesHeld(folder.name) + folder.firstId.size() + folder.secondId.size();
}

// Takes one message of a reply and returns the bytes that it makes the bridge hold; nothing ends
// the command.
using MessageHandler = std::function<std::optional<size_t>(const std::wstring& message)>;

// Whole seconds, rounded to the nearest.
int64_t Seconds(int64_t milliseconds) {
  return (milliseconds + 500) / 1000;
}

void ReadReply(TbChannel* channel, std::wstring_view command, int32_t limitSeconds, size_t mostHeld,
               const MessageHandler& handle) {
  const std::wstring endMarker = EndMarker(command);
  const int64_t start = channel->Now();
  size_t held = 0;
  std::wstring message;
  while (held < mostHeld && !channel->IsAbandoned()) {
    if (!channel->HasMessage()) {
      if (Seconds(channel->Now() - start) >= limitSeconds) {
        return;
      }
      channel->Sleep(kPollMilliseconds);
      continue;
    }
    if (!channel->Read(&message) || message == endMarker) {
      return;
    }
    const std::optional<size_t> charge = handle(message);
    if (!charge) {
      return;
    }
    held += std::max(*charge, kMinChargeBytes);
  }
}

ResultCode RunCommand(TbChannel* channel, const wchar_t* command, int32_t limitSeconds,
                      size_t mostHeld, const MessageHandler& handle) {
  if (!channel->Write(command)) {
    return kFail;
  }
  ReadReply(channel, command, limitSeconds, mostHeld, handle);
  return kOk;
}

size_t Insert(const std::wstring& address, AddressSet* addresses) {
  return addresses->insert(address).second ? BytesHeld(address) : 0;
}

}  // namespace

ResultCode GiveAllFolders(TbChannel* channel, int32_t limitSeconds, MailFolderList* folders) {
  return RunCommand(channel, L"GiveAllFolders", limitSeconds, kMaxHeldListBytes,
                    [folders](const std::wstring& message) {
                      folders->push_back(ParseFolderRecord(message));
                      return BytesHeld(folders->back());
                    });
}

ResultCode GiveContacts(TbChannel* channel, int32_t limitSeconds, AddressSet* addresses) {
  return RunCommand(
      channel, L"GiveContacts", limitSeconds, kMaxHeldListBytes,
      [addresses](const std::wstring& message) { return Insert(message, addresses); });
}

ResultCode SentItemsEntries(TbChannel* channel, int32_t limitSeconds, int32_t* count) {
  return RunCommand(channel, L"SentItemsEntries", limitSeconds, kMaxHeldAnswerBytes,
                    [count](const std::wstring& message) {
                      *count = ParseCount(message);
                      return size_t{0};
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
  const auto handle = [&](const std::wstring& message) -> std::optional<size_t> {
    if (message != L"IncreaseProgressBar") {
      size_t held = 0;
      for (const std::wstring& address : ParseAddresses(message)) {
        held += Insert(address, addresses);
      }
      return held;
    }
    if (total <= 0) {
      return 0;
    }
    if (CanReport(callbacks) && callbacks->increaseProgress != nullptr) {
      callbacks->increaseProgress(callbacks->handle, 1);
    }
    return IsCancelled(callbacks) ? std::nullopt : std::optional<size_t>(0);
  };
  ReadReply(channel, kCommand, limitSeconds, kMaxHeldListBytes, handle);
  return kOk;
}

ResultCode AddNewFolder(TbChannel* channel, const std::wstring& name, const MailFolderRef& parent,
                        int32_t limitSeconds, MailFolderList* created) {
  const std::wstring request = NewFolderRequest(parent, name);
  return RunCommand(channel, L"AddNewFolder", limitSeconds, kMaxHeldAnswerBytes,
                    [&](const std::wstring& message) {
                      if (message == L"OK") {
                        (void)channel->Write(request);
                        return size_t{0};
                      }
                      created->push_back(ParseNewFolderRecord(message, parent.flag));
                      return BytesHeld(created->back());
                    });
}

ResultCode SetMoveMails(TbChannel* channel, bool move, int32_t limitSeconds) {
  return RunCommand(channel, L"SetMoveMails", limitSeconds, kMaxHeldAnswerBytes,
                    [&](const std::wstring& message) {
                      if (message == L"OK") {
                        (void)channel->Write(move ? L"true" : L"false");
                      }
                      return size_t{0};
                    });
}

}  // namespace postmarker::thunderbird
