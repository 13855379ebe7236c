// A database file. The checksums of headers and pages are made right first, or hardly any input
// would be looked at.
#include <algorithm>
#include <string>

#include "FuzzTarget.h"
#include "support/EseFile.h"
#include "support/EseWalk.h"

namespace {

using namespace postmarker;

// The size of pages that the header tells, if it can be one.
size_t PageSizeOf(const std::string& file) {
  uint32_t size = 0;
  if (file.size() >= ese::kSmallestPage) {
    std::memcpy(&size, file.data() + 236, sizeof(size));
  }
  return ese::IsPageSize(size) ? size : 0;
}

void Seal(std::string* file) {
  const size_t pageSize = PageSizeOf(*file);
  if (pageSize == 0) {
    return;
  }
  for (size_t start = 0; start + pageSize <= file->size(); start += pageSize) {
    std::string page = file->substr(start, pageSize);
    const size_t number = start / pageSize;
    if (number < 2) {
      test::EseFileBuilder::SealHeader(&page);
    } else {
      test::SealEsePage(&page, static_cast<uint32_t>(number - 1));
    }
    file->replace(start, pageSize, page);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::string file(fuzz::Bytes(data, size));
  test::WalkEse(file);
  Seal(&file);
  const test::EseWalk walk = test::WalkEse(file);
  fuzz::Require(walk.status == ese::FileStatus::kOpen || walk.rows == 0);
  // Reading leaves no trace: what was read before is read again.
  const test::EseWalk again = test::WalkEse(file);
  fuzz::Require(walk.rows == again.rows && walk.values == again.values);
  fuzz::Require(walk.bytes == again.bytes && walk.damagedValues == again.damagedValues);
  return 0;
}
