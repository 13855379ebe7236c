// The engine's functions over the reader of the file format.
#pragma once

#include "clients/livemail/JetApi.h"

namespace postmarker {

// For machines without the engine. Files are only read, created indexes stand in memory, log files
// are ignored, and a database that was not closed cleanly is read from a copy. All functions may be
// called from several threads at once, as the engine's; they never throw.
const JetApi& EseJetApi();

}  // namespace postmarker
