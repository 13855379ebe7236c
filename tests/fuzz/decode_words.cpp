// DecodeEncodedWords, with exactly the room it may use.
#include <vector>

#include "FuzzTarget.h"
#include "analysis/message/Decoders.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace postmarker;
  std::vector<char> out(size + 1);
  size_t length = 0;
  const size_t consumed = DecodeEncodedWords(fuzz::Bytes(data, size), out.data(), &length);
  fuzz::Require(consumed <= size && length <= size);
  fuzz::Require(consumed > 0 || length == size);
  return 0;
}
