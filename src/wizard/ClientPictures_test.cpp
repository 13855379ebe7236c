#include "wizard/ClientPictures.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "clients/ClientTable.h"

namespace postmarker {
namespace {

TEST(ClientPictures, EveryClientOfTheTableHasAPictureOfItsOwn) {
  std::set<unsigned> pictures;
  for (const ClientRow& row : AllClients()) {
    const unsigned picture = TilePictureOf(row.displayName);
    EXPECT_NE(picture, 0U) << std::string(row.displayName.begin(), row.displayName.end());
    EXPECT_TRUE(pictures.insert(picture).second)
        << std::string(row.displayName.begin(), row.displayName.end());
  }
  EXPECT_EQ(pictures.size(), AllClients().size());
}

TEST(ClientPictures, PictureIsFoundWhateverTheCaseOfTheName) {
  EXPECT_EQ(TilePictureOf(L"INCREDIMAIL"), TilePictureOf(L"IncrediMail"));
}

TEST(ClientPictures, UnknownClientHasNoPicture) {
  EXPECT_EQ(TilePictureOf(L"Some Other Mailer"), 0U);
  EXPECT_EQ(TilePictureOf(L""), 0U);
}

}  // namespace
}  // namespace postmarker
