// Lists of mail addresses, as senders and recipients stand in headers.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace postmarker {

// From lower-case address to display name, both bytes.
using AddressMap = std::map<std::string, std::string>;

// Adds the addresses of a list to `map`; a later one of the same address replaces the earlier. An
// item without angle brackets has an empty display name, and an empty item has the address "". The
// time is linear in the length of `text`, apart from the map's own. Deliberate: the comma that ends
// an item is looked for after the next ">", so an address without angle brackets before one
// with them falls into that one's display name. Display names hold commas far more often than lists
// mix both forms.
void ParseAddressList(std::string_view text, AddressMap* map);

// Calls `use` with each address that ParseAddressList takes from the list, in the list's order and
// as often as it stands there. The bytes live during the call.
void ForEachAddress(std::string_view text, const std::function<void(std::string_view)>& use);

}  // namespace postmarker
