#include "clients/storeapi/WabFile.h"

#include <cstdint>

#include "clients/storeapi/StoreLocation.h"
#include "support/MappedFile.h"
#include "support/Text.h"

namespace postmarker::storeapi {
namespace {

constexpr size_t kTableOffsetAt = 0x60;
constexpr size_t kEntryCountAt = 0x64;
constexpr size_t kEntrySize = 68;

// An entry has half of this many units. Deliberate: one without a terminator runs on into the next
// entry, as the address book's own count of bytes is taken for one of characters.
constexpr size_t kMaxAddressChars = 68;

// Deliberate: the high bytes are ignored. Mail addresses of that time are ASCII.
std::string ReadEntry(std::string_view bytes) {
  std::string address;
  for (size_t at = 0; at < bytes.size() && bytes[at] != '\0' && address.size() < kMaxAddressChars;
       at += sizeof(char16_t)) {
    address.push_back(bytes[at]);
  }
  return address;
}

}  // namespace

std::vector<std::string> ParseWabFile(std::string_view bytes) {
  std::vector<std::string> addresses;
  if (bytes.size() <= kEntryCountAt) {
    return addresses;
  }
  uint64_t position = 0;
  for (size_t i = 0; i < sizeof(uint32_t); ++i) {
    position |= uint64_t{static_cast<uint8_t>(bytes[kTableOffsetAt + i])} << (8 * i);
  }
  // Deliberate: a signed byte, so that a damaged count of 128 or more means no entries.
  const auto count = static_cast<int8_t>(bytes[kEntryCountAt]);
  for (int i = 0; i < count && position < bytes.size(); ++i, position += kEntrySize) {
    addresses.push_back(ReadEntry(bytes.substr(static_cast<size_t>(position))));
  }
  return addresses;
}

void AddWabAddresses(std::string_view bytes, AddressSet* addresses) {
  for (const std::string& address : ParseWabFile(bytes)) {
    addresses->insert(Widen(address));
  }
}

void ReadWabFile(const MachineView& machine, AddressSet* addresses) {
  const MappedFile file(ReadWabPath(machine), 1);
  AddWabAddresses(file.Bytes(), addresses);
}

}  // namespace postmarker::storeapi
