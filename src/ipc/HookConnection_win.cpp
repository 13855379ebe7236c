#include "ipc/HookConnection_win.h"

#include <limits>

#include "ipc/FolderText.h"

namespace postmarker {
namespace {

constexpr uint32_t kListFolders = 1;
constexpr uint32_t kLookUpFolder = 2;
constexpr uint32_t kListContacts = 3;
constexpr uint32_t kListSentAddresses = 4;
constexpr uint32_t kMakeFolder = 5;

}  // namespace

HookConnection::HookConnection(const std::wstring& module, uint32_t timeout) : m_timeout(timeout) {
  Connect(module);
}

void HookConnection::Connect(const std::wstring& module) {
  m_client.reset();
  m_client.emplace(module, ChannelKind::kLocal, m_timeout);
}

uint32_t HookConnection::LongTimeout() const {
  constexpr uint32_t kLongest = std::numeric_limits<uint32_t>::max() - 1;
  return m_timeout > kLongest / 10 ? kLongest : m_timeout * 10;
}

// Sends the command's number and then does the rest of it, whose failures are no failure.
ResultCode HookConnection::Run(uint32_t number, const Command& rest) {
  if (Failed(Status())) {
    return Status() == kModuleUnreachable ? kOk : kFail;
  }
  ShmChannel& channel = *m_client->Channel();
  if (channel.SendNumber(number, m_timeout)) {
    rest(channel);
  }
  return kOk;
}

bool HookConnection::ReceiveFolder(ShmChannel& channel, uint32_t timeout, MailFolderRef* folder) {
  std::wstring text;
  if (!channel.ReceiveText(&text, timeout)) {
    return false;
  }
  *folder = DecodeFolderText(text);
  return true;
}

ResultCode HookConnection::ListFolders(std::wstring* text, MailFolderList* folders) {
  return Run(kListFolders, [&](ShmChannel& channel) {
    uint32_t count = 0;
    if (!channel.ReceiveText(text, LongTimeout()) || !channel.ReceiveNumber(&count, m_timeout)) {
      return;
    }
    MailFolderRef folder;
    for (uint32_t i = 0; i < count && ReceiveFolder(channel, m_timeout, &folder); ++i) {
      folders->push_back(folder);
    }
  });
}

ResultCode HookConnection::LookUpFolder(uint32_t index, MailFolderRef* folder) {
  *folder = {};
  return Run(kLookUpFolder, [&](ShmChannel& channel) {
    if (channel.SendNumber(index, m_timeout)) {
      ReceiveFolder(channel, LongTimeout(), folder);
    }
  });
}

ResultCode HookConnection::ListTexts(uint32_t number, AddressSet* addresses) {
  return Run(number, [&](ShmChannel& channel) {
    uint32_t count = 0;
    if (!channel.ReceiveNumber(&count, LongTimeout())) {
      return;
    }
    std::wstring address;
    for (uint32_t i = 0; i < count && channel.ReceiveText(&address, m_timeout); ++i) {
      addresses->insert(address);
    }
  });
}

ResultCode HookConnection::ListContacts(AddressSet* addresses) {
  return ListTexts(kListContacts, addresses);
}

ResultCode HookConnection::ListSentAddresses(AddressSet* addresses) {
  return ListTexts(kListSentAddresses, addresses);
}

ResultCode HookConnection::MakeFolder(const std::wstring& name, const MailFolderRef& parent,
                                      MailFolderRef* created) {
  *created = {};
  return Run(kMakeFolder, [&](ShmChannel& channel) {
    if (channel.SendText(name.c_str(), m_timeout) &&
        channel.SendText(EncodeFolderText(parent).c_str(), m_timeout)) {
      ReceiveFolder(channel, LongTimeout(), created);
    }
  });
}

ResultCode HookFirst(bool useHook, const std::wstring& module,
                     const std::function<ResultCode(HookConnection& hook)>& ask,
                     const std::function<ResultCode()>& store, uint32_t timeout) {
  if (useHook) {
    HookConnection hook(module, timeout);
    if (Succeeded(ask(hook))) {
      return kOk;
    }
  }
  return store();
}

}  // namespace postmarker
