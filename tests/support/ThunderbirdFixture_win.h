// The stand-in for Thunderbird, shared by the tests of a suite.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "clients/thunderbird/TbCommands.h"
#include "clients/thunderbird/ThunderbirdAdapter_win.h"
#include "clients/thunderbird/ThunderbirdConnection_win.h"
#include "support/ThunderbirdInstallation_win.h"

namespace postmarker::test {

inline constexpr int32_t kQuickLimit = 1;

inline constexpr char kMailbox[] = R"({
  "folders": [
    {"name": "Local Folders", "id": "1", "store": "local", "children": [
      {"name": "Trash", "id": "2", "store": "local"},
      {"name": "Входящие", "id": "3", "store": "local", "flag": false, "children": [
        {"name": "Grüße", "id": "4", "store": "local"}]}]},
    {"name": "anna@post.example", "id": "5", "store": "imap", "children": [
      {"name": "Inbox", "id": "6", "store": "imap"}]}],
  "contacts": ["Ben@Post.Example", "clara@post.example"],
  "sent": ["Дмитрий <dmitri@post.example>, \"Bond, James\" <BOND@mi6.example>",
           "clara@post.example"],
  "moveMails": false})";

// That mailbox, with scripts for commands.
inline std::string MailboxWith(const std::string& commands) {
  std::string json = kMailbox;
  return json.replace(json.rfind('}'), 1, ", \"commands\": " + commands + "}");
}

inline std::chrono::milliseconds TimeOf(const std::function<void()>& action) {
  const auto start = std::chrono::steady_clock::now();
  action();
  return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() -
                                                               start);
}

// One stand-in for all tests, which runs as if a person had started it, unless a test ends it.
class ThunderbirdTest : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    s_client = std::make_unique<ThunderbirdInstallation>();
    s_client->Register();
  }
  static void TearDownTestSuite() { s_client.reset(); }

  void SetUp() override {
    Client().SetMailbox(kMailbox);
    if (!Client().IsRunning()) {
      Client().ClearJournal();
      Client().Start();
    }
  }

  static ThunderbirdInstallation& Client() { return *s_client; }

  // As if nobody had started it.
  static void End() {
    Client().Kill();
    Client().ClearJournal();
  }

  static std::unique_ptr<ThunderbirdConnection> Connect() {
    auto connection = std::make_unique<ThunderbirdConnection>();
    EXPECT_EQ(ConnectOrLaunch(connection.get(), kThunderbirdStartMilliseconds), kOk);
    return connection;
  }

  // What arrives of the folders within a second.
  static std::vector<std::wstring> FolderNames() {
    MailFolderList folders;
    EXPECT_EQ(thunderbird::GiveAllFolders(Connect().get(), kQuickLimit, &folders), kOk);
    std::vector<std::wstring> names;
    for (const MailFolderRef& folder : folders) {
      names.push_back(folder.name);
    }
    return names;
  }

  static MailFolderList AllFolders() {
    MailFolderList folders;
    ThunderbirdAdapter().ListFolders({}, &folders);
    return folders;
  }

 private:
  static inline std::unique_ptr<ThunderbirdInstallation> s_client;
};

}  // namespace postmarker::test
