// The older store's list of the messages of a folder, a file *.imh: records one after the other.
#pragma once

#include <string>
#include <string_view>

#include "clients/PacedStop.h"
#include "clients/incredimail/ImHeader.h"
#include "support/Results.h"

namespace postmarker {

// Adds the messages of a list; one with an id that is there already replaces it. `storeDirectory`
// and `fileName` become each message's StorePath and FileName. A record that is cut short ends the
// list, as does `stop`; those before it stay.
// Deliberate: a record of a kind that is not known counts or is passed over as the one before it.
// The client marks the first of a run of deleted messages and not the others.
void ParseHeaderFile(std::string_view bytes, const std::wstring& storeDirectory,
                     const std::wstring& fileName, PacedStop* stop, ImHeaderMap* headers);

// The same of a file. Fails if it can't be read.
ResultCode ReadHeaderFile(const std::wstring& path, const std::wstring& storeDirectory,
                          const std::wstring& fileName, PacedStop* stop, ImHeaderMap* headers);

}  // namespace postmarker
