#include "ese/PageFile.h"

#include <gtest/gtest.h>

#include <string>

#include "support/EseFile.h"

namespace postmarker::ese {
namespace {

using test::EseOptions;
using test::MakeEseFile;

constexpr uint32_t kCatalogPage = 4;
constexpr uint32_t kCatalogObject = 2;

std::string FileOf(size_t pageSize, uint32_t pageFlags = EseOptions().pageFlags) {
  return MakeEseFile({}, {.pageSize = pageSize, .pageFlags = pageFlags});
}

// Changes a number of both headers and writes their checksums again.
std::string WithHeader(std::string file, size_t pageSize, size_t place, uint32_t number) {
  for (const size_t start : {size_t{0}, pageSize}) {
    std::string header = file.substr(start, pageSize);
    test::PutEse(&header, place, number);
    test::EseFileBuilder::SealHeader(&header);
    file.replace(start, pageSize, header);
  }
  return file;
}

TEST(EsePageFile, ReadsPagesOfEachSize) {
  for (const size_t size : {2048U, 4096U, 8192U, 16384U, 32768U}) {
    const std::string bytes = FileOf(size);
    const PageFile file(bytes);
    ASSERT_EQ(file.Status(), FileStatus::kOpen) << size;
    EXPECT_EQ(file.Header().pageSize, size);
    EXPECT_EQ(file.Header().revision, 0x11U);
    EXPECT_TRUE(file.Header().isClean);
    EXPECT_EQ(file.LastPage(), bytes.size() / size - 2);
    EXPECT_TRUE(file.ReadPage(kCatalogPage, kCatalogObject)) << size;
  }
}

TEST(EsePageFile, ReadsPagesWithTheOlderChecksum) {
  std::string bytes = FileOf(4096, test::kEseNewRecords);
  EXPECT_TRUE(PageFile(bytes).ReadPage(kCatalogPage, kCatalogObject));
  bytes[test::EsePagePlace(kCatalogPage, 4096) + 4000] ^= 1;
  EXPECT_FALSE(PageFile(bytes).ReadPage(kCatalogPage, kCatalogObject));
}

TEST(EsePageFile, HeaderWithoutASizeMeans4096) {
  const std::string bytes = WithHeader(FileOf(4096), 4096, 236, 0);
  EXPECT_EQ(PageFile(bytes).Header().pageSize, 4096U);
  EXPECT_TRUE(PageFile(bytes).ReadPage(kCatalogPage, kCatalogObject));
}

TEST(EsePageFile, CopyOfTheHeaderServesWhenTheHeaderIsDamaged) {
  for (const size_t size : {2048U, 4096U, 8192U, 16384U, 32768U}) {
    std::string bytes = FileOf(size);
    bytes[100] ^= 1;
    const PageFile file(bytes);
    EXPECT_EQ(file.Status(), FileStatus::kOpen) << size;
    EXPECT_TRUE(file.ReadPage(kCatalogPage, kCatalogObject)) << size;
    bytes[size + 100] ^= 1;
    EXPECT_EQ(PageFile(bytes).Status(), FileStatus::kNotADatabase) << size;
  }
}

TEST(EsePageFile, RefusesOtherKindsAndVersions) {
  EXPECT_EQ(PageFile("").Status(), FileStatus::kNotADatabase);
  EXPECT_EQ(PageFile(std::string(65536, '\0')).Status(), FileStatus::kNotADatabase);
  const std::string file = FileOf(4096);
  EXPECT_EQ(PageFile(WithHeader(file, 4096, 4, 1)).Status(), FileStatus::kNotADatabase);
  EXPECT_EQ(PageFile(WithHeader(file, 4096, 236, 4097)).Status(), FileStatus::kNotADatabase);
  EXPECT_EQ(PageFile(WithHeader(file, 4096, 8, 0x621)).Status(), FileStatus::kUnsupported);
  EXPECT_EQ(PageFile(WithHeader(file, 4096, 12, 1)).Status(), FileStatus::kUnsupported);
}

TEST(EsePageFile, TellsThatAFileWasNotClosed) {
  const std::string bytes = MakeEseFile({}, {.state = 2});
  EXPECT_EQ(PageFile(bytes).Status(), FileStatus::kOpen);
  EXPECT_FALSE(PageFile(bytes).Header().isClean);
}

TEST(EsePageFile, PageMustBelongToTheTree) {
  std::string bytes = FileOf(4096);
  EXPECT_FALSE(PageFile(bytes).ReadPage(0, kCatalogObject));
  EXPECT_FALSE(PageFile(bytes).ReadPage(kCatalogPage, 3));
  EXPECT_FALSE(PageFile(bytes).ReadPage(5, kCatalogObject)) << "a page of zeros";
  EXPECT_FALSE(PageFile(bytes).ReadPage(PageFile(bytes).LastPage() + 1, 3));
  EXPECT_FALSE(PageFile(bytes).ReadPage(0xFFFFFFFF, 3));
  // Given back, and of a tree of free space.
  for (const uint32_t flag : {0x8U, 0x20U}) {
    std::string harmed = bytes;
    test::HarmEsePage(&harmed, kCatalogPage, 4096, [&](std::string* page) {
      (*page)[test::kEseFlags] = static_cast<char>((*page)[test::kEseFlags] | flag);
    });
    EXPECT_FALSE(PageFile(harmed).ReadPage(kCatalogPage, kCatalogObject)) << flag;
  }
}

TEST(EsePageFile, ChecksumSeesAFlippedBitInEachWord) {
  for (const size_t size : {4096U, 16384U}) {
    std::string bytes = FileOf(size);
    const size_t place = test::EsePagePlace(kCatalogPage, size);
    for (size_t word = 0; word < size; word += 4) {
      // The code that repairs single bits is not looked at.
      const bool isRepairCode = word == 4;
      bytes[place + word] ^= 4;
      const bool isRead = PageFile(bytes).ReadPage(kCatalogPage, kCatalogObject).has_value();
      EXPECT_EQ(isRead, isRepairCode) << size << " at " << word;
      bytes[place + word] ^= 4;
    }
  }
}

TEST(EsePageFile, EntriesOutsideOfThePageAreMissing) {
  std::string bytes = FileOf(4096);
  const auto firstEntry = [&](const std::string& file) -> std::optional<PageEntry> {
    const PageFile pages(file);
    const auto page = pages.ReadPage(kCatalogPage, kCatalogObject);
    return page && page->EndEntry() > 1 ? page->EntryAt(1) : std::nullopt;
  };
  bytes = MakeEseFile({{.name = "T", .columns = {{"A", 1}}}});
  ASSERT_TRUE(firstEntry(bytes));
  const size_t tag = 4096 - 8;
  for (const uint16_t word : {uint16_t{0x1FFF}, uint16_t{4070}}) {
    for (const size_t place : {tag, tag + 2}) {
      std::string harmed = bytes;
      test::HarmEsePage(&harmed, kCatalogPage, 4096,
                        [&](std::string* page) { test::PutEse(page, place, word); });
      EXPECT_FALSE(firstEntry(harmed)) << word << " at " << place;
    }
  }
  // More tags than the page has room for.
  test::HarmEsePage(&bytes, kCatalogPage, 4096, [](std::string* page) {
    test::PutEse(page, test::kEseTagCount, uint16_t{0x0FFF});
  });
  EXPECT_FALSE(PageFile(bytes).ReadPage(kCatalogPage, kCatalogObject));
}

}  // namespace
}  // namespace postmarker::ese
