#include "controls/AddressRows.h"

#include <gtest/gtest.h>

#include <random>
#include <set>

namespace postmarker {
namespace {

TEST(AddressRows, InsertionAtTheSortedPlaceGivesTheRowsThatASetGives) {
  std::mt19937 random(7);
  std::vector<std::wstring> rows;
  std::set<std::wstring> set;
  int reads = 0;
  for (int i = 0; i < 2000; ++i) {
    const std::wstring text = L"a" + std::to_wstring(random() % 700) + L"@b.org";
    reads = 0;
    const RowPlace place = FindRowPlace(
        static_cast<int32_t>(rows.size()),
        [&](int32_t row) {
          ++reads;
          return rows.at(static_cast<size_t>(row));
        },
        text);
    EXPECT_LE(reads, 11);
    EXPECT_EQ(place.exists, set.contains(text));
    if (!place.exists) {
      rows.insert(rows.begin() + place.row, text);
    }
    set.insert(text);
    EXPECT_EQ(rows.at(static_cast<size_t>(place.row)), text);
  }
  EXPECT_TRUE(std::equal(rows.begin(), rows.end(), set.begin(), set.end()));
}

TEST(AddressRows, DomainIsWhatFollowsTheLastAt) {
  EXPECT_EQ(DomainOf(L"a@b.org"), L"b.org");
  EXPECT_EQ(DomainOf(L"a@b@c"), L"c");
  EXPECT_EQ(DomainOf(L"a@"), L"");
  EXPECT_EQ(DomainOf(L"b.org"), L"");
}

TEST(AddressRows, ListFormIsTrimmedAndInLowerCase) {
  EXPECT_EQ(AddressForm(L" \tAnna@B.ORG\r\n"), L"anna@b.org");
  EXPECT_EQ(AddressForm(L"  "), L"");
}

TEST(AddressRows, PastedTextIsCutAtWhiteSpaceCommasAndSemicolons) {
  EXPECT_EQ(
      SplitAddresses(L"a@b.org\r\nC@d.org; e@f.org,,\t\"g@h.org\" <i@j.org>"),
      (std::vector<std::wstring>{L"a@b.org", L"c@d.org", L"e@f.org", L"g@h.org", L"i@j.org"}));
  EXPECT_EQ(SplitAddresses(L"Anna <anna@b.org>"),
            (std::vector<std::wstring>{L"anna", L"anna@b.org"}));
  EXPECT_TRUE(SplitAddresses(L" ,;<>\"\" \r\n").empty());
  EXPECT_TRUE(SplitAddresses(L"").empty());
}

class DecideEditTest : public testing::Test {
 protected:
  static EditOutcome Decide(const std::wstring& before, const std::wstring& typed,
                            bool cancelled = false) {
    return DecideEdit(
        {before, typed, cancelled},
        [](const std::wstring& text) { return text.find(L'@') != text.npos; },
        [](const std::wstring& text) { return text == L"other@b.org"; });
  }
};

TEST_F(DecideEditTest, AddressIsStored) {
  EXPECT_EQ(Decide(L"a@b.org", L"new@b.org"), EditOutcome::kStore);
  EXPECT_EQ(Decide(L"", L"new@b.org"), EditOutcome::kStore);
}

TEST_F(DecideEditTest, EscapeLeavesTheRowAndTakesANewOneAway) {
  EXPECT_EQ(Decide(L"a@b.org", L"new@b.org", true), EditOutcome::kKeep);
  EXPECT_EQ(Decide(L"", L"new@b.org", true), EditOutcome::kRemove);
}

TEST_F(DecideEditTest, TextThatIsNoAddressKeepsTheEditOpen) {
  EXPECT_EQ(Decide(L"a@b.org", L"nonsense"), EditOutcome::kInvalid);
  EXPECT_EQ(Decide(L"", L"nonsense"), EditOutcome::kInvalid);
}

TEST_F(DecideEditTest, AddressOfAnotherRowKeepsTheEditOpen) {
  EXPECT_EQ(Decide(L"a@b.org", L"OTHER@b.org"), EditOutcome::kDuplicate);
}

TEST_F(DecideEditTest, OldTextIsNoChangeEvenIfItIsNoAddress) {
  EXPECT_EQ(Decide(L"a@b.org", L" A@B.org "), EditOutcome::kKeep);
  EXPECT_EQ(Decide(L"harvested", L"harvested"), EditOutcome::kKeep);
}

TEST_F(DecideEditTest, UntouchedTextIsNoChangeWhateverItsForm) {
  EXPECT_EQ(Decide(L" in blanks ", L" in blanks "), EditOutcome::kKeep);
  EXPECT_EQ(Decide(L" ", L" "), EditOutcome::kKeep);
}

TEST_F(DecideEditTest, RowWhoseTextIsDeletedGoes) {
  EXPECT_EQ(Decide(L"a@b.org", L"  "), EditOutcome::kRemove);
  EXPECT_EQ(Decide(L"", L""), EditOutcome::kRemove);
}

TEST(AddressRows, NumberTakesItsPlaceInAText) {
  EXPECT_EQ(WithNumber(L"%d left out, %d", 12), L"12 left out, %d");
  EXPECT_EQ(WithNumber(L"none", 12), L"none");
}

}  // namespace
}  // namespace postmarker
