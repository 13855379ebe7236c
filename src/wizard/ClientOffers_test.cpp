#include "wizard/ClientOffers.h"

#include <gtest/gtest.h>

namespace postmarker {
namespace {

// The six clients, all usable. Windows Mail and Outlook Express share a set-up.
std::vector<ClientOffer> SixClients() {
  return {{L"Microsoft Outlook", L"Microsoft Outlook", true, true, true},
          {L"Windows Mail", L"Outlook Express", true, true, true},
          {L"Outlook Express", L"Outlook Express", false, true, true},
          {L"Windows Live Mail", L"Windows Live Mail", true, true, true},
          {L"Mozilla Thunderbird", L"Mozilla Thunderbird", true, true, true},
          {L"IncrediMail", L"IncrediMail", true, true, true}};
}

std::vector<ClientTile> Tiles(const std::vector<ClientOffer>& offers) {
  return TilesOf(offers, L"not found", L"not ready");
}

TEST(ClientTiles, UsableClientHasNoStatusAndIsEnabled) {
  for (const ClientTile& tile : Tiles(SixClients())) {
    EXPECT_TRUE(tile.isEnabled);
    EXPECT_EQ(tile.status, L"");
  }
}

TEST(ClientTiles, InstalledClientThatIsNotReadyIsDisabledAndSaysSo) {
  auto offers = SixClients();
  offers[4].isReady = false;
  const ClientTile tile = Tiles(offers).at(3);
  EXPECT_EQ(tile.name, L"Mozilla Thunderbird");
  EXPECT_EQ(tile.status, L"not ready");
  EXPECT_FALSE(tile.isEnabled);
}

TEST(ClientTiles, MissingClientIsDisabledAndNotFoundWhateverItsReadiness) {
  for (const bool ready : {false, true}) {
    auto offers = SixClients();
    offers[5].isInstalled = false;
    offers[5].isReady = ready;
    const ClientTile tile = Tiles(offers).at(4);
    EXPECT_EQ(tile.status, L"not found");
    EXPECT_FALSE(tile.isEnabled);
  }
}

TEST(ClientTiles, UnsupportedClientHasNoTileAtAll) {
  auto offers = SixClients();
  offers[3].isSupported = false;
  offers[3].isInstalled = false;
  std::vector<std::wstring> names;
  for (const ClientTile& tile : Tiles(offers)) {
    names.push_back(tile.name);
  }
  EXPECT_EQ(names, (std::vector<std::wstring>{L"Microsoft Outlook", L"Windows Mail",
                                              L"Mozilla Thunderbird", L"IncrediMail"}));
}

TEST(ClientTiles, LastClientIsSelectedWhateverTheCase) {
  EXPECT_EQ(TileToSelect(SixClients(), L"microsoft OUTLOOK"), 0);
  EXPECT_EQ(TileToSelect(SixClients(), L"IncrediMail"), 4);
}

TEST(ClientTiles, WindowsMailAndOutlookExpressStandForEachOther) {
  auto offers = SixClients();
  EXPECT_EQ(TileToSelect(offers, L"outlook express"), 1);
  EXPECT_EQ(TileToSelect(offers, L"Windows Mail"), 1);
  offers[1].isSupported = false;
  offers[2].isSupported = true;
  EXPECT_EQ(TileToSelect(offers, L"outlook express"), 1);
  EXPECT_EQ(TileToSelect(offers, L"Windows Mail"), 1);
  offers[2].isSupported = false;
  EXPECT_EQ(TileToSelect(offers, L"Windows Mail"), -1);
}

TEST(ClientTiles, DisabledClientIsSelectedAsWell) {
  auto offers = SixClients();
  offers[4].isReady = false;
  EXPECT_EQ(TileToSelect(offers, L"Mozilla Thunderbird"), 3);
}

TEST(ClientTiles, UnknownAndEmptyNameAndClientWithoutATileSelectNothing) {
  auto offers = SixClients();
  offers[3].isSupported = false;
  EXPECT_EQ(TileToSelect(offers, L"Some Other Mailer"), -1);
  EXPECT_EQ(TileToSelect(offers, L""), -1);
  EXPECT_EQ(TileToSelect(offers, L"Windows Live Mail"), -1);
  EXPECT_EQ(TileToSelect({}, L"IncrediMail"), -1);
}

}  // namespace
}  // namespace postmarker
