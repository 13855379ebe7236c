// Where Outlook Express and Windows Mail keep their store and the address book, by the registry.
#pragma once

#include <optional>
#include <string>

#include "clients/MachineView.h"

namespace postmarker::storeapi {

// Which of the two clients.
enum class StoreClient { kOutlookExpress, kWindowsMail };

// The id of the person's current identity; empty if there is none.
std::wstring ReadCurrentIdentity(const MachineView& machine);

// The registry key of an identity's settings, below the user's root.
std::wstring IdentityKey(const std::wstring& identity);

// The registry key of Windows Mail's settings, below the user's root.
inline constexpr wchar_t kWindowsMailKey[] = L"software\\microsoft\\windows mail";

// The folder with the store of an identity or, for an empty one, of the current one; if it has
// none, that of Windows Mail. Environment variables are put in; a path that has more than 1,024
// units then, with its terminator, counts as none. Empty if there is no store.
std::wstring GetStoreRoot(const std::wstring& identity, const MachineView& machine);

// The id of the client's store, eight bytes, at the current identity's root. Nothing if it can't be
// read or is all zeros.
std::optional<std::string> ReadMessageStoreId(StoreClient client, const MachineView& machine);

// The path of the person's address book file; empty if there is none.
std::wstring ReadWabPath(const MachineView& machine);

}  // namespace postmarker::storeapi
