// The mail clients that the wizard knows: one row each.
#pragma once

#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "clients/MachineView.h"
#include "clients/MailClientAdapter.h"

namespace postmarker {

// A question about a client that a look at the machine answers.
using ClientQuery = std::function<bool(const MachineView& machine)>;

// One client. Texts live as long as the program.
struct ClientRow {
  // The name shown, and the key of all dispatching; compared without regard to case.
  std::wstring_view displayName = {};

  // The name of the client's key in the settings.
  std::wstring_view settingsName = {};

  // The suite's module inside the client, a file name; empty if there is none.
  std::wstring_view hookModule = {};

  // Its turn in the silent harvest of all clients, counted from 1. 0: it has none of its own, as
  // another row has the same store.
  int harvestTurn = 0;

  // Folder ids are numbers local to the store: the id "0" stands for the default folder, and the
  // store's id is written by the adapter and not taken from the chosen folder.
  bool hasLocalFolderIds = false;

  // The client can be told to move mails, so the wizard's switch for it is of use.
  bool canMoveEmails = true;

  const MailClientAdapter* adapter = nullptr;

  // What IsClientInstalled, IsClientSupported and IsClientReady ask. Without a function the answers
  // are those for a name that nobody knows: not installed, but supported and ready.
  ClientQuery isInstalled = {};
  ClientQuery isSupported = {};
  ClientQuery isReady = {};
};

// The row of a display name, case ignored. A name without a row gets a row of defaults whose
// settingsName is empty: such a client is set up under its own name. Never null.
const ClientRow* FindClient(std::wstring_view displayName);

// All rows, in the order in which clients are offered.
std::span<const ClientRow> AllClients();

// The settings key of a display name: the row's, or the name itself as it stands.
std::wstring ClientSettingsName(std::wstring_view displayName);

// Replaces the table for the life of the object; for tests, which bring clients of their own. Not
// for use while a wizard runs in another thread. The rows must outlive the object.
class ScopedClientTable {
 public:
  explicit ScopedClientTable(std::span<const ClientRow> rows);
  ScopedClientTable(const ScopedClientTable&) = delete;
  ScopedClientTable& operator=(const ScopedClientTable&) = delete;
  ~ScopedClientTable();

 private:
  std::span<const ClientRow> m_previous;
};

}  // namespace postmarker
