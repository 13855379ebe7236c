#include "clients/MailClientAdapter.h"

namespace postmarker {

ResultCode ClientHold::EnsureSession() {
  return kOk;
}

ClientSession ClientHold::OpenSession() {
  return {};
}

void MailClientAdapter::ListFolders(const ClientSession& /*session*/,
                                    MailFolderList* /*folders*/) const {}

MailFolderRef MailClientAdapter::FindDefaultFolder(const ClientSession& /*session*/,
                                                   const MailFolderList& /*folders*/) const {
  return {};
}

bool MailClientAdapter::CanCreateFolder() const {
  return true;
}

ResultCode MailClientAdapter::CreateFolder(const ClientSession& /*session*/,
                                           const std::wstring& /*name*/,
                                           const MailFolderRef& /*parent*/,
                                           MailFolderRef* /*created*/) const {
  return kFail;
}

ResultCode MailClientAdapter::CollectSentAddresses(const ClientSession& /*session*/,
                                                   const ProgressCallbacks* /*callbacks*/,
                                                   AddressSet* /*addresses*/) const {
  return kOk;
}

ResultCode MailClientAdapter::HarvestAddresses(const ClientSession& session,
                                               AddressSet* addresses) const {
  return CollectSentAddresses(session, nullptr, addresses);
}

bool MailClientAdapter::ReadStoreId(std::string* /*storeId*/) const {
  return false;
}

void MailClientAdapter::SetMoveMails(bool /*move*/) const {}

std::shared_ptr<ClientHold> MailClientAdapter::MakeHold(WizardRequest* /*request*/) const {
  return nullptr;
}

}  // namespace postmarker
