#include "settings/GlobalSettings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/MemorySettingsStore.h"

namespace postmarker {
namespace {

using std::chrono::local_days;
using test::MemorySettingsStore;

local_days Day(int year, unsigned month, unsigned day) {
  return local_days{std::chrono::year(year) / static_cast<int>(month) / static_cast<int>(day)};
}

TEST(GlobalSettings, TextsAreEmptyUntilSet) {
  MemorySettingsStore store;
  EXPECT_EQ(GetActionPlugin(store), L"");
  EXPECT_EQ(GetLastConfigured(store), L"");
  EXPECT_EQ(GetLastEditGlobal(store), Day(1980, 1, 1));
  EXPECT_TRUE(store.keys.empty());
}

TEST(GlobalSettings, TextsAreStoredUnderTheirNamesWithTerminator) {
  MemorySettingsStore store;
  EXPECT_TRUE(SetActionPlugin(L"A", store));
  EXPECT_TRUE(SetLastConfigured(L"", store));
  EXPECT_TRUE(SetLastEditGlobal(Day(2009, 3, 7), store));
  EXPECT_THAT(store.Dump(),
              testing::ElementsAre(" | ActionPlugin | 1 | 41000000", " | LastConfigured | 1 | 0000",
                                   " | LastEditGlobal | 1 | 32003000300039002d0033002d0037000000"));
  EXPECT_EQ(GetActionPlugin(store), L"A");
  EXPECT_EQ(GetLastConfigured(store), L"");
  EXPECT_EQ(GetLastEditGlobal(store), Day(2009, 3, 7));
}

TEST(GlobalSettings, TextsOfMoreThan127CharactersReadAsEmpty) {
  MemorySettingsStore store;
  SetActionPlugin(std::wstring(127, L'x'), store);
  EXPECT_EQ(GetActionPlugin(store), std::wstring(127, L'x'));
  SetActionPlugin(std::wstring(128, L'x'), store);
  EXPECT_EQ(GetActionPlugin(store), L"");
  auto& bytes = store.keys[L""][L"ActionPlugin"].bytes;
  bytes.resize(256);
  EXPECT_EQ(GetActionPlugin(store), L"") << "128 characters without a terminator";
  bytes.resize(255);
  EXPECT_EQ(GetActionPlugin(store), std::wstring(127, L'x'))
      << "an odd byte instead of a terminator";
}

TEST(GlobalSettings, StoreThatRefusesReturnsFalse) {
  MemorySettingsStore store;
  store.refusesAll = true;
  EXPECT_FALSE(SetActionPlugin(L"x", store));
  EXPECT_FALSE(SetLastConfigured(L"x", store));
  EXPECT_FALSE(SetLastEditGlobal(Day(2009, 3, 7), store));
}

TEST(EditDate, IsFormattedWithoutPadding) {
  EXPECT_EQ(FormatEditDate(Day(2009, 3, 7)), L"2009-3-7");
  EXPECT_EQ(FormatEditDate(Day(2010, 12, 31)), L"2010-12-31");
}

TEST(EditDate, IsReadAndBroughtIntoItsRange) {
  const struct {
    const wchar_t* text;
    local_days day;
  } cases[] = {
      {L"2009-3-7", Day(2009, 3, 7)},
      {L"2009-03-07", Day(2009, 3, 7)},
      {L"1999-13-40", Day(2000, 12, 31)},
      {L"9999-0-0", Day(2100, 1, 1)},
      {L"--", Day(2000, 1, 1)},
      {L"-5-3-2", Day(2000, 5, 3)},
      {L"2010--5-3", Day(2010, 1, 5)},
      {L"2010-5--3", Day(2010, 5, 1)},
      {L"x-y-z", Day(2000, 1, 1)},
      {L" 2010x- +5 -\t6y", Day(2010, 5, 6)},
      {L"99999999999999999999-2147483648-4294967297", Day(2100, 12, 31)},
      {L"2010-2-31", Day(2010, 3, 3)},
  };
  for (const auto& one : cases) {
    EXPECT_EQ(ParseEditDate(one.text), one.day) << NarrowUtf8(one.text);
  }
}

TEST(EditDate, WithoutTwoHyphensIsTheFirstOfJanuary1980) {
  for (const wchar_t* const text : {L"", L"2010", L"2010-5", L"today"}) {
    EXPECT_EQ(ParseEditDate(text), Day(1980, 1, 1)) << NarrowUtf8(text);
  }
}

}  // namespace
}  // namespace postmarker
