#include "clients/storeapi/WabFile.h"

#include <gmock/gmock.h>

#include "support/FakeMachine.h"
#include "support/TempFolder.h"
#include "support/WabBuilder.h"

namespace postmarker::storeapi {
namespace {

using test::MakeWabFile;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

TEST(WabFile, GivesTheAddressesInTheOrderOfTheTable) {
  EXPECT_THAT(ParseWabFile(MakeWabFile({L"b@x.example", L"A@x.example", L"b@x.example"})),
              ElementsAre("b@x.example", "A@x.example", "b@x.example"));
}

TEST(WabFile, EmptyEntryGivesAnEmptyText) {
  EXPECT_THAT(ParseWabFile(MakeWabFile({L"", L"a@x"})), ElementsAre("", "a@x"));
}

TEST(WabFile, HighBytesAreIgnored) {
  EXPECT_THAT(ParseWabFile(MakeWabFile({L"\x0161@x", L"\x0400z"})), ElementsAre("a@x", ""));
}

TEST(WabFile, CountOf128OrMoreMeansNoEntries) {
  const std::vector<std::wstring> entries(3, L"a@x");
  for (const int count : {0x80, 0x81, 0xFF}) {
    EXPECT_THAT(ParseWabFile(MakeWabFile(entries, count)), IsEmpty()) << count;
  }
}

TEST(WabFile, CountOf127IsTheLargest) {
  const std::vector<std::wstring> entries(130, L"a@x");
  EXPECT_THAT(ParseWabFile(MakeWabFile(entries, 0x7F)), SizeIs(127));
}

TEST(WabFile, EntryOf33CharactersFillsItsPlace) {
  const std::wstring longest(33, L'l');
  EXPECT_THAT(ParseWabFile(MakeWabFile({longest, L"next"})),
              ElementsAre(std::string(33, 'l'), "next"));
}

TEST(WabFile, EntryWithoutTerminatorRunsOnIntoTheNext) {
  const std::wstring full(34, L'f');
  EXPECT_THAT(ParseWabFile(MakeWabFile({full, L"next"})),
              ElementsAre(std::string(34, 'f') + "next", "next"));
}

TEST(WabFile, TextThatRunsOnIsCutAt68Characters) {
  const std::wstring full(34, L'f');
  const std::string cut(68, 'f');
  EXPECT_THAT(ParseWabFile(MakeWabFile({full, full, full, L"n"})),
              ElementsAre(cut, cut, std::string(34, 'f') + "n", "n"));
}

TEST(WabFile, TextThatRunsIntoTheEndIsCutThereAndEntriesBeyondAddNothing) {
  const std::string whole = MakeWabFile({L"first@x", L"second@x"});
  const size_t second = test::kWabTable + test::kWabEntry;
  EXPECT_THAT(ParseWabFile(std::string_view(whole).substr(0, second + 6)),
              ElementsAre("first@x", "sec"));
  EXPECT_THAT(ParseWabFile(std::string_view(whole).substr(0, second + 5)),
              ElementsAre("first@x", "sec"));
  EXPECT_THAT(ParseWabFile(std::string_view(whole).substr(0, second)), ElementsAre("first@x"));
}

TEST(WabFile, TableThatBeginsAtOrBeyondTheEndGivesNothing) {
  std::string file = MakeWabFile({L"a@x"});
  for (const uint64_t offset : {file.size(), size_t{0xFFFFFFFF}, size_t{0x80000000}}) {
    test::SetWabTable(&file, static_cast<uint32_t>(offset));
    EXPECT_THAT(ParseWabFile(file), IsEmpty()) << offset;
  }
}

TEST(WabFile, EveryTruncationGivesTextsOfTheWholeOnly) {
  const std::string whole = MakeWabFile({L"first@x", L"second@x"});
  for (size_t size = 0; size <= whole.size(); ++size) {
    // A block of its own without a terminator, so that the sanitizer sees a read beyond it.
    const std::vector<char> part(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(size));
    const std::vector<std::string> addresses = ParseWabFile({part.data(), part.size()});
    ASSERT_LE(addresses.size(), 2U) << size;
    if (size > 0x64 && size <= test::kWabTable) {
      EXPECT_THAT(addresses, IsEmpty()) << size;
    }
    for (size_t i = 0; i < addresses.size(); ++i) {
      EXPECT_TRUE(std::string(i == 0 ? "first@x" : "second@x").starts_with(addresses[i])) << size;
    }
  }
}

TEST(WabFile, PersonsFileIsReadIntoTheSet) {
  constexpr wchar_t kKey[] = L"Software\\Microsoft\\WAB\\WAB4\\Wab File Name";
  const test::TempFolder folder;
  const std::wstring path = folder.PathOf("a.wab");
  test::WriteFile(path, MakeWabFile({L"b@x", L"a@x\xFC", L"b@x"}));
  AddressSet addresses = {L"before"};
  test::FakeMachine machine;
  ReadWabFile(machine, &addresses);
  EXPECT_THAT(addresses, SizeIs(1));
  machine.AddText(RegistryRoot::kUser, kKey, L"", path + L".missing");
  ReadWabFile(machine, &addresses);
  EXPECT_THAT(addresses, SizeIs(1));
  machine.AddText(RegistryRoot::kUser, kKey, L"", path);
  ReadWabFile(machine, &addresses);
  EXPECT_THAT(addresses, ElementsAre(L"a@x\xFC", L"b@x", L"before"));
}

}  // namespace
}  // namespace postmarker::storeapi
