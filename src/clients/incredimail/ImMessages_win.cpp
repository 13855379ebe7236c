#include "clients/incredimail/ImMessages_win.h"

#include <set>
#include <utility>

#include "clients/incredimail/ImFolderFile.h"
#include "clients/incredimail/ImHeaderFile.h"
#include "clients/incredimail/ImHeaderTable.h"
#include "clients/incredimail/ImIdentity_win.h"
#include "clients/incredimail/ImMessageFile.h"
#include "clients/incredimail/ImPaths.h"
#include "support/MappedFile.h"

namespace postmarker::incredimail {
namespace {

ResultCode ListRows(const std::wstring& containerId, ImHeaderMap* headers,
                    const std::wstring& identityName, const std::wstring& database) {
  std::set<std::wstring> ids;
  const ResultCode result = ListContainerMessages(containerId, &ids, database);
  for (const std::wstring& id : ids) {
    ImHeader header;
    if (Succeeded(ReadHeader(&header, id, identityName))) {
      headers->insert_or_assign(id, std::move(header));
    }
  }
  return result;
}

ResultCode ListRecords(const std::wstring& containerId, ImHeaderMap* headers,
                       const std::wstring& identityDirectory) {
  std::wstring path;
  std::wstring fileName;
  const ResultCode result = ResolveOlderContainer(identityDirectory, containerId, &path, &fileName);
  PacedStop never;
  return Failed(result) ? result
                        : ReadHeaderFile(path, MessageStoreFolder(identityDirectory), fileName,
                                         &never, headers);
}

}  // namespace

ResultCode ReadHeader(ImHeader* header, const std::wstring& headerId,
                      const std::wstring& identityFilter) {
  ResultCode result = kFail;
  for (ImIdentityWalker walker; Succeeded(walker.Status()); walker.Next()) {
    if (!PassesFilter(walker.Name(), identityFilter) ||
        !CanOpenForReading(ContainersDatabasePath(walker.Path()))) {
      continue;
    }
    result = ReadHeaderRow(header, headerId, walker.Path());
    if (Succeeded(result)) {
      break;
    }
  }
  return result;
}

ResultCode ReadMessageContainerId(const std::wstring& headerId, std::wstring* containerId,
                                  const std::wstring& identityFilter) {
  ImHeader header;
  const ResultCode result = ReadHeader(&header, headerId, identityFilter);
  if (Succeeded(result)) {
    *containerId = header.ContainerID;
  }
  return result;
}

ResultCode ListContainerHeaders(const std::wstring& containerId, ImHeaderMap* headers,
                                const std::wstring& identityFilter) {
  ResultCode result = kFail;
  for (ImIdentityWalker walker; Succeeded(walker.Status()); walker.Next()) {
    if (!PassesFilter(walker.Name(), identityFilter)) {
      continue;
    }
    const std::wstring database = ContainersDatabasePath(walker.Path());
    if (CanOpenForReading(database)) {
      if (Succeeded(ListRows(containerId, headers, walker.Name(), database))) {
        result = kOk;
      }
    } else if (Succeeded(ListRecords(containerId, headers, walker.Path()))) {
      return kOk;
    }
  }
  return result;
}

ResultCode AssembleMessage(const std::wstring& headerId, std::unique_ptr<char[]>* buffer,
                           uint32_t* length, const ImHeader* header) {
  buffer->reset();
  *length = 0;
  ImHeader found;
  if (header == nullptr) {
    const ResultCode result = ReadHeader(&found, headerId, std::wstring());
    if (Failed(result)) {
      return result;
    }
    header = &found;
  }
  ImMessage message;
  const ResultCode result = postmarker::AssembleMessage(*header, &message);
  *buffer = std::move(message.buffer);
  *length = message.length;
  return result;
}

}  // namespace postmarker::incredimail
