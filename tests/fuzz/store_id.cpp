// The two searches for a store's id against the same rules told byte by byte.
#include <algorithm>

#include "FuzzTarget.h"
#include "clients/StoreIdSearch.h"
#include "support/StoreIdFiles.h"

namespace {

using Id = std::optional<std::string>;

Id Found(std::string_view id) {
  return id.find_first_not_of('\0') == std::string_view::npos ? Id() : Id(id);
}

Id PlainSearch(std::string_view file) {
  constexpr std::string_view kMark = postmarker::test::kStoreIdMark;
  for (size_t i = 0; i + kMark.size() < file.size(); ++i) {
    if (std::equal(kMark.begin(), kMark.end(), file.begin() + static_cast<ptrdiff_t>(i))) {
      const size_t start = i + kMark.size();
      return start + 8 < file.size() ? Found(file.substr(start, 8)) : Id();
    }
  }
  return {};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace postmarker;
  const std::string_view file = fuzz::Bytes(data, size);
  fuzz::Require(FindStoreId(file) == PlainSearch(file));
  fuzz::Require(DbxStoreId(file) == (size < 0x24BC + 8 ? Id() : Found(file.substr(0x24BC, 8))));
  return 0;
}
