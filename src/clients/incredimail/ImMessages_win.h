// Single messages of the identities' stores.
// Each operation reads the registry and the stores and keeps nothing; all of them may be
// called from any thread. An identity filter is the name of an identity, whatever its case, or
// empty for all.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "clients/incredimail/ImHeader.h"
#include "support/Results.h"

namespace postmarker::incredimail {

// Reads the header of a message from the folder database of the first identity that has it. On
// failure *header is as it was.
ResultCode ReadHeader(ImHeader* header, const std::wstring& headerId,
                      const std::wstring& identityFilter);

// The id of the folder that a message lies in. On failure *containerId is as it was.
ResultCode ReadMessageContainerId(const std::wstring& headerId, std::wstring* containerId,
                                  const std::wstring& identityFilter);

// Adds the headers of a folder's messages from every identity's folder database, up to the first
// identity with an older store that has the folder. Fails if no store could be read.
ResultCode ListContainerHeaders(const std::wstring& containerId, ImHeaderMap* headers,
                                const std::wstring& identityFilter);

// Rebuilds a message: that of `header`, or, where it is null, that of the id. *buffer gets *length
// bytes with a NUL after them. On failure they are null and 0.
ResultCode AssembleMessage(const std::wstring& headerId, std::unique_ptr<char[]>* buffer,
                           uint32_t* length, const ImHeader* header);

}  // namespace postmarker::incredimail
