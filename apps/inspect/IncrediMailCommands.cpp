// imm-folders, imh, imm-message, imb and incredimail: the files of IncrediMail's stores.
#include <string>

#include "Commands.h"
#include "NumberArgument.h"
#include "clients/PacedStop.h"
#include "clients/incredimail/ImAddressFile.h"
#include "clients/incredimail/ImFolderFile.h"
#include "clients/incredimail/ImFolderTree.h"
#include "clients/incredimail/ImHeaderFile.h"
#include "clients/incredimail/ImMessageFile.h"
#include "clients/incredimail/ImStore.h"
#include "support/MappedFile.h"
#include "support/Text.h"

namespace postmarker::inspect {
namespace {

void WriteContainer(JsonWriter* json, const ImContainer& container) {
  json->WideKey(container.ContainerID).BeginObject();
  json->Key("parent").Wide(container.ParentContainerID);
  json->Key("index").Number(container.IndexInParent);
  json->Key("label").Wide(container.Label);
  json->Key("fileName").Wide(container.FileName);
  json->Key("messages").Number(container.MsgsCount);
  json->EndObject();
}

void WriteHeader(JsonWriter* json, const ImHeader& header) {
  json->WideKey(header.HeaderID).BeginObject();
  json->Key("toSender").Wide(header.ToSender);
  json->Key("fromSender").Wide(header.FromSender);
  json->Key("subject").Wide(header.Subject);
  json->Key("account").Wide(header.Account);
  json->Key("msgSize").Number(header.MsgSize);
  json->Key("lightMsgSize").Number(header.LightMsgSize);
  json->Key("msgPos").Number(header.MsgPos);
  json->EndObject();
}

// A folder with the separator that the readers want at its end.
std::wstring FolderPath(const std::string& text) {
#if defined(_WIN32)
  constexpr std::string_view kSeparators = "\\/";
#else
  constexpr std::string_view kSeparators = "/";
#endif
  std::wstring path = WidenUtf8(text);
  if (text.empty() || kSeparators.find(text.back()) == std::string_view::npos) {
    path.push_back(static_cast<wchar_t>(kSeparators.front()));
  }
  return path;
}

}  // namespace

bool RunImmFolders(const Arguments& arguments, JsonWriter* json) {
  const bool hasLabel = arguments.texts.size() > 1;
  ImContainerMap containers;
  const ResultCode result =
      ReadFolderFile(&containers, hasLabel ? WidenUtf8(arguments.texts[1]) : std::wstring(),
                     WidenUtf8(arguments.texts[0]));
  if (json != nullptr) {
    json->BeginObject();
    json->Key("result").Number(result);
    json->Key("containers").BeginObject();
    for (const ImContainer& container : containers.Containers()) {
      WriteContainer(json, container);
    }
    json->EndObject().EndObject();
  }
  return true;
}

bool RunImh(const Arguments& arguments, JsonWriter* json) {
  ImHeaderMap headers;
  PacedStop never;
  const ResultCode result =
      ReadHeaderFile(WidenUtf8(arguments.texts[0]), FolderPath(arguments.texts[1]),
                     WidenUtf8(arguments.texts[2]), &never, &headers);
  if (json != nullptr) {
    json->BeginObject();
    json->Key("result").Number(result);
    json->Key("headers").BeginObject();
    for (const auto& [id, header] : headers) {
      WriteHeader(json, header);
    }
    json->EndObject().EndObject();
  }
  return true;
}

bool RunImmMessage(const Arguments& arguments, JsonWriter* json) {
  ImHeader header;
  header.StorePath = FolderPath(arguments.texts[0]);
  header.FileName = WidenUtf8(arguments.texts[1]);
  if (!ReadNumber(arguments.texts[2], &header.MsgSize) ||
      !ReadNumber(arguments.texts[3], &header.LightMsgSize) ||
      !ReadNumber(arguments.texts[4], &header.MsgPos)) {
    return false;
  }
  ImMessage message;
  const ResultCode result = AssembleMessage(header, &message);
  if (json != nullptr) {
    json->BeginObject();
    json->Key("result").Number(result);
    json->Key("length").Number(message.length);
    json->Key("bytes").Narrow(message.Bytes());
    json->EndObject();
  }
  return true;
}

bool RunImb(const Arguments& arguments, JsonWriter* json) {
  const MappedFile file(WidenUtf8(arguments.texts.front()), 1);
  PacedStop never;
  const std::vector<std::string> entries = ParseAddressFile(file.Bytes(), &never);
  if (json != nullptr) {
    json->BeginArray();
    for (const std::string& entry : entries) {
      json->Narrow(entry);
    }
    json->EndArray();
  }
  return true;
}

bool RunIncrediMail(const Arguments& arguments, JsonWriter* json) {
  const std::wstring rootLabel = WidenUtf8(arguments.texts[1]);
  ImContainerMap containers = ReadStoredContainers(WidenUtf8(arguments.texts[0]), rootLabel);
  FillPaths(&containers, rootLabel);
  MailFolderList folders;
  AppendFolders(containers, L"", &folders);
  if (json != nullptr) {
    json->BeginArray();
    for (const MailFolderRef& folder : folders) {
      json->BeginObject();
      json->Key("name").Wide(folder.name);
      json->Key("firstId").Narrow(folder.firstId);
      json->Key("flag").Number(folder.flag);
      json->EndObject();
    }
    json->EndArray();
  }
  return true;
}

}  // namespace postmarker::inspect
