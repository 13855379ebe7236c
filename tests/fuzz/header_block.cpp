// ReadHeaderBlock, with all headers, selected ones and none.
#include "FuzzTarget.h"
#include "analysis/message/HeaderBlock.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace postmarker;
  const std::string_view bytes = fuzz::Bytes(data, size);
  HeaderMap all;
  const size_t length = ReadHeaderBlock(bytes, &all);
  fuzz::Require(length <= size);
  fuzz::Require(all.Sorted().size() == all.Size());
  fuzz::Require(ReadHeaderBlock(bytes, nullptr) == length);
  HeaderMap selected;
  selected.Set("subject", "");
  selected.Set("received", "");
  fuzz::Require(ReadHeaderBlock(bytes, &selected) == length);
  // The first value of a header does not depend on which others are wanted.
  fuzz::Require(selected.Get("subject") == all.Get("subject"));
  fuzz::Require(selected.Get("received") == all.Get("received"));
  return 0;
}
