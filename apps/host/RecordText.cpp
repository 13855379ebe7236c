#include "RecordText.h"

#include <algorithm>
#include <cstdint>
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
    map[NarrowUtf8(id)] = {{"folder", FolderAsJson(entry.folder)}, {"checked", entry.checked}};
  }
  return map;
}

// A window handle as a number; 0 for none.
uint64_t WindowNumber(const HWND__* window) {
  return reinterpret_cast<uintptr_t>(window);
}

const char* YesOrNo(bool value) {
  return value ? "yes" : "no";
}

// How many folders are checked, and a line for each folder with what its check box shows.
std::string Checked(const TrainFolderMap& folders) {
  const auto checked = std::count_if(folders.begin(), folders.end(),
                                     [](const auto& folder) { return folder.second.checked != 0; });
  std::string text = std::to_string(checked) + " of " + std::to_string(folders.size());
  for (const auto& [id, entry] : folders) {
    text.append(entry.checked != 0 ? "\n  [x] " : "\n  [ ] ").append(NarrowUtf8(entry.folder.name));
  }
  return text;
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
          {"parentWindow", WindowNumber(request.parentWindow)},
          {"sheetWindow", WindowNumber(request.sheetWindow)},
          {"folders", folders},
          {"spamFolder", FolderAsJson(request.spamFolder)},
          {"hostData", request.hostData},
          {"outlookApplication", request.outlookApplication != nullptr},
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
  const char* const meaning = result == 12325 ? " (finished)" : result == 2 ? " (canceled)" : "";
  line("Result", std::to_string(result) + meaning);
  line("Mail client", NarrowUtf8(request.clientName));
  line("Window hook", YesOrNo(request.useWindowHook != 0));
  line("Training offered", YesOrNo(request.offerTraining != 0));
  line("Spam folder", NarrowUtf8(request.spamFolder.name));
  line("Folder id", request.spamFolder.firstId);
  line("Store id", request.spamFolder.secondId);
  line("Folder flag", std::to_string(request.spamFolder.flag));
  line("Folders read", std::to_string(request.folders.size()));
  line("Move spam", YesOrNo(request.moveEmails != 0));
  line("Add blocked senders", YesOrNo(request.addBlocked != 0));
  line("Add unblocked senders", YesOrNo(request.addUnblocked != 0));
  line("Addresses for the whitelist", std::to_string(request.prefillAddresses.size()));
  line("Folders to train, first page", Checked(request.trainFoldersFirst));
  line("Folders to train, second page", Checked(request.trainFoldersSecond));
  line("Owner window", std::to_string(WindowNumber(request.parentWindow)));
  line("Sheet window", std::to_string(WindowNumber(request.sheetWindow)));
  line("Host data", std::to_string(request.hostData));
  line("Outlook of the host", YesOrNo(request.outlookApplication != nullptr));
  line("Outlook cookie", std::to_string(request.outlookCookie));
  return text;
}

}  // namespace postmarker
