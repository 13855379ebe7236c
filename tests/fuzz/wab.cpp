// ParseWabFile against the same rule told byte by byte. Whatever the table says, nothing outside of
// the file is read.
#include "FuzzTarget.h"
#include "clients/storeapi/WabFile.h"

namespace {

// The byte at a place of the file; nothing is there past its end.
int ByteAt(const uint8_t* data, size_t size, uint64_t at) {
  return at < size ? data[at] : -1;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace postmarker;
  const std::vector<std::string> addresses = storeapi::ParseWabFile(fuzz::Bytes(data, size));
  uint64_t table = 0;
  for (int i = 3; i >= 0; --i) {
    table = table * 256 + static_cast<uint64_t>(size > 0x64 ? data[0x60 + i] : 0);
  }
  const int count = size > 0x64 ? data[0x64] : 0;
  size_t next = 0;
  for (int entry = 0; count < 0x80 && entry < count; ++entry) {
    const uint64_t start = table + uint64_t{68} * static_cast<uint64_t>(entry);
    if (ByteAt(data, size, start) < 0) {
      break;
    }
    std::string address;
    for (uint64_t i = 0; i < 68 && ByteAt(data, size, start + 2 * i) > 0; ++i) {
      address.push_back(static_cast<char>(data[start + 2 * i]));
    }
    fuzz::Require(next < addresses.size() && addresses[next] == address);
    ++next;
  }
  fuzz::Require(next == addresses.size());
  return 0;
}
