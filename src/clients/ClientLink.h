// A mail client as one run of the wizard reaches it.
#pragma once

#include <memory>

#include "clients/MailClientAdapter.h"

namespace postmarker {

// What a worker takes along of the client. Copies share the hold, so a worker may outlive the
// sheet.
struct ClientLink {
  const MailClientAdapter* adapter = nullptr;
  std::shared_ptr<ClientHold> hold;  // null if the client needs nothing

  // A session for the calling thread, which must be in an apartment. `stop` may be empty.
  [[nodiscard]] ClientSession OpenSession(StopQuery stop) const;

  // Adds the addresses that the user has written to, in a session of its own; see the adapter's
  // operation. E_POINTER without an adapter.
  ResultCode CollectSentAddresses(const ProgressCallbacks* callbacks, StopQuery stop,
                                  AddressSet* addresses) const;
};

}  // namespace postmarker
