#include "clients/ClientLink.h"

#include <utility>

namespace postmarker {

ClientSession ClientLink::OpenSession(StopQuery stop) const {
  ClientSession session = hold ? hold->OpenSession() : ClientSession();
  session.stop = std::move(stop);
  return session;
}

ResultCode ClientLink::CollectSentAddresses(const ProgressCallbacks* callbacks, StopQuery stop,
                                            AddressSet* addresses) const {
  if (adapter == nullptr) {
    return kNullPointer;
  }
  return adapter->CollectSentAddresses(OpenSession(std::move(stop)), callbacks, addresses);
}

}  // namespace postmarker
