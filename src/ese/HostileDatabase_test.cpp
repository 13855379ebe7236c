// Databases that were cut, harmed, or made to cost time, memory or stack.
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "support/EseFile.h"
#include "support/EseWalk.h"

namespace postmarker::ese {
namespace {

using namespace std::string_literals;
using test::EseBytes;
using test::EseKey;
using test::EseOptions;
using test::EseWalk;
using test::HarmEsePage;
using test::WalkEse;

// Every kind of tree and column, with two levels of pages where rows are three to a page.
std::string SampleFile(EseOptions options = {.pageSize = 2048}, int32_t count = 12) {
  test::EseTable table = {.name = "T",
                          .columns = {{"Id", 1},
                                      {"Group", 2},
                                      {"Name", 128, test::kEseText, 255, 1252},
                                      {"Long", 256, test::kEseLongText, 0, 1252},
                                      {"Blob", 257, test::kEseLongBinary, 0}},
                          .indexes = {{"0", {1}, true}, {"ByGroup", {2}}, {"ByName", {128}}},
                          .longValues = {{test::EseBigEndian(1U), EseBytes(1U) + EseBytes(8U)},
                                         {test::EseBigEndian(1U) + test::EseBigEndian(0U), "long"},
                                         {test::EseBigEndian(1U) + test::EseBigEndian(4U), "text"}},
                          .entriesPerPage = 3};
  for (int32_t id = 1; id <= count; ++id) {
    table.rows.push_back({{{1, {EseBytes(id)}},
                           {2, {EseBytes(id % 3)}},
                           {128, {"name"}},
                           {256, {"\x0D\x61\x31"s, 0x03}},
                           {257, {EseBytes(1U), 0x05}}},
                          EseKey(id)});
    const auto row = static_cast<size_t>(id) - 1;
    table.indexes[1].entries.emplace_back(EseKey(id % 3), row);
    table.indexes[2].entries.emplace_back("\x7FNAME\0"s, row);
  }
  options.catalogEntriesPerPage = 8;
  return test::MakeEseFile({table}, options);
}

TEST(HostileDatabase, SampleIsWhole) {
  for (const size_t size : {2048U, 4096U, 8192U, 16384U, 32768U}) {
    const EseWalk walk = WalkEse(SampleFile({.pageSize = size}));
    // The rows in the table's order, by three indexes of the file and by an index in memory.
    EXPECT_EQ(walk.rows, 12U * 5) << size;
    EXPECT_EQ(walk.damagedValues, 0U) << size;
  }
}

TEST(HostileDatabase, CutFilesGiveFewerRows) {
  for (const size_t size : {2048U, 16384U}) {
    const std::string whole = SampleFile({.pageSize = size});
    const EseWalk all = WalkEse(whole);
    for (size_t length = 0; length < whole.size(); length += size) {
      for (const size_t cut : {length, length + 1, length + size - 1}) {
        const EseWalk walk = WalkEse(whole.substr(0, cut));
        EXPECT_LE(walk.rows, all.rows) << cut;
        EXPECT_EQ(walk.status == FileStatus::kNotADatabase, cut < size) << cut;
      }
    }
  }
}

TEST(HostileDatabase, FlippedBitIsNoticedOrDoesNoHarm) {
  for (const size_t size : {2048U, 16384U}) {
    const std::string whole = SampleFile({.pageSize = size});
    const EseWalk all = WalkEse(whole);
    // One bit of the first, the second and the third part of each page.
    for (size_t place = 0; place < whole.size(); place += size / 3 + 1) {
      std::string harmed = whole;
      harmed[place] = static_cast<char>(harmed[place] ^ 1 << place % 8);
      const EseWalk walk = WalkEse(harmed);
      EXPECT_EQ(walk.status, FileStatus::kOpen) << place;
      EXPECT_LE(walk.rows, all.rows) << place;
    }
  }
}

// Flips bits of the page, `step` bytes apart where it is not empty, writes its checksum again, and
// reads the file.
void FlipBitsOfPage(const std::string& whole, size_t pageSize, uint32_t number, size_t step) {
  const size_t start = test::EsePagePlace(number, pageSize);
  size_t used = 0;
  for (size_t place = 8; place < pageSize; ++place) {
    if (whole[start + place] == 0 || used++ % step != 0) {
      continue;
    }
    std::string harmed = whole;
    HarmEsePage(&harmed, number, pageSize, [&](std::string* page) {
      (*page)[place] = static_cast<char>((*page)[place] ^ 1 << used / step % 8);
    });
    ASSERT_LE(WalkEse(harmed).rows, 200U) << number << " at " << place;
  }
}

// Where the page's checksum is right again, nothing but each reader's own checks helps.
TEST(HostileDatabase, FlippedBitBehindARightChecksumDoesNoHarm) {
  for (const size_t size : {2048U, 16384U}) {
    for (const uint32_t layout : {test::kEseNewRecords | test::kEseNewChecksum, 0U}) {
      const EseOptions options = {.pageSize = size, .pageFlags = layout, .hasCatalogCopy = false};
      const std::string whole = SampleFile(options, 7);
      const auto pages = static_cast<uint32_t>(whole.size() / size - 2);
      for (uint32_t number = 1; number <= pages; ++number) {
        FlipBitsOfPage(whole, size, number, size == 2048 ? 5 : 29);
      }
    }
  }
}

TEST(HostileDatabase, CountsThatLieDoNoHarm) {
  const std::string whole = SampleFile({.pageSize = 2048, .hasCatalogCopy = false}, 7);
  const auto pages = static_cast<uint32_t>(whole.size() / 2048 - 2);
  for (uint32_t number = 1; number <= pages; ++number) {
    for (const int lie : {0, 1, 0x0FFF, 0x1FFF, 0x7FFF, 0xFFFF}) {
      // The count of tags, and the sizes and offsets of the first of them.
      for (const size_t place : {size_t{34}, size_t{2044}, size_t{2046}, size_t{2040}, size_t{2042},
                                 size_t{2036}, size_t{2038}}) {
        std::string harmed = whole;
        HarmEsePage(&harmed, number, 2048, [&](std::string* page) {
          test::PutEse(page, place, static_cast<uint16_t>(lie));
        });
        EXPECT_LE(WalkEse(harmed).rows, 200U) << number << " at " << place;
      }
    }
  }
}

TEST(HostileDatabase, WrongPageSizeIsRefused) {
  std::string file = SampleFile();
  for (const uint32_t size : {0U, 1U, 1024U, 4096U, 8192U, 16384U, 32768U, 65536U, 0xFFFFFFFFU}) {
    for (const size_t start : {size_t{0}, size_t{2048}}) {
      std::string header = file.substr(start, 2048);
      test::PutEse(&header, 236, size);
      test::EseFileBuilder::SealHeader(&header);
      file.replace(start, 2048, header);
    }
    EXPECT_NE(WalkEse(file).status, FileStatus::kOpen) << size;
  }
}

// A file whose table has the branch pages given by `children`: of the root first.
std::string FileOfBranches(const std::vector<std::vector<uint32_t>>& children) {
  std::string file = test::MakeEseFile({{.name = "T", .columns = {{"Id", 1}}}}, {.pageSize = 2048});
  const Database database(file);
  const TreeRoot root = database.FindTable("T")->root;
  const uint32_t firstPage = root.page;
  for (size_t i = 0; i < children.size(); ++i) {
    test::EsePage page;
    page.number = i == 0 ? firstPage : static_cast<uint32_t>(200 + i);
    page.objectId = root.objectId;
    page.flags = test::kEseNewChecksum | (i == 0 ? test::kEseRoot : 0);
    for (const uint32_t child : children[i]) {
      page.entries.push_back({"", EseBytes(child == 0 ? firstPage : 200 + child)});
    }
    const size_t place = test::EsePagePlace(page.number, 2048);
    file.resize(std::max(file.size(), place + 2048));
    file.replace(place, 2048, test::MakeEsePage(page, 2048));
  }
  return file;
}

// Reads a file and searches its table by key. A loop that does not end is ended by the time that
// the test program has.
size_t RowsOf(const std::string& file) {
  const Database database(file);
  TreeCursor cursor(database.File(), database.FindTable("T")->root);
  const bool isFound = cursor.Find(EseKey(1)) || cursor.Seek(EseKey(1));
  return isFound ? 1 : WalkEse(file).rows;
}

TEST(HostileDatabase, TreesThatLoopEnd) {
  EXPECT_EQ(RowsOf(FileOfBranches({{0}})), 0U);
  EXPECT_EQ(RowsOf(FileOfBranches({{1}, {2}, {0}})), 0U);
  EXPECT_EQ(RowsOf(FileOfBranches({{1, 1, 1}, {1, 0, 1}})), 0U);
}

TEST(HostileDatabase, BranchesThatShareTheirChildrenAreReadOnce) {
  // Each page names the next one a hundred times: 100 to the power of 30 ways.
  std::vector<std::vector<uint32_t>> children;
  for (uint32_t level = 1; level <= 30; ++level) {
    children.emplace_back(100, level);
  }
  EXPECT_EQ(RowsOf(FileOfBranches(children)), 0U);
}

TEST(HostileDatabase, ChainOfBranchesNeedsNoStack) {
  std::vector<std::vector<uint32_t>> children;
  for (uint32_t level = 1; level <= 5000; ++level) {
    children.push_back({level});
  }
  EXPECT_EQ(WalkEse(FileOfBranches(children)).rows, 0U);
}

TEST(HostileDatabase, DamagedLeafCostsItsOwnRowsAlone) {
  std::string file = SampleFile();
  const Database database(file);
  const Table* const table = database.FindTable("T");
  TreeCursor cursor(database.File(), table->root);
  ASSERT_TRUE(cursor.Seek(EseKey(4)));
  file[test::EsePagePlace(cursor.Place().page, 2048) + 1000] ^= 1;
  // Three of twelve rows, in each of the five orders.
  EXPECT_EQ(WalkEse(file).rows, 9U * 5);
}

}  // namespace
}  // namespace postmarker::ese
