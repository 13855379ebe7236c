// What ends an adapter's operation early: the user's Cancel, and who called the operation.
#pragma once

#include "clients/MailClientAdapter.h"

namespace postmarker {

// Can anything be reported: is there a record, and a handle in it.
bool CanReport(const ProgressCallbacks* callbacks);

// Did the user stop the operation. Without a record, handle or function: no.
bool IsCancelled(const ProgressCallbacks* callbacks);

// Asks the session's stop and the record's cancel, which both must outlive the query. `callbacks`
// may be null.
StopQuery StopOrCancel(const ClientSession& session, const ProgressCallbacks* callbacks);

}  // namespace postmarker
