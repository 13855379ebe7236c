#include "RecordText.h"

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

namespace postmarker {
namespace {

using testing::HasSubstr;

// A record in which no field is what it is by default.
WizardRequest FullRecord() {
  WizardRequest request;
  request.clientName = L"Plain";
  request.useWindowHook = 1;
  request.offerTraining = 1;
  request.moveEmails = 1;
  request.addBlocked = 1;
  request.addUnblocked = 1;
  request.parentWindow = reinterpret_cast<HWND__*>(uintptr_t{81});
  request.sheetWindow = reinterpret_cast<HWND__*>(uintptr_t{82});
  request.folders = {{L"one", "1", "s", 1}};
  request.spamFolder = {L"two", "2", "s", 7};
  request.hostData = 83;
  request.outlookApplication = reinterpret_cast<IUnknown*>(uintptr_t{84});
  request.outlookCookie = 85;
  request.prefillAddresses = {L"a@b.org"};
  request.trainFoldersFirst[L"1"] = {{L"one", "1", "s", 1}, 1};
  request.trainFoldersSecond[L"2"] = {{L"two", "2", "s", 7}, 0};
  return request;
}

TEST(RecordText, JsonHoldsEveryFieldOfTheRecord) {
  const auto json = nlohmann::json::parse(RecordAsJson(12325, FullRecord()));
  const nlohmann::json folder = {{"name", "two"}, {"firstId", "2"}, {"secondId", "s"}, {"flag", 7}};
  const nlohmann::json first = {{"name", "one"}, {"firstId", "1"}, {"secondId", "s"}, {"flag", 1}};
  const nlohmann::json expected = {
      {"result", 12325},
      {"clientName", "Plain"},
      {"useWindowHook", 1},
      {"offerTraining", 1},
      {"moveEmails", 1},
      {"addBlocked", 1},
      {"addUnblocked", 1},
      {"parentWindow", 81},
      {"sheetWindow", 82},
      {"folders", nlohmann::json::array({first})},
      {"spamFolder", folder},
      {"hostData", 83},
      {"outlookApplication", true},
      {"outlookCookie", 85},
      {"prefillAddresses", nlohmann::json::array({"a@b.org"})},
      {"trainFoldersFirst", {{"1", {{"folder", first}, {"checked", 1}}}}},
      {"trainFoldersSecond", {{"2", {{"folder", folder}, {"checked", 0}}}}}};
  EXPECT_EQ(json, expected);
}

TEST(RecordText, TextHasALineForEveryField) {
  const std::string text = RecordAsText(2, FullRecord());
  for (const char* const line : {"Result: 2 (canceled)\n",
                                 "Mail client: Plain\n",
                                 "Window hook: yes\n",
                                 "Training offered: yes\n",
                                 "Spam folder: two\n",
                                 "Folder id: 2\n",
                                 "Store id: s\n",
                                 "Folder flag: 7\n",
                                 "Folders read: 1\n",
                                 "Move spam: yes\n",
                                 "Add blocked senders: yes\n",
                                 "Add unblocked senders: yes\n",
                                 "Addresses for the whitelist: 1\n",
                                 "Folders to train, first page: 1 of 1\n  [x] one\n",
                                 "Folders to train, second page: 0 of 1\n  [ ] two\n",
                                 "Owner window: 81\n",
                                 "Sheet window: 82\n",
                                 "Host data: 83\n",
                                 "Outlook of the host: yes\n",
                                 "Outlook cookie: 85\n"}) {
    EXPECT_THAT(text, HasSubstr(line));
  }
}

}  // namespace
}  // namespace postmarker
