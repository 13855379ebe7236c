// Files of real stores, which lie outside the tree.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "clients/StoreIdSearch.h"
#include "support/StoreIdFiles.h"
#include "support/TempFolder.h"

namespace postmarker::storeapi {
namespace {

std::filesystem::path Sample(const char* name) {
  const char* const folder = std::getenv("POSTMARKER_TESTDATA");
  return folder == nullptr ? std::filesystem::path() : std::filesystem::path(folder) / name;
}

#define POSTMARKER_NEED_SAMPLE(name)                                                     \
  if (std::error_code failed; !std::filesystem::is_regular_file(Sample(name), failed)) { \
    GTEST_SKIP() << (name) << " is not in POSTMARKER_TESTDATA";                          \
  }

TEST(StoreSamples, FolderListOfARealStoreHasItsId) {
  constexpr const char* kName = "dbx/folders.dbx";
  POSTMARKER_NEED_SAMPLE(kName);
  const std::wstring file = test::TempFolder::Wide(Sample(kName));
  ASSERT_EQ(test::ReadFile(file).substr(0, 5), "\xCF\xAD\x12\xFE\xC6") << "another file";
  EXPECT_EQ(ReadDbxStoreId(file), std::string("\x70\xE6\x6C\x28\x13\xEF\xD7\x01", 8));
  EXPECT_EQ(FindStoreId(test::ReadFile(file)), std::nullopt);
}

// The row with the id is there; the client had not given the store one yet.
TEST(StoreSamples, DatabaseOfARealStoreThatWasNeverUsedHasNone) {
  constexpr const char* kName = "ese/windowsmail.msmessagestore";
  POSTMARKER_NEED_SAMPLE(kName);
  const std::wstring file = test::TempFolder::Wide(Sample(kName));
  EXPECT_NE(test::ReadFile(file).find(test::kStoreIdMark), std::string::npos);
  EXPECT_EQ(FindStoreIdInFile(file, {}), std::nullopt);
}

}  // namespace
}  // namespace postmarker::storeapi
