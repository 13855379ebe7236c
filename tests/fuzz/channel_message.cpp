// What another process leaves in the shared memory of a channel. The first byte chooses the length
// of the rendezvous' name, the rest is the region.
#include <algorithm>
#include <cstddef>
#include <vector>

#include "FuzzTarget.h"
#include "ipc/ChannelMessage.h"
#include "ipc/ChannelNames.h"

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
  const auto name = TakePrivateName(region, data[0]);
  if (name) {
    fuzz::Require(name->size() == data[0] + kPrivateNameGrowth && name->size() < 244);
    std::vector<std::byte> copy = region;
    fuzz::Require(PutPrivateName(copy, *name) && copy == region);
  }
  return 0;
}
