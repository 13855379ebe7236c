#include "ipc/HookConnection_win.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "ipc/ChannelWaits_win.h"
#include "ipc/FolderText.h"

namespace postmarker {
namespace {

constexpr uint32_t kListFolders = 1;
constexpr uint32_t kLookUpFolder = 2;
constexpr uint32_t kListContacts = 3;
constexpr uint32_t kListSentAddresses = 4;
constexpr uint32_t kMakeFolder = 5;

}  // namespace

// One command within its limits: every step fails once they are exceeded, or once somebody has
// asked it to stop.
class HookConnection::Conversation {
 public:
  Conversation(ShmChannel& channel, const HookLimits& limits, const StopQuery& stop)
      : m_channel(channel), m_limits(limits), m_stop(stop), m_bytesLeft(limits.commandBytes) {}

  bool SendNumber(uint32_t value) {
    return IsInTime() && m_channel.SendNumber(value, TimeFor(kStep), m_stop);
  }
  bool SendText(const std::wstring& text) {
    return IsInTime() && m_channel.SendText(text.c_str(), TimeFor(kStep), m_stop);
  }

  // The first answer to a command, which the client may have to work for.
  bool ReceiveFirstNumber(uint32_t* value) {
    return IsInTime() && m_channel.ReceiveNumber(value, TimeFor(kFirstAnswer), m_stop);
  }
  bool ReceiveFirstText(std::wstring* text) { return ReceiveText(kFirstAnswer, text); }

  bool ReceiveNumber(uint32_t* value) {
    return IsInTime() && m_channel.ReceiveNumber(value, TimeFor(kStep), m_stop);
  }
  bool ReceiveText(std::wstring* text) { return ReceiveText(kStep, text); }

 private:
  // How many times the time of a step.
  static constexpr uint32_t kStep = 1;
  static constexpr uint32_t kFirstAnswer = 10;

  // A message that is there already needs no wait, so this is looked at before each step.
  [[nodiscard]] bool IsInTime() const { return m_elapsed.Left(m_limits.commandMilliseconds) > 0; }

  [[nodiscard]] uint32_t TimeFor(uint32_t steps) const {
    constexpr uint32_t kMaxMs = std::numeric_limits<uint32_t>::max() - 1;
    const uint32_t step = m_limits.stepMilliseconds;
    return std::min(step > kMaxMs / steps ? kMaxMs : step * steps,
                    m_elapsed.Left(m_limits.commandMilliseconds));
  }

  bool ReceiveText(uint32_t steps, std::wstring* text) {
    if (m_bytesLeft < kHookTextCost || !IsInTime() ||
        !m_channel.ReceiveText(text, TimeFor(steps), m_stop, m_bytesLeft - kHookTextCost)) {
      return false;
    }
    m_bytesLeft -= kHookTextCost + text->size() * sizeof(wchar_t);
    return true;
  }

  ShmChannel& m_channel;
  const HookLimits& m_limits;
  const StopQuery& m_stop;
  ElapsedTime m_elapsed;
  size_t m_bytesLeft;
};

HookConnection::HookConnection(const std::wstring& module, const HookLimits& limits, StopQuery stop)
    : m_limits(limits), m_stop(std::move(stop)) {
  Connect(module);
}

void HookConnection::Connect(const std::wstring& module) {
  m_client.reset();
  m_client.emplace(module, ChannelKind::kLocal, m_limits.stepMilliseconds, m_stop);
}

// Sends the command's number and then does the rest of it, whose failures are no failure.
ResultCode HookConnection::Run(uint32_t number, const Command& rest) {
  if (Failed(Status())) {
    return Status() == kModuleUnreachable ? kOk : kFail;
  }
  Conversation conversation(*m_client->Channel(), m_limits, m_stop);
  if (conversation.SendNumber(number)) {
    rest(conversation);
  }
  return kOk;
}

ResultCode HookConnection::ListFolders(std::wstring* text, MailFolderList* folders) {
  return Run(kListFolders, [&](Conversation& conversation) {
    uint32_t count = 0;
    if (!conversation.ReceiveFirstText(text) || !conversation.ReceiveNumber(&count)) {
      return;
    }
    std::wstring folder;
    for (uint32_t i = 0; i < count && conversation.ReceiveText(&folder); ++i) {
      folders->push_back(DecodeFolderText(folder));
    }
  });
}

ResultCode HookConnection::LookUpFolder(uint32_t index, MailFolderRef* folder) {
  *folder = {};
  return Run(kLookUpFolder, [&](Conversation& conversation) {
    std::wstring text;
    if (conversation.SendNumber(index) && conversation.ReceiveFirstText(&text)) {
      *folder = DecodeFolderText(text);
    }
  });
}

ResultCode HookConnection::ListTexts(uint32_t number, AddressSet* addresses) {
  return Run(number, [&](Conversation& conversation) {
    uint32_t count = 0;
    if (!conversation.ReceiveFirstNumber(&count)) {
      return;
    }
    std::wstring address;
    for (uint32_t i = 0; i < count && conversation.ReceiveText(&address); ++i) {
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
  return Run(kMakeFolder, [&](Conversation& conversation) {
    std::wstring text;
    if (conversation.SendText(name) && conversation.SendText(EncodeFolderText(parent)) &&
        conversation.ReceiveFirstText(&text)) {
      *created = DecodeFolderText(text);
    }
  });
}

ResultCode HookFirst(bool useHook, const std::wstring& module,
                     const std::function<HookOutcome(HookConnection& hook)>& ask,
                     const std::function<ResultCode()>& store, const HookLimits& limits,
                     const StopQuery& stop) {
  HookOutcome outcome = HookOutcome::kAskStore;
  if (useHook) {
    HookConnection hook(module, limits, stop);
    outcome = ask(hook);
  }
  switch (outcome) {
    case HookOutcome::kDone:
      return kOk;
    case HookOutcome::kFailed:
      return kFail;
    case HookOutcome::kAskStore:
      break;
  }
  return store();
}

}  // namespace postmarker
