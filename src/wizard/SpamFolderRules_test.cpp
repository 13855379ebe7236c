#include "wizard/SpamFolderRules.h"

#include <gtest/gtest.h>

namespace postmarker {
namespace {

TEST(SpamFolderRules, EmptyIdAndZeroMeanTheDefaultFolder) {
  EXPECT_TRUE(MeansDefaultFolder(""));
  EXPECT_TRUE(MeansDefaultFolder("0"));
  EXPECT_FALSE(MeansDefaultFolder("00"));
  EXPECT_FALSE(MeansDefaultFolder("4"));
}

TEST(SpamFolderRules, DefaultFolderIsSavedAsZeroWithoutRegardToCase) {
  const MailFolderRef chosen = {L"\\\\Store\\Deleted", "aB4", "Store", 1};
  const MailFolderRef defaultFolder = {L"other", "Ab4", "sTORE", 0};
  EXPECT_EQ(SpamFolderIdToSave(chosen, defaultFolder), "0");
}

TEST(SpamFolderRules, BothIdsMustBeThoseOfTheDefaultFolder) {
  const MailFolderRef chosen = {L"x", "4", "one", 1};
  EXPECT_EQ(SpamFolderIdToSave(chosen, {L"x", "4", "two", 1}), "4");
  EXPECT_EQ(SpamFolderIdToSave(chosen, {L"x", "5", "one", 1}), "4");
}

TEST(SpamFolderRules, StoreIdOfTheListWinsAndTheLastMatchStands) {
  const MailFolderList folders = {
      {L"a", "7", "first", 1}, {L"b", "8", "other", 1}, {L"c", "7", "last", 1}};
  MailFolderRef rec = {L"saved", "7", "old", 1};
  TakeStoreIdFromList(folders, &rec);
  EXPECT_EQ(rec.secondId, "last");
  EXPECT_EQ(rec.name, L"saved");
}

TEST(SpamFolderRules, StoreIdIsMatchedByTheExactFolderId) {
  MailFolderRef rec = {L"saved", "aa", "old", 1};
  TakeStoreIdFromList({{L"a", "AA", "new", 1}}, &rec);
  EXPECT_EQ(rec.secondId, "old");
}

TEST(SpamFolderRules, EachPlaceOfTheNoticeIsFilledOnce) {
  EXPECT_EQ(FillIn(L"Close %s, then open %s.", L"Windows Mail"),
            L"Close Windows Mail, then open Windows Mail.");
  EXPECT_EQ(FillIn(L"", L"x"), L"");
  EXPECT_EQ(FillIn(L"100 %", L"x"), L"100 %");
  // A name that looks like a place is not filled again.
  EXPECT_EQ(FillIn(L"%s!", L"%s%n"), L"%s%n!");
}

}  // namespace
}  // namespace postmarker
