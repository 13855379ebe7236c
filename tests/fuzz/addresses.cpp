// ParseAddressList.
#include "FuzzTarget.h"
#include "analysis/headers/AddressList.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace postmarker;
  AddressMap addresses;
  ParseAddressList(fuzz::Bytes(data, size), &addresses);
  for (const auto& [address, displayName] : addresses) {
    fuzz::Require(address.size() + displayName.size() <= size);
  }
  return 0;
}
