#include "controls/ColumnState.h"

#include <gtest/gtest.h>

namespace postmarker {
namespace {

TEST(ColumnState, TwoColumnsAreWrittenAsOrderSortColumnPlacesAndWidths) {
  EXPECT_EQ(FormatColumnState({SortOrder::kNone, 0, {{0, 100}, {1, 80}}}), L"N,0;0,100;1,80");
  EXPECT_EQ(FormatColumnState({SortOrder::kAscending, 1, {{1, 7}, {0, 0}}}), L"A,1;1,7;0,0");
  EXPECT_EQ(FormatColumnState({SortOrder::kDescending, 0, {{0, 99999}}}), L"D,0;0,99999");
}

TEST(ColumnState, GridWithoutColumnsHasNoState) {
  EXPECT_EQ(FormatColumnState({SortOrder::kAscending, 3, {}}), L"");
  EXPECT_FALSE(ParseColumnState(L"N,0", 0));
  EXPECT_FALSE(ParseColumnState(L"N,00", 0));
}

TEST(ColumnState, WhatWasWrittenIsRead) {
  const ColumnState state = {SortOrder::kDescending, 2, {{2, 10}, {0, 0}, {1, 12345}}};
  EXPECT_EQ(ParseColumnState(FormatColumnState(state), 3), state);
}

TEST(ColumnState, SortColumnThatTheGridLacksIsRefused) {
  EXPECT_FALSE(ParseColumnState(L"A,9", 2)) << "too short as well";
  EXPECT_FALSE(ParseColumnState(L"A,9;0,100;1,80", 2));
  EXPECT_FALSE(ParseColumnState(L"A,2;0,100;1,80", 2));
  EXPECT_TRUE(ParseColumnState(L"A,1;0,100;1,80", 2));
}

TEST(ColumnState, PlaceThatTheGridLacksIsRefused) {
  EXPECT_FALSE(ParseColumnState(L"A,0;0,100;2,80", 2));
  EXPECT_FALSE(ParseColumnState(L"A,0;99999,100;1,80", 2));
}

TEST(ColumnState, NumberOfSixDigitsIsRefused) {
  EXPECT_TRUE(ParseColumnState(L"N,0;0,99999;1,80", 2));
  EXPECT_FALSE(ParseColumnState(L"N,0;0,100000;1,80", 2));
  EXPECT_FALSE(ParseColumnState(L"N,0;0,000100;1,80", 2));
  EXPECT_FALSE(ParseColumnState(L"N,000000;0,100;1,80", 2));
}

TEST(ColumnState, NumbersMustBeTwoForEachColumnAndOneMore) {
  EXPECT_FALSE(ParseColumnState(L"N,0;0,100", 2));
  EXPECT_FALSE(ParseColumnState(L"N,0;0,100;1", 2));
  EXPECT_FALSE(ParseColumnState(L"N,0;0,100;1,80;0", 2));
  EXPECT_FALSE(ParseColumnState(L"N,0;0,100;1,80;0,5", 2));
}

TEST(ColumnState, OtherCharactersThanDigitsAndSeparatorsAreRefused) {
  for (const wchar_t* const text :
       {L"N,0;0,1x0;1,80", L"N,0;0,-10;1,80", L"N, 0;0,10;1,80", L"N,0;0,10;1,80;", L"N,0;;0,10,1",
        L"N,;0,10;1,80", L"N,0:0,10:1,80", L"N,0;0,\x0661;1,80", L"N,0;0,10;1,80 "}) {
    EXPECT_FALSE(ParseColumnState(text, 2)) << testing::PrintToString(text);
  }
}

TEST(ColumnState, BothSeparatorsAreTakenAnywhere) {
  EXPECT_EQ(ParseColumnState(L"N;0,0;100,1;80", 2), ParseColumnState(L"N,0;0,100;1,80", 2));
}

TEST(ColumnState, TextsBelowFourCharactersAreRefused) {
  for (const wchar_t* const text : {L"", L"N", L"N,", L"N,0"}) {
    EXPECT_FALSE(ParseColumnState(text, 1)) << testing::PrintToString(text);
  }
  EXPECT_TRUE(ParseColumnState(L"N,0;0,1", 1));
}

TEST(ColumnState, FirstLetterIsTheOrderAndAnyOtherIsNone) {
  EXPECT_EQ(ParseColumnState(L"A,0;0,1", 1)->sortOrder, SortOrder::kAscending);
  EXPECT_EQ(ParseColumnState(L"D,0;0,1", 1)->sortOrder, SortOrder::kDescending);
  for (const wchar_t* const text : {L"N,0;0,1", L"a,0;0,1", L"?x0;0,1", L"  0;0,1"}) {
    EXPECT_EQ(ParseColumnState(text, 1)->sortOrder, SortOrder::kNone)
        << testing::PrintToString(text);
  }
}

TEST(ColumnState, ColumnsThatClaimOnePlaceStandInTheirOwnOrder) {
  EXPECT_EQ(DisplayOrder({SortOrder::kNone, 0, {{2, 1}, {0, 1}, {1, 1}}}),
            (std::vector<int32_t>{1, 2, 0}));
  EXPECT_EQ(DisplayOrder({SortOrder::kNone, 0, {{1, 1}, {0, 1}, {1, 1}}}),
            (std::vector<int32_t>{1, 0, 2}));
  EXPECT_EQ(DisplayOrder({}), std::vector<int32_t>{});
}

TEST(ColumnState, HugeColumnCountIsRefusedWithoutItsRoom) {
  EXPECT_FALSE(ParseColumnState(L"N,0;0,100", SIZE_MAX));
  EXPECT_FALSE(ParseColumnState(L"N,0;0,100", SIZE_MAX / 2 + 1));
}

}  // namespace
}  // namespace postmarker
