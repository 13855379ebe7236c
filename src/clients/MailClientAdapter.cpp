#include "clients/MailClientAdapter.h"

namespace postmarker {

void MailClientAdapter::ListFolders(MailFolderList* /*folders*/,
                                    const ClientSession& /*session*/) const {}

MailFolderRef MailClientAdapter::FindDefaultFolder(const MailFolderList& /*folders*/,
                                                   const ClientSession& /*session*/) const {
  return {};
}

bool MailClientAdapter::CanCreateFolder() const {
  return true;
}

ResultCode MailClientAdapter::CreateFolder(const std::wstring& /*name*/,
                                           const MailFolderRef& /*parent*/,
                                           const ClientSession& /*session*/,
                                           MailFolderRef* /*created*/) const {
  return kFail;
}

ResultCode MailClientAdapter::CollectSentAddresses(AddressSet* /*addresses*/,
                                                   const ClientSession& /*session*/,
                                                   const ProgressCallbacks* /*callbacks*/) const {
  return kOk;
}

ResultCode MailClientAdapter::HarvestAddresses(AddressSet* addresses,
                                               const ClientSession& session) const {
  return CollectSentAddresses(addresses, session, nullptr);
}

bool MailClientAdapter::ReadStoreId(std::string* /*storeId*/) const {
  return false;
}

void MailClientAdapter::SetMoveMails(bool /*move*/) const {}

std::unique_ptr<ClientHold> MailClientAdapter::MakeHold() const {
  return nullptr;
}

}  // namespace postmarker
