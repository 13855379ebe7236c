// Files of real stores, which lie outside the tree.
#include <gtest/gtest.h>

#include <filesystem>

#include "clients/StoreIdSearch.h"
#include "support/Samples.h"
#include "support/StoreIdFiles.h"
#include "support/TempFolder.h"

namespace postmarker::storeapi {
namespace {

std::wstring Sample(const char* name) {
  return test::TempFolder::Wide(test::SampleFolder() / name);
}

TEST(StoreSamples, FolderListOfARealStoreHasItsId) {
  POSTMARKER_NEED_SAMPLES();
  const std::wstring file = Sample("dbx/folders.dbx");
  ASSERT_EQ(test::ReadFile(file).substr(0, 5), "\xCF\xAD\x12\xFE\xC6") << "another file";
  EXPECT_EQ(ReadDbxStoreId(file), std::string("\x70\xE6\x6C\x28\x13\xEF\xD7\x01", 8));
  EXPECT_EQ(FindStoreId(test::ReadFile(file)), std::nullopt);
}

// The row with the id is there; the client had not given the store one yet.
TEST(StoreSamples, DatabaseOfARealStoreThatWasNeverUsedHasNone) {
  POSTMARKER_NEED_SAMPLES();
  const std::wstring file = Sample("ese/windowsmail.msmessagestore");
  EXPECT_NE(test::ReadFile(file).find(test::kStoreIdMark), std::string::npos);
  EXPECT_EQ(FindStoreIdInFile(file, {}), std::nullopt);
}

}  // namespace
}  // namespace postmarker::storeapi
