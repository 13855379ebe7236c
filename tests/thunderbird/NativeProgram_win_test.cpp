// The native program as Thunderbird runs it, between a scripted extension and the wizard's own side
// of the pipe.
#include <windows.h>

#include <aclapi.h>
#include <gmock/gmock.h>

#include <thread>

#include "ExtensionPeer_win.h"
#include "clients/thunderbird/ThunderbirdAdapter_win.h"
#include "clients/thunderbird/ThunderbirdConnection_win.h"
#include "ipc/NamedPipeClient_win.h"
#include "ipc/ObjectSecurity_win.h"
#include "ipc/ProcessUser_win.h"
#include "support/PeerProcess_win.h"
#include "support/TempFolder.h"
#include "support/Text.h"
#include "support/ThunderbirdInstallation_win.h"

namespace postmarker::test {
namespace {

using testing::ElementsAre;

constexpr wchar_t kPipeName[] = L"\\\\.\\pipe\\TB_SPAMFILTER{47D90EE3-EF55-4f69-B0E9-BB740F0ADD6F}";
constexpr char kFolderId[] = "0123456789abcdef0123456789abcdef";

class NativeProgramTest : public testing::Test {
 protected:
  // The bridge serves the pipe in place of the stand-in, whose registration lets the wizard's side
  // look for the pipe.
  NativeProgramTest() { m_installation.Register(); }

  void SetUp() override {
    ASSERT_TRUE(WaitUntil([] {
      return ::WaitNamedPipeW(kPipeName, 1) || ::GetLastError() == ERROR_SEM_TIMEOUT;
    })) << "the bridge does not serve the pipe";
  }

  // Runs an operation of the wizard's, while this thread answers each request by `answer`.
  void Run(const std::function<void()>& operation, const std::function<void(const Json&)>& answer) {
    std::atomic<bool> isDone = false;
    std::thread worker([&] {
      operation();
      isDone = true;
    });
    while (!isDone) {
      if (const auto request = m_extension.NextRequest(50)) {
        requests.push_back(*request);
        answer(*request);
      }
    }
    worker.join();
  }

