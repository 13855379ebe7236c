// The client's table of message headers, in its folder database.
#pragma once

#include <set>
#include <string>

#include "clients/incredimail/ImHeader.h"
#include "support/Results.h"

namespace postmarker {

// Reads the row of one message of an identity, whose folder database exists. Fails if there is
// none; *header is then as it was. `id` stands in the statement as it is.
ResultCode ReadHeaderRow(ImHeader* header, const std::wstring& id,
                         const std::wstring& identityDirectory);

// Adds the ids of the messages of a folder. Fails if the database, which exists, can't be read.
// `containerId` stands in the statement as it is.
ResultCode ListContainerMessages(const std::wstring& containerId, std::set<std::wstring>* ids,
                                 const std::wstring& database);

}  // namespace postmarker
