// ParseReceivedLine and what is asked of hosts.
#include "analysis/headers/Received.h"
#include "FuzzTarget.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace postmarker;
  KsHostInfo from;
  KsHostInfo by;
  ParseReceivedLine(fuzz::Bytes(data, size), &from, &by);
  fuzz::Require(from.name.size() <= size && by.name.size() <= size);
  fuzz::Require(!by.IsConsistent() || !by.address.empty());
  fuzz::Require(!from.IsConsistent() || !from.name.empty());
  return 0;
}
