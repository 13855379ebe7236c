// ParseAddressFile against the same rule told slot by slot.
#include "FuzzTarget.h"
#include "clients/incredimail/ImAddressFile.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace postmarker;
  PacedStop never;
  const std::vector<std::string> entries = ParseAddressFile(fuzz::Bytes(data, size), &never);
  size_t next = 0;
  for (size_t slot = 470; slot < size; slot += 4916) {
    std::string entry;
    for (size_t i = slot; i < size && !(i > slot && data[i] == 0 && data[i - 1] == 0); ++i) {
      if (data[i] != 0 && entry.size() < 1023) {
        entry.push_back(static_cast<char>(data[i]));
      }
    }
    if (!entry.empty()) {
      fuzz::Require(next < entries.size() && entries[next] == entry);
      ++next;
    }
  }
  fuzz::Require(next == entries.size());
  return 0;
}
