#include "clients/thunderbird/ThunderbirdAdapter_win.h"

#include <exception>
#include <utility>

#include "clients/thunderbird/TbCommands.h"
#include "clients/thunderbird/ThunderbirdConnection_win.h"
#include "support/Text.h"
#include "support/UniqueHandle.h"

namespace postmarker {
namespace {

constexpr std::wstring_view kTrash = L"Local Folders\\Trash";
constexpr std::wstring_view kTrashOfStore = L"\\\\Local Folders\\Trash";

// Runs `operation` on a connection and releases it. `unreachable` is the result without a
// connection; want of memory fails.
template <class Operation>
ResultCode WithThunderbird(ResultCode unreachable, Operation operation) {
  try {
    ThunderbirdConnection connection;
    if (Failed(ConnectOrLaunch(&connection, kThunderbirdStartMilliseconds))) {
      return unreachable;
    }
    const ScopeExit release([&connection] { (void)ReleaseThunderbird(&connection); });
    return operation(&connection);
  } catch (const std::exception&) {
    return kFail;
  }
}

class ThunderbirdHold : public ClientHold {
 public:
  ThunderbirdHold() = default;
  ~ThunderbirdHold() override {
    if (Succeeded(m_result)) {
      (void)ReleaseThunderbird(&m_connection);
    }
  }

  void Connect() override {
    try {
      m_result = ConnectOrLaunch(&m_connection, kThunderbirdStartMilliseconds);
    } catch (const std::exception&) {
      m_result = kFail;
    }
  }

 private:
  ThunderbirdConnection m_connection;
  ResultCode m_result = kNullPointer;
};

}  // namespace

void ThunderbirdAdapter::ListFolders(MailFolderList* folders,
                                     const ClientSession& /*session*/) const {
  (void)WithThunderbird(kFail, [&](ThunderbirdConnection* connection) {
    return thunderbird::GiveAllFolders(connection, folders, kThunderbirdCommandSeconds);
  });
}

MailFolderRef ThunderbirdAdapter::FindDefaultFolder(const MailFolderList& folders,
                                                    const ClientSession& /*session*/) const {
  MailFolderRef found;
  for (const MailFolderRef& folder : folders) {
    if (EqualNoCase(folder.name, kTrash) || EqualNoCase(folder.name, kTrashOfStore)) {
      found = folder;
    }
  }
  return found;
}

ResultCode ThunderbirdAdapter::CreateFolder(const std::wstring& name, const MailFolderRef& parent,
                                            const ClientSession& /*session*/,
                                            MailFolderRef* created) const {
  return WithThunderbird(kNullPointer, [&](ThunderbirdConnection* connection) {
    MailFolderList answer;
    const ResultCode result =
        thunderbird::AddNewFolder(connection, parent, name, &answer, kThunderbirdCommandSeconds);
    if (!answer.empty()) {
      *created = std::move(answer.front());
    }
    return result;
  });
}

ResultCode ThunderbirdAdapter::CollectSentAddresses(AddressSet* addresses,
                                                    const ClientSession& /*session*/,
                                                    const ProgressCallbacks* callbacks) const {
  return WithThunderbird(kFail, [&](ThunderbirdConnection* connection) {
    connection->WatchCancel(callbacks);
    int32_t count = 0;
    ResultCode result =
        thunderbird::SentItemsEntries(connection, &count, kThunderbirdCommandSeconds);
    if (Succeeded(result) && !thunderbird::IsCancelled(callbacks)) {
      result = thunderbird::GiveContacts(connection, addresses, kThunderbirdCommandSeconds);
    }
    if (Succeeded(result) && !thunderbird::IsCancelled(callbacks)) {
      result = thunderbird::GiveAddressesFromSentItems(connection, addresses, count, callbacks,
                                                       kThunderbirdCommandSeconds);
    }
    return result;
  });
}

ResultCode ThunderbirdAdapter::HarvestAddresses(AddressSet* addresses,
                                                const ClientSession& /*session*/) const {
  return WithThunderbird(kFail, [&](ThunderbirdConnection* connection) {
    ResultCode result =
        thunderbird::GiveContacts(connection, addresses, kThunderbirdCommandSeconds);
    if (Succeeded(result)) {
      result = thunderbird::GiveAddressesFromSentItems(connection, addresses, 0, nullptr,
                                                       kThunderbirdCommandSeconds);
    }
    return result;
  });
}

void ThunderbirdAdapter::SetMoveMails(bool move) const {
  (void)WithThunderbird(kFail, [&](ThunderbirdConnection* connection) {
    return thunderbird::SetMoveMails(connection, move, kThunderbirdCommandSeconds);
  });
}

std::unique_ptr<ClientHold> ThunderbirdAdapter::MakeHold() const {
  return std::make_unique<ThunderbirdHold>();
}

}  // namespace postmarker
