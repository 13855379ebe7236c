// What Thunderbird's extension may send: the lines of the input are its messages, to every command.
#include "FuzzTarget.h"
#include "clients/thunderbird/TbRecords.h"
#include "support/ScriptedTbChannel.h"
#include "support/Text.h"

namespace {

using namespace postmarker;

constexpr int32_t kLimit = 2;

// A line that begins with a tab is a pause, one with a backspace the end of the connection.
void Script(std::string_view text, test::ScriptedTbChannel* channel) {
  for (size_t start = 0; start <= text.size();) {
    const size_t end = std::min(text.find('\n', start), text.size());
    const std::string_view line = text.substr(start, end - start);
    if (line.starts_with('\t')) {
      channel->Pause(static_cast<int64_t>(line.size()) * 100);
    } else if (line.starts_with('\b')) {
      channel->Break();
    } else {
      channel->Say(WidenUtf8(line));
    }
    start = end + 1;
  }
}

int32_t POSTMARKER_CALL StopAfterTen(void* handle) {
  return ++*static_cast<int32_t*>(handle) > 10 ? 1 : 0;
}

void RequireFields(const MailFolderRef& folder, std::wstring_view text) {
  fuzz::Require(text.find(folder.name) != std::wstring_view::npos);
  fuzz::Require(folder.name.find(L'#') == std::wstring::npos);
  fuzz::Require(folder.firstId.find('#') == std::string::npos);
  fuzz::Require(folder.secondId.find('#') == std::string::npos);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view bytes = fuzz::Bytes(data, size);
  const std::wstring wide = WidenUtf8(bytes);
  const MailFolderRef folder = thunderbird::ParseFolderRecord(wide);
  RequireFields(folder, wide);
  fuzz::Require(folder.flag <= 1);
  RequireFields(thunderbird::ParseNewFolderRecord(wide, 1), wide);

  int32_t questions = 0;
  ProgressCallbacks callbacks;
  callbacks.handle = &questions;
  callbacks.isCancelled = &StopAfterTen;
  for (int command = 0; command < 6; ++command) {
    test::ScriptedTbChannel channel;
    Script(bytes, &channel);
    MailFolderList folders;
    AddressSet addresses;
    int32_t count = 0;
    ResultCode result = kFail;
    switch (command) {
      case 0:
        result = thunderbird::GiveAllFolders(&channel, kLimit, &folders);
        break;
      case 1:
        result = thunderbird::GiveContacts(&channel, kLimit, &addresses);
        break;
      case 2:
        result = thunderbird::SentItemsEntries(&channel, kLimit, &count);
        break;
      case 3:
        result =
            thunderbird::GiveAddressesFromSentItems(&channel, 1, &callbacks, kLimit, &addresses);
        break;
      case 4:
        result = thunderbird::AddNewFolder(&channel, L"New", folder, kLimit, &folders);
        break;
      default:
        result = thunderbird::SetMoveMails(&channel, true, kLimit);
        break;
    }
    fuzz::Require(result == kOk);
    fuzz::Require(folders.size() <= static_cast<size_t>(channel.reads));
  }
  return 0;
}
