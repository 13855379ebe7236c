#include "clients/ClientDetection.h"

#include <gtest/gtest.h>

#include "clients/ClientTable.h"
#include "support/FakeMachine.h"

namespace postmarker {
namespace {

using test::FakeMachine;

constexpr auto kUser = RegistryRoot::kUser;
constexpr auto kMachine = RegistryRoot::kMachine;

constexpr wchar_t kProfiles[] =
    L"Software\\Microsoft\\Windows NT\\CurrentVersion\\Windows Messaging Subsystem\\Profiles";
constexpr wchar_t kOutlookExpress[] = L"Software\\Microsoft\\Outlook Express\\Version Info";
constexpr wchar_t kWindowsMail[] = L"Software\\Microsoft\\Windows Mail";
constexpr wchar_t kWindowsLiveMail[] = L"Software\\Microsoft\\Windows Live Mail";

constexpr PlatformVersion kWindows2000 = {5, 0};
constexpr PlatformVersion kWindowsXp = {5, 1};
constexpr PlatformVersion kVista = {6, 0};
constexpr PlatformVersion kWindows7 = {6, 1};
constexpr PlatformVersion kWindows10 = {10, 0};

std::wstring Profile(const std::wstring& rest) {
  return std::wstring(kProfiles) + L"\\" + rest;
}

void AddIdentity(FakeMachine& machine) {
  machine.AddKey(kUser, L"Identities\\{A}\\Software\\Microsoft\\Outlook Express\\5.0");
}

void AddWinMail(FakeMachine& machine, const std::wstring& version) {
  machine.AddText(kMachine, kWindowsMail, L"InstallRoot", L"%ProgramFiles%\\Windows Mail");
  machine.variables[L"%ProgramFiles%"] = L"C:\\Programs";
  machine.fileVersions[L"C:\\Programs\\Windows Mail\\winmail.exe"] = version;
}

TEST(OutlookDetection, NoProfilesKeyMeansNotConfigured) {
  EXPECT_FALSE(IsOutlookConfigured(FakeMachine()));
}

TEST(OutlookDetection, ProfileWithoutSubkeysMeansNotConfigured) {
  FakeMachine machine;
  machine.AddText(kUser, Profile(L"Outlook"), L"001e6700", L"in the profile itself");
  EXPECT_FALSE(IsOutlookConfigured(machine));
}

TEST(OutlookDetection, ProfileWithoutAStoreMeansNotConfigured) {
  FakeMachine machine;
  machine.AddText(kUser, Profile(L"Outlook\\1"), L"001e3001", L"a name");
  EXPECT_FALSE(IsOutlookConfigured(machine));
}

TEST(OutlookDetection, EachOfTheThreeValuesInAnySubkeyOfAnyProfileIsAStore) {
  for (const wchar_t* name : {L"001e6700", L"001f6700", L"001f662b"}) {
    FakeMachine machine;
    machine.AddKey(kUser, Profile(L"Empty"));
    machine.AddKey(kUser, Profile(L"Outlook\\1"));
    machine.AddText(kUser, Profile(L"Outlook\\2"), name, L"x");
    EXPECT_TRUE(IsOutlookConfigured(machine)) << NarrowUtf8(name);
  }
}

TEST(OutlookDetection, StoreBelowAServiceDoesNotCount) {
  FakeMachine machine;
  machine.AddText(kUser, Profile(L"Outlook\\1\\Deep"), L"001e6700", L"x");
  EXPECT_FALSE(IsOutlookConfigured(machine));
}

TEST(OutlookDetection, NamesAreReadInto100CharactersAndValuesInto1024Bytes) {
  const auto isFound = [](size_t nameLength, size_t valueSize) {
    FakeMachine machine;
    machine.AddBytes(kUser, Profile(std::wstring(nameLength, L'p') + L"\\1"), L"001f6700",
                     valueSize);
    return IsOutlookConfigured(machine);
  };
  EXPECT_TRUE(isFound(99, 1024));
  EXPECT_FALSE(isFound(100, 1024));
  EXPECT_FALSE(isFound(99, 1025));
}

TEST(MailIdentity, NothingMeansNone) {
  EXPECT_FALSE(HasMailIdentity(FakeMachine()));
}

TEST(MailIdentity, IdentityCountsOnlyWithItsKeyOfVersion5) {
  FakeMachine machine;
  machine.AddKey(kUser, L"Identities\\{A}\\Software\\Microsoft\\Outlook Express");
  EXPECT_FALSE(HasMailIdentity(machine));
  machine.AddKey(kUser, L"Identities\\{B}\\Software\\Microsoft\\Outlook Express\\5.0");
  EXPECT_TRUE(HasMailIdentity(machine));
}

TEST(MailIdentity, WindowsMailsOwnMarkCountsWhateverItsValue) {
  FakeMachine machine;
  machine.AddKey(kUser, L"Identities\\{A}");
  machine.AddBytes(kUser, kWindowsMail, L"WinMail", 4);
  EXPECT_TRUE(HasMailIdentity(machine));
}

TEST(StoreVersion, IsTheFirstCharacterOfOutlookExpressesVersion) {
  FakeMachine machine;
  machine.AddText(kMachine, kOutlookExpress, L"Current", L"6,00,2900");
  machine.AddText(kMachine, kWindowsMail, L"MediaVer", L"7,0");
  EXPECT_EQ(GetMailStoreVersion(machine).digit, L'6');
  EXPECT_TRUE(GetMailStoreVersion(machine).found);
}

TEST(StoreVersion, EmptyTextAndTheWordNullCountAsMissing) {
  for (const wchar_t* nothing : {L"", L"null"}) {
    FakeMachine machine;
    machine.AddText(kMachine, kOutlookExpress, L"Current", nothing);
    EXPECT_EQ(GetMailStoreVersion(machine).digit, L'6');
    EXPECT_FALSE(GetMailStoreVersion(machine).found);
    machine.AddText(kMachine, kWindowsMail, L"MediaVer", nothing);
    EXPECT_FALSE(GetMailStoreVersion(machine).found);
    machine.AddText(kMachine, kWindowsMail, L"MediaVer", L"anything");
    EXPECT_EQ(GetMailStoreVersion(machine).digit, L'7');
    EXPECT_TRUE(GetMailStoreVersion(machine).found);
  }
}

struct WindowsMailCase {
  PlatformVersion platform;
  const wchar_t* version;  // of winmail.exe; null for no file
  bool supported;
};

TEST(WindowsMailSupport, OnALateWindowsTheProgramsVersionDecides) {
  const WindowsMailCase cases[] = {
      {kWindows7, L"6.0.6000.16386", true},   {kWindows7, L"6.1.7600.16385", false},
      {kWindows7, L"6.0.9999.", true},        {kWindows7, L"6.0.9999.1", false},
      {kWindows10, L"6.0.6000.16386", true},  {kWindows10, L"10.0.19041.1", true},
      {kWindows10, L"6.2.9200.16384", false}, {kWindows10, nullptr, false},
  };
  for (const WindowsMailCase& one : cases) {
    SCOPED_TRACE(NarrowUtf8(one.version != nullptr ? one.version : L"none"));
    FakeMachine machine;
    machine.version = one.platform;
    AddIdentity(machine);
    AddWinMail(machine, one.version != nullptr ? one.version : L"");
    if (one.version == nullptr) {
      machine.fileVersions.clear();
    }
    EXPECT_EQ(IsClientSupported(L"Windows Mail", machine), one.supported);
    EXPECT_FALSE(IsClientSupported(L"Outlook Express", machine));
  }
}

TEST(WindowsMailSupport, WithoutAnIdentityItIsNotSupported) {
  FakeMachine machine;
  AddWinMail(machine, L"6.0.6000.16386");
  EXPECT_FALSE(IsClientSupported(L"Windows Mail", machine));
  machine.version = kVista;
  machine.AddText(kMachine, kWindowsMail, L"MediaVer", L"7,0");
  EXPECT_FALSE(IsClientSupported(L"Windows Mail", machine));
}

TEST(WindowsMailSupport, OnAnEarlierWindowsTheStoresVersionDecides) {
  for (const PlatformVersion platform : {kWindows2000, kWindowsXp, kVista}) {
    FakeMachine machine;
    machine.version = platform;
    AddIdentity(machine);
    AddWinMail(machine, L"6.0.6000.16386");
    EXPECT_FALSE(IsClientSupported(L"Windows Mail", machine));
    EXPECT_TRUE(IsClientSupported(L"Outlook Express", machine));
    machine.AddText(kMachine, kWindowsMail, L"MediaVer", L"7,0");
    EXPECT_TRUE(IsClientSupported(L"Windows Mail", machine));
    EXPECT_FALSE(IsClientSupported(L"Outlook Express", machine));
  }
}

TEST(OutlookExpressSupport, Version6AndAnIdentityPassOnWindowsXp) {
  FakeMachine machine;
  machine.version = kWindowsXp;
  machine.AddText(kMachine, kOutlookExpress, L"Current", L"6");
  EXPECT_FALSE(IsClientSupported(L"Outlook Express", machine));
  AddIdentity(machine);
  EXPECT_TRUE(IsClientSupported(L"Outlook Express", machine));
}

TEST(OutlookExpressSupport, SystemHasAtMostOneOfTheTwoClients) {
  for (const PlatformVersion platform : {kWindowsXp, kVista, kWindows7, kWindows10}) {
    for (const wchar_t* current : {L"", L"5", L"6", L"7", L"8", L"x"}) {
      FakeMachine machine;
      machine.version = platform;
      AddIdentity(machine);
      AddWinMail(machine, L"6.0.6000.16386");
      machine.AddText(kMachine, kOutlookExpress, L"Current", current);
      EXPECT_FALSE(IsWindowsMailSupported(machine) && IsOutlookExpressSupported(machine));
    }
  }
}

TEST(WindowsLiveMailSupport, NeedsItsHookModuleBesideThisOne) {
  FakeMachine machine;
  EXPECT_FALSE(IsClientSupported(L"Windows Live Mail", machine));
  machine.modules.insert(L"WindowsLiveShim.dll");
  EXPECT_TRUE(IsClientSupported(L"Windows Live Mail", machine));
}

TEST(WindowsLiveMailDetection, IsInstalledWithAnInstallRootThatIsNotEmpty) {
  FakeMachine machine;
  EXPECT_FALSE(IsClientInstalled(L"Windows Live Mail", machine));
  machine.AddText(kMachine, kWindowsLiveMail, L"InstallRoot", L"");
  EXPECT_FALSE(IsClientInstalled(L"Windows Live Mail", machine));
  machine.AddText(kMachine, kWindowsLiveMail, L"InstallRoot", L"C:\\Programs\\Mail");
  EXPECT_TRUE(IsClientInstalled(L"Windows Live Mail", machine));
}

TEST(ClientDetection, UnknownNameIsNotInstalledButSupportedAndReady) {
  const FakeMachine machine;
  for (const wchar_t* name : {L"", L"Some Other Mailer"}) {
    EXPECT_FALSE(IsClientInstalled(name, machine));
    EXPECT_TRUE(IsClientSupported(name, machine));
    EXPECT_TRUE(IsClientReady(name, machine));
  }
}

TEST(ClientDetection, StoreClientsCountAsInstalledWithoutALook) {
  const FakeMachine machine;
  EXPECT_TRUE(IsClientInstalled(L"Windows Mail", machine));
  EXPECT_TRUE(IsClientInstalled(L"Outlook Express", machine));
}

TEST(ClientDetection, OtherClientsAreSupportedEverywhere) {
  const FakeMachine machine;
  for (const wchar_t* name : {L"Microsoft Outlook", L"Mozilla Thunderbird", L"IncrediMail"}) {
    EXPECT_TRUE(IsClientSupported(name, machine)) << NarrowUtf8(name);
  }
}

TEST(ClientDetection, NamesAreComparedWithoutRegardToCase) {
  FakeMachine machine;
  machine.AddText(kUser, Profile(L"Outlook\\1"), L"001e6700", L"x");
  EXPECT_TRUE(IsClientInstalled(L"MICROSOFT outlook", machine));
  EXPECT_FALSE(IsClientSupported(L"OUTLOOK express", machine));
}

TEST(ClientDetection, AllButThunderbirdAreAlwaysReady) {
  const FakeMachine machine;
  for (const ClientRow& row : AllClients()) {
    if (row.displayName != L"Mozilla Thunderbird") {
      EXPECT_TRUE(IsClientReady(row.displayName, machine)) << NarrowUtf8(row.displayName);
    }
  }
}

}  // namespace
}  // namespace postmarker
