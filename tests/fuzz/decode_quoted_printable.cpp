// The block decoder of quoted-printable with all capacities, and the streaming one in runs of all
// sizes.
#include <string>
#include <vector>

#include "FuzzTarget.h"
#include "analysis/message/Decoders.h"
#include "analysis/message/TransferDecoder.h"

namespace postmarker::fuzz {
namespace {

// The first byte gives the size of runs.
void CompareStreams(std::string_view bytes, size_t runSize) {
  TransferDecoder single;
  std::string bytewise;
  for (const char c : bytes) {
    auto byte = static_cast<uint8_t>(c);
    if (single.DecodeQuotedPrintable(&byte)) {
      bytewise.push_back(static_cast<char>(byte));
    }
  }
  TransferDecoder runs;
  std::string together;
  while (!bytes.empty()) {
    std::string run(bytes.substr(0, runSize));
    bytes.remove_prefix(run.size());
    run.resize(runs.DecodeQuotedPrintableRun(run, run.data()));
    together.append(run);
  }
  Require(bytewise == together);
}

}  // namespace
}  // namespace postmarker::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace postmarker;
  if (size == 0) {
    return 0;
  }
  const std::string_view bytes = fuzz::Bytes(data + 1, size - 1);
  for (const size_t capacity :
       {bytes.size() + bytes.size() / 37 + 2, bytes.size() / 2, size_t{0}}) {
    for (const bool wrap : {false, true}) {
      std::vector<char> out(capacity + 1, 'x');
      const size_t count = DecodeQuotedPrintable(bytes, out.data(), capacity, wrap);
      fuzz::Require(count <= capacity && out[count] == '\0');
    }
  }
  fuzz::CompareStreams(bytes, size_t{data[0]} + 1);
  return 0;
}
