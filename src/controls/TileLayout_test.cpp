#include "controls/TileLayout.h"

#include <gtest/gtest.h>

namespace postmarker {
namespace {

TEST(TileLayout, AsManyColumnsAsFitBesideTheScrollBarButAtLeastOne) {
  EXPECT_EQ(TileColumnCount(392, 17, 125), 3);
  EXPECT_EQ(TileColumnCount(391, 17, 125), 2);
  EXPECT_EQ(TileColumnCount(100, 17, 125), 1);
  EXPECT_EQ(TileColumnCount(0, 17, 125), 1);
  EXPECT_EQ(TileColumnCount(-5, 17, 125), 1);
  EXPECT_EQ(TileColumnCount(400, 17, 0), 1);
}

TEST(TileLayout, ColumnStateIsUnsortedWithColumnsOfOneWidth) {
  EXPECT_EQ(TileColumnState(3, 125), L"N,0;0,125;1,125;2,125");
  EXPECT_EQ(TileColumnState(1, 9), L"N,0;0,9");
}

TEST(TileLayout, SizesAreRoundedToTheNearestWholeColumn) {
  EXPECT_EQ(RoundToColumns(0, 100), 0);
  EXPECT_EQ(RoundToColumns(49, 100), 0);
  EXPECT_EQ(RoundToColumns(50, 100), 100);
  EXPECT_EQ(RoundToColumns(149, 100), 100);
  EXPECT_EQ(RoundToColumns(150, 100), 200);
  EXPECT_EQ(RoundToColumns(63, 125), 125);
  EXPECT_EQ(RoundToColumns(62, 125), 0);
  EXPECT_EQ(RoundToColumns(77, 0), 77);
}

TEST(TileLayout, LineSampleLacksTheLetterYInBothCases) {
  const std::wstring sample = kLineSample;
  EXPECT_EQ(sample.size(), 60U);
  EXPECT_EQ(sample.find(L'Y'), std::wstring::npos);
  EXPECT_EQ(sample.find(L'y'), std::wstring::npos);
}

// Every unit is 10 pixels wide.
int32_t TenEach(const std::wstring& text) {
  return static_cast<int32_t>(text.size()) * 10;
}

TEST(FitText, TextThatFitsStays) {
  EXPECT_EQ(FitText(L"abcde", 50, true, TenEach), L"abcde");
  EXPECT_EQ(FitText(L"", 0, true, TenEach), L"");
}

TEST(FitText, WiderTextIsCutUntilItFitsTogetherWithTheDots) {
  EXPECT_EQ(FitText(L"abcdefgh", 79, true, TenEach), L"abcd...");
  EXPECT_EQ(FitText(L"abcdefgh", 30, true, TenEach), L"...");
  EXPECT_EQ(FitText(L"abcdefgh", 79, false, TenEach), L"abcdefg");
}

TEST(FitText, WhereTheDotsDoNotFitTheyAreLeftOut) {
  EXPECT_EQ(FitText(L"abcdefgh", 29, true, TenEach), L"ab");
  EXPECT_EQ(FitText(L"abcdefgh", 9, true, TenEach), L"");
  EXPECT_EQ(FitText(L"abcdefgh", -1, true, TenEach), L"");
}

TEST(FitText, SurrogatePairIsNotCutInTwo) {
  const std::wstring pair = {wchar_t{0xD83D}, wchar_t{0xDE00}};
  EXPECT_EQ(FitText(L"a" + pair + L"bcd", 20, false, TenEach), L"a");
  EXPECT_EQ(FitText(L"a" + pair + L"bcd", 30, false, TenEach), L"a" + pair);
}

TEST(FitText, AsksForWidthsByTheLogarithmOfTheLength) {
  int asked = 0;
  const auto counting = [&asked](const std::wstring& text) {
    ++asked;
    return TenEach(text);
  };
  EXPECT_EQ(FitText(std::wstring(100000, L'x'), 500, true, counting).size(), 50U);
  EXPECT_LT(asked, 25);
}

TEST(TileLayout, PictureStandsInTheMiddleOverTheNameAndTheState) {
  const TileLayout layout = LayOutTile({125, 32, 13, 8, 4, 2});
  EXPECT_EQ(layout.tile, (CellRect{0, 0, 125, 91}));
  EXPECT_EQ(layout.image, (CellRect{46, 8, 78, 40}));
  EXPECT_EQ(layout.name, (CellRect{8, 44, 117, 57}));
  EXPECT_EQ(layout.state, (CellRect{8, 57, 117, 83}));
}

TEST(TileLayout, TileOfALargePictureTakesWholeColumns) {
  EXPECT_EQ(LayOutTile({100, 200, 10, 5, 5, 1}).tile.right, 200);
  EXPECT_EQ(LayOutTile({100, 241, 10, 5, 5, 1}).tile.right, 300);
}

TEST(TileLayout, EntriesFillARowAndThenTheNext) {
  EXPECT_EQ(TileCell(0, 3), (GridCell{0, 0}));
  EXPECT_EQ(TileCell(5, 3), (GridCell{1, 2}));
  EXPECT_TRUE(TileCell(-1, 3).IsNone());
  EXPECT_EQ(TileEntry({1, 2}, 3, 6), 5);
  EXPECT_EQ(TileEntry({1, 2}, 3, 5), -1) << "a cell behind the last entry";
  EXPECT_EQ(TileEntry({0, 3}, 3, 6), -1);
  EXPECT_EQ(TileEntry({}, 3, 6), -1);
}

TEST(TileLayout, ArrowKeysWalkTheTilesInReadingOrder) {
  // Five entries in two columns.
  EXPECT_EQ(MoveAmongTiles(1, TileMove::kRight, 2, 5), 2) << "on to the next row";
  EXPECT_EQ(MoveAmongTiles(2, TileMove::kLeft, 2, 5), 1);
  EXPECT_EQ(MoveAmongTiles(0, TileMove::kLeft, 2, 5), 0);
  EXPECT_EQ(MoveAmongTiles(4, TileMove::kRight, 2, 5), 4);
  EXPECT_EQ(MoveAmongTiles(1, TileMove::kDown, 2, 5), 3);
  EXPECT_EQ(MoveAmongTiles(3, TileMove::kDown, 2, 5), 3) << "there is none below";
  EXPECT_EQ(MoveAmongTiles(3, TileMove::kUp, 2, 5), 1);
  EXPECT_EQ(MoveAmongTiles(1, TileMove::kUp, 2, 5), 1);
  EXPECT_EQ(MoveAmongTiles(3, TileMove::kFirst, 2, 5), 0);
  EXPECT_EQ(MoveAmongTiles(0, TileMove::kLast, 2, 5), 4);
}

TEST(TileLayout, FromNoTileAnyKeyGoesToTheFirstAndTheEndKeyToTheLast) {
  EXPECT_EQ(MoveAmongTiles(-1, TileMove::kDown, 2, 5), 0);
  EXPECT_EQ(MoveAmongTiles(-1, TileMove::kLast, 2, 5), 4);
  EXPECT_EQ(MoveAmongTiles(-1, TileMove::kLast, 2, 0), -1);
}

TEST(TileLayout, TextOfATileIsItsNameAndItsState) {
  EXPECT_EQ(TileText(L"Name", L"Not found"), L"Name, Not found");
  EXPECT_EQ(TileText(L"Name", L""), L"Name");
}

}  // namespace
}  // namespace postmarker
