// pipe-folder: one folder as Thunderbird's extension tells of it.
#include "Commands.h"
#include "clients/thunderbird/TbRecords.h"
#include "support/Text.h"

namespace postmarker::inspect {

bool RunPipeFolder(const Arguments& arguments, JsonWriter* json) {
  const MailFolderRef folder = thunderbird::ParseFolderRecord(WidenUtf8(arguments.texts.front()));
  if (json != nullptr) {
    json->BeginObject();
    json->Key("name").Wide(folder.name);
    json->Key("firstId").Narrow(folder.firstId);
    json->Key("secondId").Narrow(folder.secondId);
    json->Key("flag").Number(folder.flag);
    json->EndObject();
  }
  return true;
}

}  // namespace postmarker::inspect
