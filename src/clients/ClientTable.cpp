#include "clients/ClientTable.h"

#include <algorithm>

#include "clients/ClientDetection.h"
#include "clients/livemail/LiveMailPaths.h"
#include "support/Text.h"

#if defined(_WIN32)
#include "clients/incredimail/ImIdentity_win.h"
#include "clients/incredimail/IncrediMailAdapter_win.h"
#include "clients/livemail/LiveMailAdapter_win.h"
#include "clients/outlook/OutlookAdapter_win.h"
#include "clients/storeapi/StoreAdapter_win.h"
#include "clients/thunderbird/TbInstallation_win.h"
#include "clients/thunderbird/ThunderbirdAdapter_win.h"
#endif

namespace postmarker {
namespace {

// The adapter of clients that nobody knows, and of those that can't be reached on this platform.
const MailClientAdapter* UnknownClient() {
  static const MailClientAdapter adapter;
  return &adapter;
}

const MailClientAdapter* Outlook() {
#if defined(_WIN32)
  static const OutlookAdapter adapter;
  return &adapter;
#else
  return UnknownClient();
#endif
}

const MailClientAdapter* WindowsMail() {
#if defined(_WIN32)
  static const StoreAdapter adapter(storeapi::StoreClient::kWindowsMail);
  return &adapter;
#else
  return UnknownClient();
#endif
}

const MailClientAdapter* OutlookExpress() {
#if defined(_WIN32)
  static const StoreAdapter adapter(storeapi::StoreClient::kOutlookExpress);
  return &adapter;
#else
  return UnknownClient();
#endif
}

const MailClientAdapter* IncrediMail() {
#if defined(_WIN32)
  static const IncrediMailAdapter adapter;
  return &adapter;
#else
  return UnknownClient();
#endif
}

const MailClientAdapter* LiveMail() {
#if defined(_WIN32)
  static const LiveMailAdapter adapter;
  return &adapter;
#else
  return UnknownClient();
#endif
}

const MailClientAdapter* Thunderbird() {
#if defined(_WIN32)
  static const ThunderbirdAdapter adapter;
  return &adapter;
#else
  return UnknownClient();
#endif
}

bool Always(const MachineView& /*machine*/) {
  return true;
}

#if defined(_WIN32)
bool HasIncrediMail(const MachineView& /*machine*/) {
  return incredimail::IsIncrediMailInstalled();
}

bool IsThunderbirdInstalled(const MachineView& machine) {
  return !thunderbird::GetThunderbirdExePath(machine).empty();
}

bool IsThunderbirdReady(const MachineView& /*machine*/) {
  return thunderbird::IsThunderbirdExtensionInstalled();
}
#else
constexpr bool (*IsThunderbirdInstalled)(const MachineView& machine) = nullptr;
constexpr bool (*IsThunderbirdReady)(const MachineView& machine) = nullptr;
constexpr bool (*HasIncrediMail)(const MachineView& machine) = nullptr;
#endif

std::span<const ClientRow> BuiltInRows() {
  static const ClientRow rows[] = {
      {.displayName = L"Microsoft Outlook",
       .settingsName = L"Microsoft Outlook",
       .harvestTurn = 1,
       .adapter = Outlook(),
       .isInstalled = IsOutlookConfigured},
      // Deliberate: both clients of the store interfaces share one record of settings, so that who
      // moves from one to the other keeps the set-up.
      {.displayName = L"Windows Mail",
       .settingsName = L"Outlook Express",
       .hookModule = L"StoreShim.dll",
       .hasLocalFolderIds = true,
       .adapter = WindowsMail(),
       .isInstalled = Always,
       .isSupported = IsWindowsMailSupported},
      {.displayName = L"Outlook Express",
       .settingsName = L"Outlook Express",
       .hookModule = L"StoreShim.dll",
       .harvestTurn = 2,
       .hasLocalFolderIds = true,
       .adapter = OutlookExpress(),
       .isInstalled = Always,
       .isSupported = IsOutlookExpressSupported},
      {.displayName = L"Windows Live Mail",
       .settingsName = L"Windows Live Mail",
       .hookModule = L"WindowsLiveShim.dll",
       .harvestTurn = 5,
       .hasLocalFolderIds = true,
       .adapter = LiveMail(),
       .isInstalled = livemail::IsWindowsLiveMailInstalled,
       .isSupported = IsWindowsLiveMailSupported},
      {.displayName = L"Mozilla Thunderbird",
       .settingsName = L"Mozilla Thunderbird",
       .harvestTurn = 3,
       .adapter = Thunderbird(),
       .isInstalled = IsThunderbirdInstalled,
       .isReady = IsThunderbirdReady},
      {.displayName = L"IncrediMail",
       .settingsName = L"IncrediMail",
       .hookModule = L"IncrediMailShim.dll",
       .harvestTurn = 4,
       .canMoveEmails = false,
       .adapter = IncrediMail(),
       .isInstalled = HasIncrediMail},
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
