#include "ThunderbirdSetup_win.h"

#include <windows.h>

#include <gmock/gmock.h>

#include <filesystem>
#include <map>

#include "clients/thunderbird/TbInstallation_win.h"
#include "support/Handles_win.h"
#include "support/RegistrySandbox_win.h"
#include "support/Registry_win.h"
#include "support/TempFolder.h"
#include "support/Text.h"

namespace postmarker::install {
namespace {

namespace fs = std::filesystem;
using testing::Contains;
using testing::HasSubstr;
using testing::StartsWith;

constexpr char kHostKey[] = "Software\\Mozilla\\NativeMessagingHosts\\postmarker_thunderbird";
constexpr char kExtensionsKey[] = "Software\\Mozilla\\Thunderbird\\Extensions";
constexpr char kId[] = "{0E810812-F4BB-4309-942A-755587587A5E}";
constexpr wchar_t kExtensions[] = L"Software\\Mozilla\\Thunderbird\\Extensions";
constexpr wchar_t kWideId[] = L"{0E810812-F4BB-4309-942A-755587587A5E}";

// All that an installation could change.
struct Machine {
  std::vector<std::string> registry;
  std::map<std::wstring, std::string> files;  // and folders, without bytes

  friend bool operator==(const Machine&, const Machine&) = default;
  friend void PrintTo(const Machine& machine, std::ostream* out) {
    *out << testing::PrintToString(machine.registry) << testing::PrintToString(machine.files);
  }
};

// A registry, a folder for application data with a default profile, and a folder with the program's
// files.
class ThunderbirdSetupTest : public testing::Test {
 protected:
  ThunderbirdSetupTest() {
    RegistryKey::Create(
        HKEY_CURRENT_USER,
        L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders",
        KEY_ALL_ACCESS)
        .WriteString(L"AppData", Data().wstring());
    fs::create_directories(Profile());
    // The system writes down where the folder is when it is first asked.
    EXPECT_EQ(thunderbird::ApplicationDataFolder(), Data().wstring());
    fs::create_directories(Programs());
    Write(Data() / "Thunderbird" / "profiles.ini",
          "[Profile0]\r\nName=default\r\nIsRelative=1\r\nPath=Profiles/p\xC3\xBC\r\n");
    Write(Programs() / "postmarker_thunderbird.json", "{}");
    Write(Programs() / "postmarker-thunderbird.xpi", "a package");
  }

  static void Write(const fs::path& path, std::string_view bytes) {
    test::WriteFile(path.wstring(), bytes);
  }
  [[nodiscard]] fs::path Data() const { return folder.Path() / "data"; }
  [[nodiscard]] fs::path Profile() const {
    return Data() / "Thunderbird" / "Profiles" / L"p\u00FC";
  }
  [[nodiscard]] fs::path Programs() const { return folder.Path() / "programs"; }
  [[nodiscard]] fs::path Package() const {
    return Profile() / "extensions" / (std::string(kId) + ".xpi");
  }
  [[nodiscard]] fs::path List() const { return Profile() / "extensions.ini"; }

  [[nodiscard]] Machine Now() const {
    Machine machine = {test::DumpRegistry(registry.User()), {}};
    for (const auto& entry : fs::recursive_directory_iterator(folder.Path())) {
      machine.files[entry.path().wstring()] =
          entry.is_directory() ? "" : test::ReadFile(entry.path().wstring());
    }
    return machine;
  }

  int Run(TaskKind kind, const std::optional<std::string>& profile = std::nullopt) {
    said.clear();
    return RunSetup({kind, profile}, Programs().wstring(),
                    [this](const std::string& sentence) { said.push_back(sentence); });
  }
  int Install(const std::optional<std::string>& profile = std::nullopt) {
    return Run(TaskKind::kInstall, profile);
  }
  int Remove(const std::optional<std::string>& profile = std::nullopt) {
    return Run(TaskKind::kRemove, profile);
  }

  static RegistryKey ExtensionsKey() {
    return RegistryKey::Create(HKEY_CURRENT_USER, kExtensions, KEY_ALL_ACCESS);
  }

