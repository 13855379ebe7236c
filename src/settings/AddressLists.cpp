#include "settings/AddressLists.h"

#include "support/Text.h"

namespace postmarker {
namespace {

constexpr ResultCode kNoList = -1;
constexpr ResultCode kNothingToAdd = 1;
constexpr uint32_t kDataRoom = 260;
constexpr uint32_t kNameRoom = 260;
constexpr uint32_t kMaxEntries = 10'000;

ResultCode AddTo(const wchar_t* list, const wchar_t* other, const std::wstring& entry,
                 bool removeFromOther, SettingsStore& store) {
  if (entry.empty()) {
    return kNothingToAdd;
  }
  AddListEntry(entry, list, store);
  if (removeFromOther) {
    RemoveListEntry(entry, other, store);
  }
  return kOk;
}

std::wstring DomainOf(const std::wstring& addressOrDomain) {
  const size_t at = addressOrDomain.find(L'@');
  return at == std::wstring::npos ? addressOrDomain : addressOrDomain.substr(at + 1);
}

}  // namespace

ResultCode AddListEntry(const std::wstring& entry, const std::wstring& list, SettingsStore& store) {
  const auto key = store.Create(list);
  if (!key) {
    return kNoList;
  }
  key->Write(entry, ValueType::kText, {});
  return kOk;
}

ResultCode RemoveListEntry(const std::wstring& entry, const std::wstring& list,
                           SettingsStore& store) {
  const auto key = store.Create(list);
  if (!key) {
    return kNoList;
  }
  key->Delete(entry);
  return kOk;
}

bool HasListEntry(const std::wstring& entry, const std::wstring& list, const SettingsStore& store) {
  const auto key = store.Open(list);
  return key && key->Read(entry, kDataRoom).has_value();
}

void ReadList(ListEntries* entries, const std::wstring& list, const SettingsStore& store) {
  entries->clear();
  const auto key = store.Open(list);
  if (!key) {
    return;
  }
  for (uint32_t i = 0; i < kMaxEntries; ++i) {
    const auto name = key->NameAt(i, kNameRoom);
    if (!name) {
      return;
    }
    if (!name->empty()) {
      entries->emplace(ToLower(*name), std::wstring());
    }
  }
}

void RemoveListEntries(const ListEntries& entries, const std::wstring& list, SettingsStore& store) {
  for (const auto& [entry, unused] : entries) {
    RemoveListEntry(entry, list, store);
  }
}

ResultCode AddAddressToWhitelist(const std::wstring& address, bool removeFromOther,
                                 SettingsStore& store) {
  return AddTo(kWhitelistAddresses, kBlacklistAddresses, address, removeFromOther, store);
}

void AddAddressesToWhitelist(const AddressSet& addresses, SettingsStore& store) {
  for (const std::wstring& address : addresses) {
    (void)AddAddressToWhitelist(address, true, store);
  }
}

ResultCode AddAddressToBlacklist(const std::wstring& address, bool removeFromOther,
                                 SettingsStore& store) {
  return AddTo(kBlacklistAddresses, kWhitelistAddresses, address, removeFromOther, store);
}

ResultCode AddDomainToWhitelist(const std::wstring& domain, bool removeFromOther,
                                SettingsStore& store) {
  return AddTo(kWhitelistDomains, kBlacklistDomains, domain, removeFromOther, store);
}

ResultCode AddDomainToBlacklist(const std::wstring& domain, bool removeFromOther,
                                SettingsStore& store) {
  return AddTo(kBlacklistDomains, kWhitelistDomains, domain, removeFromOther, store);
}

bool IsAddressWhitelisted(const std::wstring& address, const SettingsStore& store) {
  return HasListEntry(address, kWhitelistAddresses, store);
}

bool IsAddressBlacklisted(const std::wstring& address, const SettingsStore& store) {
  return HasListEntry(address, kBlacklistAddresses, store);
}

bool IsDomainWhitelisted(const std::wstring& addressOrDomain, const SettingsStore& store) {
  return HasListEntry(DomainOf(addressOrDomain), kWhitelistDomains, store);
}

bool IsDomainBlacklisted(const std::wstring& addressOrDomain, const SettingsStore& store) {
  return HasListEntry(DomainOf(addressOrDomain), kBlacklistDomains, store);
}

void GetWhitelistAddresses(ListEntries* entries, const SettingsStore& store) {
  ReadList(entries, kWhitelistAddresses, store);
}

void GetBlacklistAddresses(ListEntries* entries, const SettingsStore& store) {
  ReadList(entries, kBlacklistAddresses, store);
}

void GetWhitelistDomains(ListEntries* entries, const SettingsStore& store) {
  ReadList(entries, kWhitelistDomains, store);
}

void GetBlacklistDomains(ListEntries* entries, const SettingsStore& store) {
  ReadList(entries, kBlacklistDomains, store);
}

void RemoveWhitelistAddresses(const ListEntries& entries, SettingsStore& store) {
  RemoveListEntries(entries, kWhitelistAddresses, store);
}

void RemoveBlacklistAddresses(const ListEntries& entries, SettingsStore& store) {
  RemoveListEntries(entries, kBlacklistAddresses, store);
}

void RemoveWhitelistDomains(const ListEntries& entries, SettingsStore& store) {
  RemoveListEntries(entries, kWhitelistDomains, store);
}

void RemoveBlacklistDomains(const ListEntries& entries, SettingsStore& store) {
  RemoveListEntries(entries, kBlacklistDomains, store);
}

}  // namespace postmarker
