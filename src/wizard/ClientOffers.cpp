#include "wizard/ClientOffers.h"

#include <algorithm>

#include "support/Text.h"

namespace postmarker {

std::vector<ClientTile> TilesOf(const std::vector<ClientOffer>& offers,
                                const std::wstring& notFound, const std::wstring& notReady) {
  std::vector<ClientTile> tiles;
  for (const ClientOffer& offer : offers) {
    if (!offer.isSupported) {
      continue;
    }
    ClientTile tile = {offer.displayName, {}, offer.isInstalled && offer.isReady};
    if (!tile.isEnabled) {
      tile.status = offer.isInstalled ? notReady : notFound;
    }
    tiles.push_back(std::move(tile));
  }
  return tiles;
}

int TileToSelect(const std::vector<ClientOffer>& offers, std::wstring_view lastClient) {
  const auto last = std::find_if(offers.begin(), offers.end(), [lastClient](const auto& offer) {
    return EqualNoCase(offer.displayName, lastClient);
  });
  if (last == offers.end()) {
    return -1;
  }
  int tile = 0;
  for (const ClientOffer& offer : offers) {
    if (offer.isSupported && offer.settingsName == last->settingsName) {
      return tile;
    }
    tile += offer.isSupported ? 1 : 0;
  }
  return -1;
}

}  // namespace postmarker
