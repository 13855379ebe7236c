// Which engine reads databases on this machine.
#pragma once

#include "clients/livemail/JetApi.h"

namespace postmarker {

// The platform's engine where there is one that works; otherwise the reader of the file format
// (EseJetApi). Decided at the first call and kept for the life of the process. From any thread.
const JetApi& MachineJetApi();

}  // namespace postmarker
