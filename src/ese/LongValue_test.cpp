#include "ese/LongValue.h"

#include <gtest/gtest.h>

#include <string>

#include "ese/Database.h"
#include "support/EseFile.h"
#include "support/EseReading.h"

namespace postmarker::ese {
namespace {

using namespace std::string_literals;
using test::EseBigEndian;
using test::EseBytes;
using test::EseEntry;
using test::kEseDamaged;

constexpr uint32_t kId = 7;

EseEntry Root(uint32_t size, uint32_t id = kId) {
  return {EseBigEndian(id), EseBytes(uint32_t{1}) + EseBytes(size)};
}

EseEntry Segment(uint32_t offset, const std::string& data, uint32_t id = kId) {
  return {EseBigEndian(id) + EseBigEndian(offset), data};
}

std::string FileWith(const std::vector<EseEntry>& longValues, size_t entriesPerPage = 1000,
                     const std::string& storedId = EseBytes(kId), size_t pageSize = 4096) {
  return test::MakeEseFile({{.name = "T",
                             .columns = {{"A", 256, test::kEseLongBinary, 0}},
                             .rows = {{{{256, {storedId, 0x05}}}}},
                             .longValues = longValues,
                             .entriesPerPage = entriesPerPage}},
                           {.pageSize = pageSize});
}

std::string ReadOne(const std::string& file) {
  const auto values = test::EseColumnOf(Database(file), "T", "A");
  return values.size() == 1 ? values.front() : "(no row)";
}

TEST(EseLongValue, SegmentsArePutTogether) {
  const std::string first(1500, 'a');
  const std::string second(1500, 'b');
  const std::vector<EseEntry> entries = {
      Root(4, 6),        Segment(0, "none", 6), Root(3003),
      Segment(0, first), Segment(1500, second), Segment(3000, "end"),
      Root(4, 8),        Segment(0, "more", 8)};
  for (const size_t size : {4096U, 16384U}) {
    EXPECT_EQ(ReadOne(FileWith(entries, 2, EseBytes(kId), size)), first + second + "end") << size;
  }
}

TEST(EseLongValue, EmptyValueHasNoSegments) {
  EXPECT_EQ(ReadOne(FileWith({Root(0), Root(1, 8), Segment(0, "x", 8)})), "");
}

TEST(EseLongValue, LastOneOfTheTreeIsRead) {
  EXPECT_EQ(ReadOne(FileWith({Root(4), Segment(0, "last")})), "last");
}

TEST(EseLongValue, IdsOfEightBytesAreRead) {
  const uint64_t id = 0x8000000000000005;
  const std::string key = EseBigEndian(id);
  EXPECT_EQ(ReadOne(FileWith({{key, EseBytes(uint32_t{1}) + EseBytes(uint32_t{3})},
                              {key + EseBigEndian(uint32_t{0}), "abc"}},
                             1000, EseBytes(id))),
            "abc");
}

TEST(EseLongValue, ShorterSegmentsAreCompressed) {
  // "ab" in 7-bit characters, as UTF-16.
  EXPECT_EQ(ReadOne(FileWith({Root(7), Segment(0, "\x15\x61\x31"s), Segment(4, "end")})),
            "a\0b\0end"s);
  EXPECT_EQ(ReadOne(FileWith({Root(8), Segment(0, "\x15\x61\x31"s), Segment(5, "end")})),
            kEseDamaged);
}

TEST(EseLongValue, LimitStopsTheReading) {
  const std::string file =
      FileWith({Root(9), Segment(0, "one"), Segment(3, "two"), Segment(6, "")});
  const Database database(file);
  const Table* const table = database.FindTable("T");
  std::string value;
  size_t fullSize = 0;
  // The third segment is damaged; what comes before it can be read.
  EXPECT_TRUE(
      ReadLongValue(database.File(), table->longValues, EseBytes(kId), 5, &value, &fullSize));
  EXPECT_EQ(value, "onetw");
  EXPECT_EQ(fullSize, 9U);
  EXPECT_FALSE(
      ReadLongValue(database.File(), table->longValues, EseBytes(kId), 7, &value, &fullSize));
}

TEST(EseLongValue, MissingAndDamagedValuesAreRefused) {
  EXPECT_EQ(ReadOne(FileWith({Root(3, 8), Segment(0, "abc", 8)})), kEseDamaged) << "no such id";
  EXPECT_EQ(ReadOne(FileWith({Root(3)})), kEseDamaged) << "no segment";
  EXPECT_EQ(ReadOne(FileWith({Root(4), Segment(0, "abcde")})), kEseDamaged) << "too long";
  EXPECT_EQ(ReadOne(FileWith({Root(6), Segment(0, "abc"), Segment(2, "def")})), kEseDamaged);
  EXPECT_EQ(ReadOne(FileWith({Root(6), Segment(1, "abcde")})), kEseDamaged) << "a hole";
  EXPECT_EQ(ReadOne(FileWith({Root(6), Segment(1, "abcdef")})), kEseDamaged) << "at another place";
  EXPECT_EQ(ReadOne(FileWith({Root(0xFFFFFFFF), Segment(0, "abc")})), kEseDamaged) << "a lie";
  EXPECT_EQ(ReadOne(FileWith({Root(0xFFFFFFFF), Segment(0, "\x1D\0\0abc"s)})), kEseDamaged);
  EXPECT_EQ(ReadOne(FileWith({{EseBigEndian(kId), "short"}, Segment(0, "abc")})), kEseDamaged);
  EXPECT_EQ(ReadOne(FileWith({Root(3), Segment(0, "abc")}, 1000, "odd")), kEseDamaged);
  EseEntry encrypted = Root(3);
  encrypted.data += '\x01';
  EXPECT_EQ(ReadOne(FileWith({encrypted, Segment(0, "abc")})), kEseDamaged);
}

TEST(EseLongValue, TableWithoutLongValuesHasNone) {
  EXPECT_EQ(ReadOne(FileWith({})), kEseDamaged);
}

}  // namespace
}  // namespace postmarker::ese
