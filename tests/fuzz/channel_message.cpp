// What another process leaves in the shared memory of a channel. The first byte chooses the length
// of the rendezvous' name, the rest is the region. The name itself is what a private name in the
// region begins with, so that the fuzzer need not guess it twice.
#include <algorithm>
#include <cstddef>
#include <vector>

#include "FuzzTarget.h"
#include "ipc/ChannelMessage.h"
#include "ipc/ChannelNames.h"

namespace {

// So many UTF-16 units, or as many as there are.
std::wstring UnitsAt(const std::vector<std::byte>& bytes, size_t offset, size_t count) {
  std::wstring units;
  for (size_t i = offset; i + 1 < bytes.size() && units.size() < count; i += 2) {
    units.push_back(static_cast<wchar_t>(static_cast<uint32_t>(bytes[i]) |
                                         static_cast<uint32_t>(bytes[i + 1]) << 8));
  }
  return units;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace postmarker;
  if (size == 0) {
    return 0;
  }
  // A block of exactly the region's size.
  std::vector<std::byte> region(size - 1);
  std::transform(data + 1, data + size, region.begin(), [](uint8_t b) { return std::byte{b}; });

  std::wstring text;
  uint32_t number = 0;
  const bool isText = TakeText(region, &text);
  const bool isNumber = TakeNumber(region, &number);
  fuzz::Require(!isText || !isNumber);
  if (isText) {
    fuzz::Require(TextFits(text.size(), region.size()));
    std::vector<std::byte> copy = region;
    fuzz::Require(PutText(copy, text) && copy == region);
  }
  if (isNumber) {
    std::vector<std::byte> copy = region;
    fuzz::Require(PutNumber(copy, number) && copy == region);
  }
  const std::wstring rendezvous = UnitsAt(region, 4, data[0]);
  const auto name = TakePrivateName(region, rendezvous);
  if (name) {
    fuzz::Require(name->size() == rendezvous.size() + kPrivateNameGrowth && name->size() < 244);
    fuzz::Require(name->starts_with(rendezvous + L"."));
    std::vector<std::byte> copy = region;
    fuzz::Require(PutPrivateName(copy, *name) && copy == region);
  }
  return 0;
}
