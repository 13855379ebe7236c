#include "clients/ClientTable.h"

#include <algorithm>

#include "support/Text.h"

#if defined(_WIN32)
#include "clients/incredimail/IncrediMailAdapter_win.h"
#endif

namespace postmarker {
namespace {

// The adapter of clients that nobody knows, and of those that can't be reached on this platform.
const MailClientAdapter* UnknownClient() {
  static const MailClientAdapter adapter;
  return &adapter;
}

const MailClientAdapter* IncrediMail() {
#if defined(_WIN32)
  static const IncrediMailAdapter adapter;
  return &adapter;
#else
  return UnknownClient();
#endif
}

std::span<const ClientRow> BuiltInRows() {
  static const ClientRow rows[] = {
      {.displayName = L"Microsoft Outlook",
       .settingsName = L"Microsoft Outlook",
       .needsOutlookSession = true,
       .adapter = UnknownClient()},
      // Deliberate: both clients of the store interfaces share one record of settings, so that who
      // moves from one to the other keeps the set-up.
      {.displayName = L"Windows Mail",
       .settingsName = L"Outlook Express",
       .hookModule = L"StoreShim.dll",
       .hasLocalFolderIds = true,
       .adapter = UnknownClient()},
      {.displayName = L"Outlook Express",
       .settingsName = L"Outlook Express",
       .hookModule = L"StoreShim.dll",
       .hasLocalFolderIds = true,
       .adapter = UnknownClient()},
      {.displayName = L"Windows Live Mail",
       .settingsName = L"Windows Live Mail",
       .hookModule = L"WindowsLiveShim.dll",
       .hasLocalFolderIds = true,
       .adapter = UnknownClient()},
      {.displayName = L"Mozilla Thunderbird",
       .settingsName = L"Mozilla Thunderbird",
       .adapter = UnknownClient()},
      {.displayName = L"IncrediMail",
       .settingsName = L"IncrediMail",
       .hookModule = L"IncrediMailShim.dll",
       .canMoveEmails = false,
       .adapter = IncrediMail()},
  };
  return rows;
}

const ClientRow* UnknownRow() {
  static const ClientRow row = {.adapter = UnknownClient()};
  return &row;
}

std::span<const ClientRow>& CurrentRows() {
  static std::span<const ClientRow> rows = BuiltInRows();
  return rows;
}

}  // namespace

const ClientRow* FindClient(std::wstring_view displayName) {
  const auto rows = CurrentRows();
  const auto found = std::find_if(rows.begin(), rows.end(), [displayName](const ClientRow& row) {
    return EqualNoCase(row.displayName, displayName);
  });
  return found == rows.end() ? UnknownRow() : &*found;
}

std::span<const ClientRow> AllClients() {
  return CurrentRows();
}

std::wstring ClientSettingsName(std::wstring_view displayName) {
  const std::wstring_view name = FindClient(displayName)->settingsName;
  return std::wstring(name.empty() ? displayName : name);
}

ScopedClientTable::ScopedClientTable(std::span<const ClientRow> rows) : m_previous(CurrentRows()) {
  CurrentRows() = rows;
}

ScopedClientTable::~ScopedClientTable() {
  CurrentRows() = m_previous;
}

}  // namespace postmarker
