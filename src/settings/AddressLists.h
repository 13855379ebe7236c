// The spam filter's four lists of senders. Each operation opens and closes its key, and any number
// of threads and processes may run them at once. Entries are compared without regard to case.
#pragma once

#include <map>
#include <string>

#include "postmarker/WizardRequest.h"
#include "settings/SettingsStore.h"
#include "support/Results.h"

namespace postmarker {

// The lists, by what follows the text of the spam filter's key.
inline constexpr wchar_t kWhitelistAddresses[] = L"\\WhitelistAddresses";
inline constexpr wchar_t kBlacklistAddresses[] = L"\\BlacklistAddresses";
inline constexpr wchar_t kWhitelistDomains[] = L"\\WhitelistDomains";
inline constexpr wchar_t kBlacklistDomains[] = L"\\BlacklistDomains";

// Entries in lower case, each with an empty text.
using ListEntries = std::map<std::wstring, std::wstring>;

// Adds an entry and creates the list as needed. 0, or -1 if the list can't be created. Whether the
// entry could be written is not looked at.
ResultCode AddListEntry(const std::wstring& entry, const std::wstring& list,
                        SettingsStore& store = UserSettings());

// Takes an entry off a list, which is created if it is missing. 0, or -1 if it can't be created.
ResultCode RemoveListEntry(const std::wstring& entry, const std::wstring& list,
                           SettingsStore& store = UserSettings());

// Is the entry on the list? An entry with more than 260 bytes of data, which this module never
// writes, is not.
bool HasListEntry(const std::wstring& entry, const std::wstring& list,
                  const SettingsStore& store = UserSettings());

// Empties *entries and fills it with the list: the first 10000 entries in the registry's own order,
// up to the first one of more than 259 characters.
void ReadList(ListEntries* entries, const std::wstring& list,
              const SettingsStore& store = UserSettings());

// Takes all `entries` off a list.
void RemoveListEntries(const ListEntries& entries, const std::wstring& list,
                       SettingsStore& store = UserSettings());

// Puts an address or a domain on the list of that name and, if asked, takes it off the opposite
// list. 0, or 1 for an empty text, with which nothing is done. Failures of the registry are not
// reported.
ResultCode AddAddressToWhitelist(const std::wstring& address, bool removeFromOther,
                                 SettingsStore& store = UserSettings());
ResultCode AddAddressToBlacklist(const std::wstring& address, bool removeFromOther,
                                 SettingsStore& store = UserSettings());
ResultCode AddDomainToWhitelist(const std::wstring& domain, bool removeFromOther,
                                SettingsStore& store = UserSettings());
ResultCode AddDomainToBlacklist(const std::wstring& domain, bool removeFromOther,
                                SettingsStore& store = UserSettings());

// Puts each of the addresses on the whitelist and takes it off the blacklist.
void AddAddressesToWhitelist(const AddressSet& addresses, SettingsStore& store = UserSettings());

bool IsAddressWhitelisted(const std::wstring& address, const SettingsStore& store = UserSettings());
bool IsAddressBlacklisted(const std::wstring& address, const SettingsStore& store = UserSettings());

// Of an address, what follows its first "@" is looked for; a text without "@" as it stands.
bool IsDomainWhitelisted(const std::wstring& addressOrDomain,
                         const SettingsStore& store = UserSettings());
bool IsDomainBlacklisted(const std::wstring& addressOrDomain,
                         const SettingsStore& store = UserSettings());

// Empty *entries and fill it, as ReadList does.
void GetWhitelistAddresses(ListEntries* entries, const SettingsStore& store = UserSettings());
void GetBlacklistAddresses(ListEntries* entries, const SettingsStore& store = UserSettings());
void GetWhitelistDomains(ListEntries* entries, const SettingsStore& store = UserSettings());
void GetBlacklistDomains(ListEntries* entries, const SettingsStore& store = UserSettings());

// Take all `entries` off their list.
void RemoveWhitelistAddresses(const ListEntries& entries, SettingsStore& store = UserSettings());
void RemoveBlacklistAddresses(const ListEntries& entries, SettingsStore& store = UserSettings());
void RemoveWhitelistDomains(const ListEntries& entries, SettingsStore& store = UserSettings());
void RemoveBlacklistDomains(const ListEntries& entries, SettingsStore& store = UserSettings());

}  // namespace postmarker
