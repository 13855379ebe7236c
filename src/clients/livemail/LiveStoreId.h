// The id of a Windows Live Mail store.
#pragma once

#include <optional>
#include <string>

#include "clients/livemail/JetProvider.h"

namespace postmarker::livemail {

// The eight bytes of the id: from the database at `databasePath` or, if the engine can't tell it
// (as when the client holds the file), by the search of StoreIdSearch.h in the file's bytes or
// those of its backup. Nothing if all of that fails. Paths are UTF-16. Any thread.
std::optional<std::string> ReadLiveMessageStoreId(const std::wstring& databasePath,
                                                  const std::wstring& backupPath,
                                                  const JetApi& api = MachineJetApi());

}  // namespace postmarker::livemail
