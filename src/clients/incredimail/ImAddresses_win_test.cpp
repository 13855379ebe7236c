// The addresses that the wizard gets from the client's stores.
#include <gtest/gtest.h>

#include "clients/ClientTable.h"
#include "clients/incredimail/IncrediMailAdapter_win.h"
#include "support/ImInstallation_win.h"

namespace postmarker {
namespace {

using test::ImDatabase;
using test::ImGuid;
using test::ImIdentityFolder;
using test::ImInstallation;
using test::ImMessages;

// What was reported, in its order.
struct Reports {
  std::vector<std::wstring> lines;
  bool cancels = false;

  static Reports* Of(void* handle) { return static_cast<Reports*>(handle); }
  static void __stdcall SetProgress(void* handle, const wchar_t* text, int32_t total) {
    Of(handle)->lines.push_back(L"set '" + std::wstring(text) + L"' " + std::to_wstring(total));
  }
  static int32_t __stdcall IsCancelled(void* handle) {
    Of(handle)->lines.emplace_back(L"asked");
    return Of(handle)->cancels ? 1 : 0;
  }
  static void __stdcall IncreaseProgress(void* handle, int32_t steps) {
    Of(handle)->lines.push_back(L"done " + std::to_wstring(steps));
  }

  ProgressCallbacks Callbacks() {
    ProgressCallbacks callbacks;
    callbacks.handle = this;
    callbacks.setProgress = &SetProgress;
    callbacks.isCancelled = &IsCancelled;
    callbacks.increaseProgress = &IncreaseProgress;
    return callbacks;
  }
};

// Ann has databases, Ben the older files.
class ImAddressesTest : public testing::Test {
 protected:
  ImAddressesTest() {
    m_client.RegisterData();
    m_client.AddIdentity(L"{a}", L"Ann");
    m_client.AddIdentity(L"{b}", L"Ben");
    ImDatabase database(m_client.AddStore(
        L"{a}", {{ImGuid(1), L"", 0, L""}, {ImGuid(2), ImGuid(1), 2, L"Sent Items"}}));
    database.AddHeadersTable();
    database.AddHeaderRows({{ImGuid(11), ImGuid(2), L"Carl <Carl@X>, dora@x"}});
    ImDatabase(m_client.IdentityFolder(L"{a}").AddressFile("AddrBook.db3"))
        .AddContacts({L"Friend@X"});
    const ImIdentityFolder ben = m_client.IdentityFolder(L"{b}");
    ImMessages messages;
    messages.Add({21, L"Emil <Emil@X>", L"", L""}, "Cc: fritz@x\r\n\r\n");
    ben.WriteMessages("Sent Items", messages);
    test::WriteFile(ben.AddressFile("AddressBook.imb"), test::MakeImAddressFile({L"Gerda@X"}));
  }

  static AddressSet Collect(const ProgressCallbacks* callbacks) {
    AddressSet addresses;
    EXPECT_EQ(FindClient(L"IncrediMail")->adapter->CollectSentAddresses({}, callbacks, &addresses),
              kOk);
    return addresses;
  }

