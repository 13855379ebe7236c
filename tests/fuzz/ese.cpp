// A database file. The checksums of headers and pages are made right first, or hardly any input
// would be looked at.
#include <string>

#include "FuzzTarget.h"
#include "SealedFile.h"
#include "support/EseWalk.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace postmarker;
  std::string file(fuzz::Bytes(data, size));
  test::WalkEse(file);
  fuzz::Seal(&file);
  const test::EseWalk walk = test::WalkEse(file);
  fuzz::Require(walk.status == ese::FileStatus::kOpen || walk.rows == 0);
  // Reading leaves no trace: what was read before is read again.
  const test::EseWalk again = test::WalkEse(file);
  fuzz::Require(walk.rows == again.rows && walk.values == again.values);
  fuzz::Require(walk.bytes == again.bytes && walk.damagedValues == again.damagedValues);
  return 0;
}
