// What the client page shows of the mail clients. No window is needed for it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace postmarker {

// A client and what its detection found.
struct ClientOffer {
  std::wstring displayName;
  std::wstring settingsName;  // clients of the same name share one set-up
  bool isSupported = false;   // a client that is not has no tile
  bool isInstalled = false;
  bool isReady = false;  // only of meaning for one that is installed
};

// A client's tile.
struct ClientTile {
  std::wstring name;
  std::wstring status;  // why it can't be chosen; empty if it can
  bool isEnabled = true;
};

// The tiles of the supported clients, in their order. `notFound` and `notReady` are the two texts
// of a status.
std::vector<ClientTile> TilesOf(const std::vector<ClientOffer>& offers,
                                const std::wstring& notFound, const std::wstring& notReady);

// The tile, counted from 0, that stands for the client configured last: its own, or that of the one
// which shares its set-up. -1 if it has none or is unknown. Case is ignored.
int TileToSelect(const std::vector<ClientOffer>& offers, std::wstring_view lastClient);

}  // namespace postmarker