  ImInstallation m_client;
};

TEST_F(ImAddressesTest, AreThoseOfAllIdentitiesSentMailAndAddressBooks) {
  EXPECT_EQ(Collect(nullptr),
            (AddressSet{L"Gerda@X", L"carl@x", L"dora@x", L"emil@x", L"friend@x", L"fritz@x"}));
}

TEST_F(ImAddressesTest, OfSentMailAndOfContactsApart) {
  AddressSet sent;
  EXPECT_EQ(incredimail::CollectSentAddresses({}, nullptr, &sent), kOk);
  EXPECT_EQ(sent, (AddressSet{L"carl@x", L"dora@x", L"emil@x", L"fritz@x"}));
  AddressSet contacts;
  EXPECT_EQ(incredimail::CollectContacts({}, nullptr, &contacts), kOk);
  EXPECT_EQ(contacts, (AddressSet{L"Gerda@X", L"friend@x"}));
}

TEST_F(ImAddressesTest, ProgressIsOneStep) {
  Reports reports;
  const ProgressCallbacks callbacks = reports.Callbacks();
  EXPECT_EQ(Collect(&callbacks).size(), 6U);
  EXPECT_EQ(reports.lines, (std::vector<std::wstring>{L"set '' 1", L"asked", L"done 1"}));
}

TEST_F(ImAddressesTest, CancelEndsTheSentMailAtOnce) {
  Reports reports;
  reports.cancels = true;
  const ProgressCallbacks callbacks = reports.Callbacks();
  AddressSet sent;
  EXPECT_EQ(incredimail::CollectSentAddresses({}, &callbacks, &sent), kOk);
  EXPECT_TRUE(sent.empty());
  EXPECT_EQ(reports.lines, (std::vector<std::wstring>{L"set '' 1", L"asked"}));
}

TEST_F(ImAddressesTest, RecordWithoutAHandleOrFunctionsReportsNothing) {
  Reports reports;
  ProgressCallbacks callbacks = reports.Callbacks();
  callbacks.handle = nullptr;
  EXPECT_EQ(Collect(&callbacks).size(), 6U);
  ProgressCallbacks empty;
  empty.handle = &reports;
  EXPECT_EQ(Collect(&empty).size(), 6U);
  EXPECT_TRUE(reports.lines.empty());
}

TEST_F(ImAddressesTest, WithoutAnInstallationNothingIsAdded) {
  RegistryKey::Open(HKEY_CURRENT_USER, ImInstallation::kClientKey, KEY_ALL_ACCESS)
      .DeleteValue(L"ApplicationPath");
  EXPECT_EQ(Collect(nullptr), AddressSet{});
}

TEST_F(ImAddressesTest, IdentityThatCanNotBeReadAddsNothingAndTheOthersGoOn) {
  test::WriteFile(m_client.IdentityFolder(L"{a}").StoreFile("Containers.db"), "no database");
  test::WriteFile(m_client.IdentityFolder(L"{b}").AddressFile("AddressBook.imb"), "short");
  EXPECT_EQ(Collect(nullptr), (AddressSet{L"emil@x", L"friend@x", L"fritz@x"}));
}

TEST_F(ImAddressesTest, FilesThatTheClientHoldsOpenForWritingAreRead) {
  std::vector<FileHandle> held;
  const ImIdentityFolder ben = m_client.IdentityFolder(L"{b}");
  for (const std::wstring& path : {ben.StoreFile("Sent Items.imh"), ben.StoreFile("Sent Items.imm"),
                                   ben.AddressFile("AddressBook.imb")}) {
    held.emplace_back(::CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0,
                                    nullptr));
    ASSERT_TRUE(held.back());
  }
  EXPECT_EQ(Collect(nullptr).size(), 6U);
}

// The names of the temporary files of sent mail that stand in the system's folder.
size_t CountTemporaryFiles(const std::filesystem::path& folder) {
  size_t count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    count += entry.path().filename().string().starts_with("tmp") ? 1 : 0;
  }
  return count;
}

TEST_F(ImAddressesTest, TemporaryFileStaysOnlyIfAMessageCanNotBeRebuilt) {
  const std::wstring folder = m_client.Folder().PathOf("Temp");
  std::filesystem::create_directories(folder);
  wchar_t before[MAX_PATH] = {};
  ::GetEnvironmentVariableW(L"TMP", before, MAX_PATH);
  ::SetEnvironmentVariableW(L"TMP", folder.c_str());
  Collect(nullptr);
  EXPECT_EQ(CountTemporaryFiles(folder), 0U);
  std::filesystem::remove(m_client.IdentityFolder(L"{b}").StoreFile("Sent Items.imm"));
  EXPECT_EQ(Collect(nullptr),
            (AddressSet{L"Gerda@X", L"carl@x", L"dora@x", L"emil@x", L"friend@x"}));
  EXPECT_EQ(CountTemporaryFiles(folder), 1U);
  ::SetEnvironmentVariableW(L"TMP", before);
}

}  // namespace
}  // namespace postmarker
