// What a test looks at of the whitelist.
#pragma once

#include "postmarker/WizardRequest.h"
#include "settings/AddressLists.h"

namespace postmarker::test {

// The addresses that are allowed.
inline AddressSet Whitelist() {
  ListEntries entries;
  GetWhitelistAddresses(&entries);
  AddressSet addresses;
  for (const auto& [address, ignored] : entries) {
    addresses.insert(address);
  }
  return addresses;
}

}  // namespace postmarker::test
