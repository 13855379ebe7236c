// live-folders and store-id: what the product finds in the stores of Windows Live Mail and its
// older relatives.
#include <optional>
#include <string>

#include "Commands.h"
#include "clients/StoreIdSearch.h"
#include "clients/livemail/LiveStore.h"
#include "support/MappedFile.h"
#include "support/Text.h"

namespace postmarker::inspect {

bool RunLiveFolders(const Arguments& arguments, JsonWriter* json) {
  MailFolderList folders;
  livemail::ListStoreFolders(WidenUtf8(arguments.texts.front()), {}, &folders);
  if (json == nullptr) {
    return true;
  }
  json->BeginArray();
  for (const MailFolderRef& folder : folders) {
    json->BeginObject();
    json->Key("name").Wide(folder.name);
    json->Key("firstId").Narrow(folder.firstId);
    json->Key("secondId").Narrow(folder.secondId);
    json->Key("flag").Number(folder.flag);
    json->EndObject();
  }
  json->EndArray();
  return true;
}

bool RunStoreId(const Arguments& arguments, JsonWriter* json) {
  const MappedFile file(WidenUtf8(arguments.texts.front()), 1);
  const std::optional<std::string> id =
      arguments.Has("--dbx") ? DbxStoreId(file.Bytes()) : FindStoreId(file.Bytes());
  if (json == nullptr) {
    return true;
  }
  constexpr char kDigits[] = "0123456789abcdef";
  std::string digits;
  for (const char c : id.value_or(std::string())) {
    digits.push_back(kDigits[static_cast<uint8_t>(c) >> 4U]);
    digits.push_back(kDigits[static_cast<uint8_t>(c) & 15U]);
  }
  json->BeginObject();
  json->Key("result").Number(id ? kOk : kFail);
  json->Key("id").Narrow(digits);
  json->EndObject();
  return true;
}

}  // namespace postmarker::inspect
