#include "controls/CellSearch.h"

#include <gtest/gtest.h>

#include <set>
#include <vector>

namespace postmarker {
namespace {

using Rows = std::vector<std::vector<std::wstring>>;

class CellSearchTest : public testing::Test {
 protected:
  GridCell Find(const std::wstring& search, GridCell start = {}) {
    m_asked.clear();
    return FindCell({static_cast<int32_t>(m_rows.size()), 2}, start, search, m_options,
                    [this](int32_t row, int32_t col) {
                      EXPECT_TRUE(m_asked.insert({row, col}).second) << "asked twice";
                      return m_rows[static_cast<size_t>(row)][static_cast<size_t>(col)];
                    });
  }

  Rows m_rows = {{L"Anna", L"Berlin"}, {L"Bert", L"Anholt"}, {L"Hanna", L"Celle"}};
  SearchOptions m_options;
  std::set<std::pair<int32_t, int32_t>> m_asked;
};

TEST_F(CellSearchTest, WalksTheColumnsOfARowAndThenTheNextRow) {
  EXPECT_EQ(Find(L"an"), (GridCell{0, 0}));
  EXPECT_EQ(Find(L"an", {0, 1}), (GridCell{1, 1}));
  EXPECT_EQ(Find(L"an", {2, 0}), (GridCell{2, 0}));
}

TEST_F(CellSearchTest, WrapsAtTheEndAndStopsWhereItBegan) {
  EXPECT_EQ(Find(L"berlin", {1, 0}), (GridCell{0, 1}));
  EXPECT_TRUE(Find(L"nobody", {1, 1}).IsNone());
  EXPECT_EQ(m_asked.size(), 6U) << "each cell once";
}

TEST_F(CellSearchTest, OfTheFocusColumnOnlyItsRowsAreWalked) {
  m_options.mode = SearchMode::kFocusColumn;
  EXPECT_EQ(Find(L"an", {0, 1}), (GridCell{1, 1}));
  EXPECT_TRUE(Find(L"bert", {0, 1}).IsNone());
  EXPECT_EQ(m_asked.size(), 3U);
  EXPECT_EQ(Find(L"anna", {1, 0}), (GridCell{2, 0}));
  EXPECT_EQ(Find(L"anna", {0, 0}), (GridCell{0, 0}));
}

TEST_F(CellSearchTest, WithoutAFocusCellItBeginsAtTheFirst) {
  EXPECT_EQ(Find(L"b"), (GridCell{0, 1}));
  EXPECT_EQ(Find(L"b", {9, 9}), (GridCell{0, 1}));
  m_options.mode = SearchMode::kFocusColumn;
  EXPECT_EQ(Find(L"b"), (GridCell{1, 0}));
}

TEST_F(CellSearchTest, ComparesTheStartAloneIfAskedTo) {
  m_options.anywhere = false;
  EXPECT_EQ(Find(L"an", {1, 0}), (GridCell{1, 1}));
  EXPECT_EQ(Find(L"anna", {2, 0}), (GridCell{0, 0}));
  EXPECT_TRUE(Find(L"nna").IsNone());
}

TEST_F(CellSearchTest, CaseCountsOnlyIfAskedTo) {
  EXPECT_EQ(Find(L"CELLE"), (GridCell{2, 1}));
  m_options.caseSensitive = true;
  EXPECT_TRUE(Find(L"CELLE").IsNone());
  EXPECT_EQ(Find(L"anna"), (GridCell{2, 0})) << "inside of Hanna";
}

TEST_F(CellSearchTest, EmptySearchAndEmptyGridFindNothing) {
  EXPECT_TRUE(Find(L"").IsNone());
  m_rows.clear();
  EXPECT_TRUE(Find(L"a").IsNone());
}

TEST(SearchText, CharactersAreAppendedAndABackspaceTakesOneOff) {
  SearchText search;
  EXPECT_EQ(search.Type(L'a', true, 255), SearchKey::kChanged);
  EXPECT_EQ(search.Type(L'\x00E4', true, 255), SearchKey::kChanged);
  EXPECT_EQ(search.Text(), L"a\x00E4");
  EXPECT_EQ(search.Type(0x08, true, 255), SearchKey::kChanged);
  EXPECT_EQ(search.Text(), L"a");
  EXPECT_EQ(search.Type(0x08, true, 255), SearchKey::kChanged);
  EXPECT_EQ(search.Type(0x08, true, 255), SearchKey::kIgnored);
  EXPECT_FALSE(search.IsActive());
}

TEST(SearchText, BlankActsUntilASearchHasBegun) {
  SearchText search;
  EXPECT_EQ(search.Type(L' ', true, 255), SearchKey::kAction);
  search.Type(L'a', true, 255);
  EXPECT_EQ(search.Type(L' ', true, 255), SearchKey::kChanged);
  EXPECT_EQ(search.Text(), L"a ");
  EXPECT_EQ(search.Type(L' ', false, 255), SearchKey::kAction) << "where blanks do not search";
  EXPECT_EQ(search.Text(), L"a ");
}

TEST(SearchText, GrowsOnlyWhileItIsShorterThanItsRoom) {
  SearchText search;
  for (int i = 0; i < 300; ++i) {
    search.Type(L'x', true, 255);
  }
  EXPECT_EQ(search.Text().size(), 255U);
  EXPECT_EQ(search.Type(L'x', true, 255), SearchKey::kIgnored);
}

TEST(SearchText, ControlCharactersAreIgnored) {
  SearchText search;
  for (const wchar_t unit : {L'\0', L'\t', L'\r', L'\x1B', L'\x7F'}) {
    EXPECT_EQ(search.Type(unit, true, 255), SearchKey::kIgnored);
  }
  EXPECT_FALSE(search.IsActive());
}

}  // namespace
}  // namespace postmarker
