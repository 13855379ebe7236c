#include "RecordText.h"

#include <nlohmann/json.hpp>

#include "support/Text.h"

namespace postmarker {
namespace {

using Json = nlohmann::ordered_json;

Json FolderAsJson(const MailFolderRef& folder) {
  return {{"name", NarrowUtf8(folder.name)},
          {"firstId", NarrowUtf8(Widen(folder.firstId))},
          {"secondId", NarrowUtf8(Widen(folder.secondId))},
          {"flag", folder.flag}};
}

Json TrainingAsJson(const TrainFolderMap& folders) {
  Json map = Json::object();
  for (const auto& [id, entry] : folders) {
    map[NarrowUtf8(id)] = {{"folder", FolderAsJson(entry.folder)},
                           {"checkState", entry.checkState}};
  }
  return map;
}

Json RequestAsJson(int32_t result, const WizardRequest& request) {
  Json folders = Json::array();
  for (const MailFolderRef& folder : request.folders) {
    folders.push_back(FolderAsJson(folder));
  }
  Json addresses = Json::array();
  for (const std::wstring& address : request.prefillAddresses) {
    addresses.push_back(NarrowUtf8(address));
  }
  return {{"result", result},
          {"clientName", NarrowUtf8(request.clientName)},
          {"useWindowHook", request.useWindowHook},
          {"offerTraining", request.offerTraining},
          {"moveEmails", request.moveEmails},
          {"addBlocked", request.addBlocked},
          {"addUnblocked", request.addUnblocked},
          {"sheetWindowIsGone", request.sheetWindow == nullptr},
          {"folders", folders},
          {"spamFolder", FolderAsJson(request.spamFolder)},
          {"outlookCookie", request.outlookCookie},
          {"prefillAddresses", addresses},
          {"trainFoldersFirst", TrainingAsJson(request.trainFoldersFirst)},
          {"trainFoldersSecond", TrainingAsJson(request.trainFoldersSecond)}};
}

}  // namespace

std::string RecordAsJson(int32_t result, const WizardRequest& request) {
  return RequestAsJson(result, request).dump(2) + "\n";
}

std::string RecordAsText(int32_t result, const WizardRequest& request) {
  std::string text;
  const auto line = [&text](const char* name, const std::string& value) {
    text.append(name).append(": ").append(value).append("\n");
  };
  const char* const meaning = result == 12325 ? " (finished)" : result == 2 ? " (cancelled)" : "";
  line("Result", std::to_string(result) + meaning);
  line("Mail client", NarrowUtf8(request.clientName));
  line("Spam folder", NarrowUtf8(request.spamFolder.name));
  line("Folder id", request.spamFolder.firstId);
  line("Store id", request.spamFolder.secondId);
  line("Folders read", std::to_string(request.folders.size()));
  line("Move spam", request.moveEmails != 0 ? "yes" : "no");
  line("Add blocked senders", request.addBlocked != 0 ? "yes" : "no");
  line("Add unblocked senders", request.addUnblocked != 0 ? "yes" : "no");
  line("Addresses for the whitelist", std::to_string(request.prefillAddresses.size()));
  return text;
}

}  // namespace postmarker
