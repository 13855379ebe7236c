// folder-text: the text in which a folder crosses to the modules inside the clients.
#include "Commands.h"
#include "ipc/FolderText.h"
#include "support/Text.h"

namespace postmarker::inspect {
namespace {

bool Encode(const std::vector<std::string>& texts, JsonWriter* json) {
  if (texts.size() != 5 || (texts[1] != "0" && texts[1] != "1")) {
    return false;
  }
  const std::wstring text = EncodeFolderText({WidenUtf8(texts[4]), Narrow(WidenUtf8(texts[2])),
                                              Narrow(WidenUtf8(texts[3])), texts[1] == "1"});
  if (json != nullptr) {
    json->BeginObject().Key("text").Wide(text).EndObject();
  }
  return true;
}

bool Decode(const std::vector<std::string>& texts, JsonWriter* json) {
  if (texts.size() != 2) {
    return false;
  }
  const MailFolderRef folder = DecodeFolderText(WidenUtf8(texts[1]));
  if (json != nullptr) {
    json->BeginObject();
    json->Key("flag").Number(folder.flag);
    json->Key("firstId").Narrow(folder.firstId);
    json->Key("secondId").Narrow(folder.secondId);
    json->Key("name").Wide(folder.name);
    json->EndObject();
  }
  return true;
}

}  // namespace

bool RunFolderText(const Arguments& arguments, JsonWriter* json) {
  const std::string& direction = arguments.texts.front();
  return (direction == "encode" && Encode(arguments.texts, json)) ||
         (direction == "decode" && Decode(arguments.texts, json));
}

}  // namespace postmarker::inspect