  ThunderbirdInstallation m_installation;
  ExtensionPeer m_extension;
  ThunderbirdAdapter m_adapter;
  std::vector<Json> requests;
};

TEST_F(NativeProgramTest, GivesTheWizardFoldersInAnyScript) {
  MailFolderList folders;
  Run([&] { m_adapter.ListFolders({}, &folders); },
      [&](const Json& request) {
        m_extension.Answer(request["id"],
                           {{{"path", {"Local Folders"}}, {"id", kFolderId}, {"store", "account1"}},
                            {{"path", {"Local Folders", "Entw\xC3\xBCrfe", "\xE6\xA1\x88"}},
                             {"id", kFolderId},
                             {"store", "account1"},
                             {"first", false}}});
      });
  ASSERT_EQ(folders.size(), 2U);
  EXPECT_EQ(folders[0].name, L"\\\\Local Folders");
  EXPECT_EQ(folders[0].flag, 1U);
  EXPECT_EQ(folders[1].name, L"\\\\Local Folders\\Entw\u00FCrfe\\\u6848");
  EXPECT_EQ(folders[1].firstId, kFolderId);
  EXPECT_EQ(folders[1].secondId, "account1");
  EXPECT_EQ(folders[1].flag, 0U);
}

TEST_F(NativeProgramTest, GivesManyAddressesInBatches) {
  constexpr int kBatches = 10;
  constexpr int kInABatch = 200;
  int batch = 0;
  AddressSet addresses;
  Run([&] { m_adapter.HarvestAddresses({}, &addresses); },
      [&](const Json& request) {
        if (request["command"] == "GiveContacts") {
          m_extension.Answer(request["id"], {"contact@example.com"});
          return;
        }
        Json items = Json::array();
        for (int i = 0; i < kInABatch; ++i) {
          const std::string name = std::to_string(batch) + "-" + std::to_string(i);
          items.push_back({{"to", {"\"X, Y\" <" + name + "@Example.com>"}},
                           {"cc", {name + "@cc.example.com"}},
                           {"bcc", Json::array()}});
        }
        m_extension.Answer(request["id"], items, ++batch == kBatches);
      });
  EXPECT_EQ(addresses.size(), 1U + 2 * kBatches * kInABatch);
  EXPECT_TRUE(addresses.contains(L"9-199@example.com"));
  EXPECT_TRUE(addresses.contains(L"contact@example.com"));
}

TEST_F(NativeProgramTest, MakesAFolderForTheWizard) {
  MailFolderRef created;
  Run(
      [&] {
        EXPECT_EQ(
            m_adapter.CreateFolder({}, L"Spam", {L"\\\\A\\B", kFolderId, "account1", 1}, &created),
            kOk);
      },
      [&](const Json& request) {
        m_extension.Answer(
            request["id"],
            {{{"path", request["path"]}, {"id", kFolderId}, {"store", request["store"]}}});
      });
  ASSERT_EQ(requests.size(), 1U);
  EXPECT_EQ(requests[0]["path"], (Json{"A", "B", "Spam"}));
  EXPECT_EQ(created.name, L"\\\\A\\B\\Spam");
  EXPECT_EQ(created.firstId, kFolderId);
}

TEST_F(NativeProgramTest, PassesTheMoveSettingOn) {
  Run([&] { m_adapter.SetMoveMails(true); },
      [&](const Json& request) { m_extension.Answer(request["id"], Json::array()); });
  ASSERT_EQ(requests.size(), 1U);
  EXPECT_EQ(requests[0]["command"], "SetMoveMails");
  EXPECT_EQ(requests[0]["move"], true);
}

TEST_F(NativeProgramTest, ServesSeveralClientsAtATime) {
  NamedPipeClient clients[4];
  for (NamedPipeClient& client : clients) {
    ASSERT_TRUE(client.Init(kPipeName, 4096, 0));
    ASSERT_TRUE(client.TryConnect(200, 50));
    ASSERT_TRUE(client.Write(L"GiveContacts"));
  }
  std::vector<Json> ids;
  for (size_t i = 0; i < std::size(clients); ++i) {
    const auto request = m_extension.NextRequest();
    ASSERT_TRUE(request);
    ids.push_back((*request)["id"]);
  }
  for (size_t i = ids.size(); i-- > 0;) {
    m_extension.Answer(ids[i], {"all@example.com"});
  }
  for (NamedPipeClient& client : clients) {
    for (const wchar_t* expected : {L"all@example.com", L"#####GiveContacts"}) {
      ASSERT_TRUE(WaitUntil([&] { return client.HasMessage(); }));
      std::wstring text;
      ASSERT_TRUE(client.Read(&text));
      EXPECT_EQ(text, expected);
    }
  }
}

TEST_F(NativeProgramTest, StopsTheRequestOfAClientThatLeaves) {
  for (int round = 0; round < 10; ++round) {
    NamedPipeClient client;
    ASSERT_TRUE(client.Init(kPipeName, 4096, 0));
    ASSERT_TRUE(client.TryConnect(200, 50));
    ASSERT_TRUE(client.Write(L"GiveContacts"));
    const auto request = m_extension.NextRequest();
    ASSERT_TRUE(request);
    client.Close();
    const auto stop = m_extension.NextRequest();
    ASSERT_TRUE(stop) << "round " << round;
    EXPECT_EQ((*stop)["command"], "Stop");
    EXPECT_EQ((*stop)["id"], (*request)["id"]);
  }
}

TEST_F(NativeProgramTest, LetsNobodyElseIn) {
  const FileHandle pipe(::CreateFileW(kPipeName, GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                      OPEN_EXISTING, 0, nullptr));
  ASSERT_TRUE(pipe);
  ACL* list = nullptr;
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  ASSERT_EQ(::GetSecurityInfo(pipe.Get(), SE_KERNEL_OBJECT, DACL_SECURITY_INFORMATION, nullptr,
                              nullptr, &list, nullptr, &descriptor),
            DWORD{ERROR_SUCCESS});
  const LocalMemory owner(descriptor);
  ASSERT_NE(list, nullptr);
  ASSERT_EQ(list->AceCount, 1U);
  void* entry = nullptr;
  ASSERT_TRUE(::GetAce(list, 0, &entry));
  ProcessUser user = ProcessUser::Of(::GetCurrentProcess());
  ASSERT_TRUE(user);
  EXPECT_TRUE(::EqualSid(&static_cast<ACCESS_ALLOWED_ACE*>(entry)->SidStart, user.Sid()));
}

TEST_F(NativeProgramTest, EndsWhenThunderbirdClosesItsStream) {
  m_extension.CloseInput();
  EXPECT_TRUE(m_extension.HasEnded());
}

TEST_F(NativeProgramTest, EndsWhenNobodyReadsItsRequests) {
  m_extension.CloseOutput();
  NamedPipeClient client;
  ASSERT_TRUE(client.Init(kPipeName, 4096, 0));
  ASSERT_TRUE(client.TryConnect(200, 50));
  ASSERT_TRUE(client.Write(L"GiveContacts"));
  EXPECT_TRUE(m_extension.HasEnded());
}

TEST_F(NativeProgramTest, EndsAfterAFrameThatCantBe) {
  m_extension.WriteBytes(std::string("\xFF\xFF\xFF\xFF", 4));
  EXPECT_TRUE(m_extension.HasEnded());
}

// The exit code of the program with these arguments. Nothing that it is asked for here changes
// anything.
int ExitCodeOf(const std::vector<std::wstring>& arguments) {
  return PeerProcess(ExtensionPeer::Program(), arguments).WaitForExit();
}

TEST(NativeProgram, TellsByItsExitCodeWhatBecameOfItsTask) {
  EXPECT_EQ(ExitCodeOf({}), 2);
  EXPECT_EQ(ExitCodeOf({L"--help"}), 2);
  EXPECT_EQ(ExitCodeOf({L"--remove", L"a", L"b"}), 2);
  const TempFolder folder;
  EXPECT_EQ(ExitCodeOf({L"--install", folder.PathOf("missing")}), 1);
}

// Thunderbird takes the manifest by the extension's id, and the package by the manifest in it.
TEST(NativeProgram, HasItsManifestAndTheExtensionBesideIt) {
  const std::wstring folder = StageFolder() + L"\\bin\\";
  const Json manifest = Json::parse(ReadFile(folder + L"postmarker_thunderbird.json"));
  EXPECT_EQ(manifest["name"], "postmarker_thunderbird");
  EXPECT_EQ(manifest["type"], "stdio");
  EXPECT_EQ(folder + WidenUtf8(manifest["path"].get<std::string>()), ExtensionPeer::Program());
  EXPECT_EQ(manifest["allowed_extensions"], Json{"{0E810812-F4BB-4309-942A-755587587A5E}"});
  const std::string package = ReadFile(folder + L"postmarker-thunderbird.xpi");
  EXPECT_TRUE(package.starts_with("PK"));
  for (const char* name : {"manifest.json", "background.js", "server.js"}) {
    EXPECT_NE(package.find(name), std::string::npos) << name;
  }
}

}  // namespace
}  // namespace postmarker::test
