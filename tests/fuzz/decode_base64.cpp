// The block decoder of base64 with all capacities, the way back, and the streaming one in runs of
// all sizes.
#include <string>
#include <vector>

#include "FuzzTarget.h"
#include "analysis/message/Decoders.h"
#include "analysis/message/TransferDecoder.h"

namespace postmarker::fuzz {
namespace {

std::string DecodeStream(std::string_view bytes, size_t runSize) {
  TransferDecoder runs;
  std::string together;
  while (!bytes.empty()) {
    std::string run(bytes.substr(0, runSize));
    bytes.remove_prefix(run.size());
    run.resize(runs.DecodeBase64Run(run, run.data()));
    together.append(run);
  }
  return together;
}

std::string DecodeBytewise(std::string_view bytes) {
  TransferDecoder single;
  std::string bytewise;
  for (const char c : bytes) {
    auto byte = static_cast<uint8_t>(c);
    if (single.DecodeBase64(&byte)) {
      bytewise.push_back(static_cast<char>(byte));
    }
  }
  return bytewise;
}

void CheckRoundTrip(std::string_view bytes, size_t runSize) {
  const size_t room = bytes.size() * 3 / 2 + 100;
  std::vector<char> encoded(room + 1);
  const size_t length = EncodeBase64(bytes, encoded.data(), room, true);
  Require(DecodeStream({encoded.data(), length}, runSize) == bytes);
}

}  // namespace
}  // namespace postmarker::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace postmarker;
  if (size == 0) {
    return 0;
  }
  const std::string_view bytes = fuzz::Bytes(data + 1, size - 1);
  const size_t runSize = size_t{data[0]} + 1;
  for (const size_t capacity : {bytes.size(), bytes.size() / 3, size_t{0}}) {
    for (const bool keepLineBreaks : {false, true}) {
      std::vector<char> out(capacity + 1, 'x');
      const size_t count = DecodeBase64(bytes, out.data(), capacity, keepLineBreaks);
      fuzz::Require(count <= capacity && out[count] == '\0');
      fuzz::Require(EncodeBase64(bytes, out.data(), capacity, keepLineBreaks) <= capacity);
    }
  }
  fuzz::Require(fuzz::DecodeStream(bytes, runSize) == fuzz::DecodeBytewise(bytes));
  fuzz::CheckRoundTrip(bytes, runSize);
  return 0;
}
