#include "clients/thunderbird/ThunderbirdAdapter_win.h"

#include <exception>
#include <utility>

#include "clients/Cancel.h"
#include "clients/thunderbird/TbCommands.h"
#include "clients/thunderbird/ThunderbirdConnection_win.h"
#include "support/Text.h"
#include "support/UniqueHandle.h"

namespace postmarker {
namespace {

constexpr std::wstring_view kTrash = L"Local Folders\\Trash";
constexpr std::wstring_view kTrashOfStore = L"\\\\Local Folders\\Trash";

// Runs `operation` on a connection, which `stop` ends, and releases it. `unreachable` is the result
// without a connection; want of memory fails.
template <class Operation>
ResultCode WithThunderbird(const StopQuery& stop, ResultCode unreachable, Operation operation) {
  try {
    ThunderbirdConnection connection(stop);
    if (Failed(ConnectOrLaunch(&connection, kThunderbirdStartMilliseconds))) {
      return unreachable;
    }
    const ScopeExit release([&connection] { (void)ReleaseThunderbird(&connection); });
    return operation(&connection);
  } catch (const std::exception&) {
    return kFail;
  }
}

class ThunderbirdHold final : public ClientHold {
 public:
  ThunderbirdHold() = default;
  ~ThunderbirdHold() override { Disconnect(); }

  // Deliberate: a second call connects again, and what the last call came to stands. A client that
  // was started by an earlier one is then taken for one that ran before.
  void Connect() override {
    try {
      m_result = ConnectOrLaunch(&m_connection, kThunderbirdStartMilliseconds);
    } catch (const std::exception&) {
      m_result = kFail;
    }
  }

  void Disconnect() override {
    if (Succeeded(std::exchange(m_result, kNullPointer))) {
      (void)ReleaseThunderbird(&m_connection);
    }
  }

 private:
  ThunderbirdConnection m_connection;
  ResultCode m_result = kNullPointer;
};

}  // namespace

void ThunderbirdAdapter::ListFolders(const ClientSession& session, MailFolderList* folders) const {
  (void)WithThunderbird(session.stop, kFail, [&](ThunderbirdConnection* connection) {
    return thunderbird::GiveAllFolders(connection, kThunderbirdCommandSeconds, folders);
  });
}

MailFolderRef ThunderbirdAdapter::FindDefaultFolder(const ClientSession& /*session*/,
                                                    const MailFolderList& folders) const {
  MailFolderRef found;
  for (const MailFolderRef& folder : folders) {
    if (EqualNoCase(folder.name, kTrash) || EqualNoCase(folder.name, kTrashOfStore)) {
      found = folder;
    }
  }
  return found;
}

ResultCode ThunderbirdAdapter::CreateFolder(const ClientSession& session, const std::wstring& name,
                                            const MailFolderRef& parent,
                                            MailFolderRef* created) const {
  return WithThunderbird(session.stop, kNullPointer, [&](ThunderbirdConnection* connection) {
    MailFolderList answer;
    const ResultCode result =
        thunderbird::AddNewFolder(connection, name, parent, kThunderbirdCommandSeconds, &answer);
    if (!answer.empty()) {
      *created = std::move(answer.front());
    }
    return result;
  });
}

ResultCode ThunderbirdAdapter::CollectSentAddresses(const ClientSession& session,
                                                    const ProgressCallbacks* callbacks,
                                                    AddressSet* addresses) const {
  const StopQuery stop = StopOrCancel(session, callbacks);
  const ResultCode result = WithThunderbird(stop, kFail, [&](ThunderbirdConnection* connection) {
    int32_t count = 0;
    ResultCode step = thunderbird::SentItemsEntries(connection, kThunderbirdCommandSeconds, &count);
    if (Succeeded(step) && !stop()) {
      step = thunderbird::GiveContacts(connection, kThunderbirdCommandSeconds, addresses);
    }
    if (Succeeded(step) && !stop()) {
      step = thunderbird::GiveAddressesFromSentItems(connection, count, callbacks,
                                                     kThunderbirdCommandSeconds, addresses);
    }
    return step;
  });
  return Failed(result) && stop() ? kOk : result;
}

ResultCode ThunderbirdAdapter::HarvestAddresses(const ClientSession& session,
                                                AddressSet* addresses) const {
  const ResultCode result =
      WithThunderbird(session.stop, kFail, [&](ThunderbirdConnection* connection) {
        ResultCode step =
            thunderbird::GiveContacts(connection, kThunderbirdCommandSeconds, addresses);
        if (Succeeded(step) && !ShouldStop(session.stop)) {
          step = thunderbird::GiveAddressesFromSentItems(connection, 0, nullptr,
                                                         kThunderbirdCommandSeconds, addresses);
        }
        return step;
      });
  return Failed(result) && ShouldStop(session.stop) ? kOk : result;
}

void ThunderbirdAdapter::SetMoveMails(bool move) const {
  (void)WithThunderbird({}, kFail, [&](ThunderbirdConnection* connection) {
    return thunderbird::SetMoveMails(connection, move, kThunderbirdCommandSeconds);
  });
}

std::shared_ptr<ClientHold> ThunderbirdAdapter::MakeHold(WizardRequest* /*request*/) const {
  return std::make_shared<ThunderbirdHold>();
}

}  // namespace postmarker
