#include "controls/GridCell.h"

#include <gtest/gtest.h>

namespace postmarker {
namespace {

TEST(GridCell, SortOrderStepsUpDownAndBackToNone) {
  EXPECT_EQ(NextSortOrder(SortOrder::kNone), SortOrder::kAscending);
  EXPECT_EQ(NextSortOrder(SortOrder::kAscending), SortOrder::kDescending);
  EXPECT_EQ(NextSortOrder(SortOrder::kDescending), SortOrder::kNone);
}

CellKind EvenRowsAreChecks(int32_t row, int32_t /*col*/) {
  return row % 2 == 0 ? CellKind::kCheck : CellKind::kRadio;
}

TEST(GridCell, CheckingOneOfSeveralSelectedRowsReachesThoseOfTheSameKindOnly) {
  EXPECT_EQ(RowsToCheck({2, 0}, {0, 1, 2, 3, 4}, EvenRowsAreChecks),
            (std::vector<int32_t>{0, 2, 4}));
  EXPECT_EQ(RowsToCheck({3, 0}, {0, 1, 2, 3, 4}, EvenRowsAreChecks), (std::vector<int32_t>{1, 3}));
}

TEST(GridCell, CheckingWithOneOrNoRowSelectedReachesTheCellAlone) {
  EXPECT_EQ(RowsToCheck({2, 0}, {2}, EvenRowsAreChecks), std::vector<int32_t>{2});
  EXPECT_EQ(RowsToCheck({2, 0}, {}, EvenRowsAreChecks), std::vector<int32_t>{2});
}

// Three rows in view from row 5 of 7 on, of two columns whose display order is 1, 0.
GridGeometry TwoColumns() {
  return {{{1, 0, 50}, {0, 50, 80}}, 5, 7, 20, 10, 50};
}

TEST(GridCell, HitTestFindsTheRowFromTheTopAndTheColumnInDisplayOrder) {
  CellRect rect;
  EXPECT_EQ(HitTestCell(TwoColumns(), 10, 20, &rect), (GridCell{5, 1}));
  EXPECT_EQ(rect, (CellRect{0, 20, 50, 30}));
  EXPECT_EQ(HitTestCell(TwoColumns(), 50, 39, &rect), (GridCell{6, 0}));
  EXPECT_EQ(rect, (CellRect{50, 30, 80, 40}));
}

TEST(GridCell, HitTestBesideAllCellsFindsNoneAndKeepsTheRectangle) {
  CellRect rect = {1, 2, 3, 4};
  for (const auto& [x, y] : {std::pair{10, 19}, {80, 25}, {-1, 25}, {10, 40}, {10, 60}}) {
    EXPECT_TRUE(HitTestCell(TwoColumns(), x, y, &rect).IsNone()) << x << ' ' << y;
  }
  EXPECT_EQ(rect, (CellRect{1, 2, 3, 4}));
  EXPECT_TRUE(HitTestCell({}, 0, 0, nullptr).IsNone());
}

TEST(GridCell, HitTestEndsAtTheLowerEdgeOfTheView) {
  GridGeometry geometry = TwoColumns();
  geometry.rowCount = 2000000000;
  EXPECT_EQ(HitTestCell(geometry, 10, 45, nullptr), (GridCell{7, 1}));
  EXPECT_TRUE(HitTestCell(geometry, 10, 50, nullptr).IsNone());
}

TEST(GridCell, OfColumnsWithoutWidthNoneIsHit) {
  EXPECT_EQ(HitTestCell({{{0, 0, 0}, {1, 0, 9}}, 0, 1, 0, 10, 50}, 0, 0, nullptr),
            (GridCell{0, 1}));
}

TEST(GridCell, StepsAmongColumnsFollowTheDisplayOrderAndStopAtTheEnds) {
  const std::vector<int32_t> order = {2, 0, 1};
  EXPECT_EQ(StepColumn(order, 2, 1), 0);
  EXPECT_EQ(StepColumn(order, 0, 1), 1);
  EXPECT_EQ(StepColumn(order, 1, 1), 1);
  EXPECT_EQ(StepColumn(order, 0, -1), 2);
  EXPECT_EQ(StepColumn(order, 2, -1), 2);
  EXPECT_EQ(StepColumn(order, -1, 1), 2);
  EXPECT_EQ(StepColumn({}, 0, 1), -1);
}

}  // namespace
}  // namespace postmarker