  test::RegistrySandbox registry;
  test::TempFolder folder;
  std::vector<std::string> said;
};

TEST_F(ThunderbirdSetupTest, LetsTheWizardAndThunderbirdFindTheExtension) {
  EXPECT_FALSE(thunderbird::IsThunderbirdExtensionInstalled());
  EXPECT_EQ(Install(), kDone);
  EXPECT_TRUE(thunderbird::IsThunderbirdExtensionInstalled());
  EXPECT_EQ(test::ReadFile(Package().wstring()), "a package");
  const std::vector<std::string> values = Now().registry;
  EXPECT_THAT(values,
              Contains(std::string(kHostKey) + " |  | REG_SZ | " +
                       test::HexText((Programs() / "postmarker_thunderbird.json").wstring())));
  EXPECT_THAT(values, Contains(std::string(kExtensionsKey) + " | " + kId + " | REG_SZ | " +
                               test::HexText(Package().wstring())));
  ASSERT_EQ(said.size(), 1U);
  EXPECT_EQ(said[0], "Installed in " + NarrowUtf8(Profile().wstring()) +
                         ". Start Thunderbird again, and allow the extension.");
}

TEST_F(ThunderbirdSetupTest, LeavesRegistryAndFilesAsTheyWere) {
  const Machine before = Now();
  EXPECT_EQ(Install(), kDone);
  const Machine installed = Now();
  EXPECT_EQ(Install(), kDone);
  EXPECT_EQ(Now(), installed);
  EXPECT_EQ(Remove(), kDone);
  EXPECT_EQ(Now(), before);
  EXPECT_THAT(said, testing::ElementsAre("Removed."));
  EXPECT_EQ(Remove(), kDone);
  EXPECT_EQ(Now(), before);
  EXPECT_THAT(said, testing::ElementsAre("Nothing is installed."));
}

TEST_F(ThunderbirdSetupTest, PutsBackValuesAndFilesThatWereThere) {
  fs::create_directories(Profile() / "extensions");
  Write(Package(), "an older package");
  Write(List(), "[ExtensionDirs]\r\nExtension0=C:\\a\\\xE4");
  const std::vector<uint8_t> bytes = {'%', 0, 'A', 0};
  ASSERT_TRUE(ExtensionsKey().WriteBytes(kWideId, REG_EXPAND_SZ, bytes.data(), 4));
  ASSERT_TRUE(ExtensionsKey().WriteString(L"{another}", L"stays"));
  RegistryKey::Create(HKEY_CURRENT_USER, WidenUtf8(kHostKey), KEY_ALL_ACCESS)
      .WriteString(L"", L"C:\\another.json");
  const Machine before = Now();
  EXPECT_EQ(Install(), kDone);
  EXPECT_TRUE(thunderbird::IsThunderbirdExtensionInstalled());
  EXPECT_THAT(test::ReadFile(List().wstring()),
              StartsWith("[ExtensionDirs]\r\nExtension0=C:\\a\\\xE4\r\n[Postmarker]\r\n"));
  EXPECT_EQ(said.size(), 5U) << "four places held something else";
  EXPECT_EQ(Install(), kDone);
  EXPECT_EQ(Remove(), kDone);
  EXPECT_EQ(Now(), before);
}

TEST_F(ThunderbirdSetupTest, LeavesAForeignValueThatCameLater) {
  const Machine before = Now();
  ASSERT_EQ(Install(), kDone);
  ASSERT_TRUE(ExtensionsKey().WriteString(kWideId, L"C:\\another"));
  EXPECT_EQ(Remove(), kDone);
  EXPECT_EQ(ExtensionsKey().ReadString(kWideId, 100), L"C:\\another");
  EXPECT_THAT(said, Contains(HasSubstr("has changed since and stays as it is")));
  EXPECT_EQ(Now().files, before.files);
}

TEST_F(ThunderbirdSetupTest, InstallsIntoTheFolderThatIsNamed) {
  const fs::path other = folder.Path() / "other";
  fs::create_directory(other);
  const Machine before = Now();
  EXPECT_EQ(Install(NarrowUtf8(other.wstring()) + "\\"), kDone);
  EXPECT_TRUE(fs::exists(other / "extensions" / (std::string(kId) + ".xpi")));
  EXPECT_FALSE(fs::exists(Package()));
  EXPECT_THAT(said, Contains(HasSubstr("The wizard doesn't see it")));
  EXPECT_EQ(Install(), kFailed) << "one profile at a time";
  EXPECT_EQ(Remove(NarrowUtf8(Profile().wstring())), kFailed);
  EXPECT_EQ(Remove(NarrowUtf8(other.wstring())), kDone);
  EXPECT_EQ(Now(), before);
}

TEST_F(ThunderbirdSetupTest, RestoresTheRegistryWhenTheProfileIsGone) {
  const Machine before = Now();
  const fs::path other = folder.Path() / "other";
  fs::create_directory(other);
  ASSERT_EQ(Install(NarrowUtf8(other.wstring())), kDone);
  fs::remove_all(other);
  EXPECT_EQ(Remove(), kDone);
  EXPECT_EQ(Now(), before);
}

TEST_F(ThunderbirdSetupTest, ChangesNothingWithoutAProfile) {
  const Machine before = Now();
  EXPECT_EQ(Install(NarrowUtf8((folder.Path() / "missing").wstring())), kFailed);
  EXPECT_THAT(said, Contains(StartsWith("There is no folder ")));
  EXPECT_EQ(Now(), before);
  fs::remove(Data() / "Thunderbird" / "profiles.ini");
  EXPECT_EQ(Install(), kFailed);
  EXPECT_THAT(said, Contains(StartsWith("There is no default profile.")));
}

TEST_F(ThunderbirdSetupTest, ChangesNothingWhenAFileOfTheProgramIsMissing) {
  for (const char* name : {"postmarker_thunderbird.json", "postmarker-thunderbird.xpi"}) {
    fs::rename(Programs() / name, folder.Path() / "away");
    const Machine before = Now();
    EXPECT_EQ(Install(), kFailed);
    EXPECT_EQ(Now(), before);
    ASSERT_EQ(said.size(), 1U);
    EXPECT_THAT(said[0], HasSubstr(std::string(name) + " can't be read. Nothing is changed."));
    fs::rename(folder.Path() / "away", Programs() / name);
  }
}

TEST_F(ThunderbirdSetupTest, ChangesNothingWhenTheRegistryRefusesTheLastValue) {
  ASSERT_TRUE(ExtensionsKey());
  test::DenyWrites(HKEY_CURRENT_USER, kExtensions);
  const Machine before = Now();
  EXPECT_EQ(Install(), kFailed);
  EXPECT_EQ(Now(), before);
  EXPECT_THAT(said, Contains(HasSubstr("can't be changed. Everything is as it was before.")));
}

TEST_F(ThunderbirdSetupTest, ChangesNothingWhileTheListIsHeld) {
  Write(List(), "[ExtensionDirs]\r\n");
  const Machine before = Now();
  {
    // Others may read it, and not replace it.
    const FileHandle held(::CreateFileW(List().c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                        OPEN_EXISTING, 0, nullptr));
    ASSERT_TRUE(held);
    EXPECT_EQ(Install(), kFailed);
    EXPECT_EQ(Now(), before);
    EXPECT_THAT(said, Contains(HasSubstr("extensions.ini can't be changed.")));
  }
  EXPECT_EQ(Install(), kDone);
}

TEST_F(ThunderbirdSetupTest, RemovesNothingWhileThePackageIsHeld) {
  ASSERT_EQ(Install(), kDone);
  const Machine installed = Now();
  const FileHandle held(::CreateFileW(Package().c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                      OPEN_EXISTING, 0, nullptr));
  ASSERT_TRUE(held);
  EXPECT_EQ(Remove(), kFailed);
  EXPECT_EQ(Now(), installed);
}

TEST_F(ThunderbirdSetupTest, RefusesAPathThatTheWizardCouldNotRead) {
  ::SetEnvironmentVariableW(L"PM_TEST_SETUP", L"x");
  for (const std::wstring& name : {std::wstring(L"%PM_TEST_SETUP%"), std::wstring(200, L'x')}) {
    const fs::path odd = folder.Path() / name;
    fs::create_directory(odd);
    const Machine before = Now();
    EXPECT_EQ(Install(NarrowUtf8(odd.wstring())), kFailed);
    EXPECT_EQ(Now(), before);
    EXPECT_THAT(said, Contains(HasSubstr("can't name the extension")));
  }
}

}  // namespace
}  // namespace postmarker::install
