#include "clients/incredimail/ImFieldReader.h"

#include <gtest/gtest.h>

#include "support/ImDatabase.h"
#include "support/ImOlderStore.h"

namespace postmarker {
namespace {

using test::ImBytes;
using test::ImGuid;

std::string TextOf(uint32_t count, std::string_view bytes) {
  return ImBytes().Dword(count).Raw(bytes).Bytes();
}

TEST(ImFieldReader, GuidIsTextInBracesAndCapitals) {
  const std::string bytes("\x01\x02\x03\x04\x05\x06\x07\x08\x09\x0A\x0B\x0C\x0D\x0E\x0F\xF0", 16);
  ImFieldReader reader(bytes, 0);
  EXPECT_EQ(reader.ReadGuid(), L"{04030201-0605-0807-090A-0B0C0D0E0FF0}");
  EXPECT_EQ(reader.Cursor(), 16U);
}

TEST(ImFieldReader, ZeroGuidIsNotEmpty) {
  const std::string bytes(16, '\0');
  ImFieldReader reader(bytes, 0);
  EXPECT_EQ(reader.ReadGuid(), L"{00000000-0000-0000-0000-000000000000}");
}

TEST(ImFieldReader, GuidThatIsCutShortIsEmptyAndEndsTheFile) {
  const std::string bytes(18, 'x');
  ImFieldReader reader(bytes, 3);
  EXPECT_EQ(reader.ReadGuid(), L"");
  EXPECT_EQ(reader.Cursor(), 18U);
}

TEST(ImFieldReader, TextIsItsNonZeroBytesWidened) {
  const std::string bytes = ImBytes().Text(L"J\u00FCrgen").Text(L"\u0416\u5E73a").Bytes();
  ImFieldReader reader(bytes, 0);
  EXPECT_EQ(reader.ReadText(), L"J\u00FCrgen");
  EXPECT_EQ(reader.ReadText(), L"\x16\x04s^a");
  EXPECT_TRUE(reader.IsAtEnd());
}

TEST(ImFieldReader, TextOfZerosIsEmpty) {
  const std::string bytes = TextOf(2, std::string_view("\0\0\0\0!", 5));
  ImFieldReader reader(bytes, 0);
  EXPECT_EQ(reader.ReadText(), L"");
  EXPECT_EQ(reader.Cursor(), 8U);
}

TEST(ImFieldReader, TextWhoseEndLiesExactlyAtTheSizeSucceeds) {
  const std::string bytes = TextOf(2, "abcd");
  ImFieldReader whole(bytes, 0);
  EXPECT_EQ(whole.ReadText(), L"abcd");
  EXPECT_EQ(whole.Cursor(), 8U);
  ImFieldReader cut(std::string_view(bytes).substr(0, 7), 0);
  EXPECT_EQ(cut.ReadText(), L"");
  EXPECT_EQ(cut.Cursor(), 7U);
}

TEST(ImFieldReader, TextWithoutItsWholeLengthIsEmptyAndEndsTheFile) {
  const std::string bytes = TextOf(0, "");
  ImFieldReader reader(bytes, 1);
  EXPECT_EQ(reader.ReadText(), L"");
  EXPECT_EQ(reader.Cursor(), 4U);
  ImFieldReader behind(bytes, 100);
  behind.SkipText();
  EXPECT_EQ(behind.Cursor(), 4U);
}

TEST(ImFieldReader, LargestCountsLeadBeyondTheEndAndNotAround) {
  for (const uint32_t count : {0x7FFFFFFFU, 0x80000000U, 0x80000004U, 0xFFFFFFFFU}) {
    const std::string bytes = TextOf(count, "abcdefgh");
    ImFieldReader reader(bytes, 0);
    EXPECT_EQ(reader.ReadText(), L"");
    EXPECT_EQ(reader.Cursor(), bytes.size());
    ImFieldReader skipping(bytes, 0);
    skipping.SkipText();
    EXPECT_EQ(skipping.Cursor(), 4 + uint64_t{2} * count);
  }
}

TEST(ImFieldReader, ShortLengthIsTheLastByteThatIsNotZero) {
  const auto read = [](std::string_view bytes) {
    ImFieldReader reader(bytes, 0);
    const int32_t length = reader.ReadShortLength();
    EXPECT_EQ(reader.Cursor(), 4U);
    return length;
  };
  EXPECT_EQ(read(std::string_view("\0\0\0\0", 4)), 0);
  EXPECT_EQ(read(std::string_view("\x7F\0\0\0", 4)), 127);
  EXPECT_EQ(read(std::string_view("\x05\x01\0\0", 4)), 1);
  EXPECT_EQ(read(std::string_view("\0\0\x09\0", 4)), 9);
  EXPECT_EQ(read(std::string_view("\x80\0\0\0", 4)), -128);
  EXPECT_EQ(read(std::string_view("\xFF\0\0\0", 4)), -1);
}

TEST(ImFieldReader, DwordStopsAtTheFirstZeroByte) {
  const auto read = [](uint32_t stored) {
    return ImFieldReader(ImBytes().Dword(stored).Bytes(), 0).DwordAt(0);
  };
  EXPECT_EQ(read(0x00010200), 0U);
  EXPECT_EQ(read(0x01000203), 0x0203U);
  EXPECT_EQ(read(0x04030201), 0x04030201U);
  EXPECT_EQ(read(0xFFFFFFFF), 0xFFFFFFFFU);
  EXPECT_EQ(read(0x00030201), 0x030201U);
}

TEST(ImFieldReader, DwordTakesNothingFromBehindTheEnd) {
  const std::string bytes = "abc";
  const ImFieldReader reader(bytes, 0);
  EXPECT_EQ(reader.DwordAt(1), 0x6362U);
  EXPECT_EQ(reader.DwordAt(3), 0U);
  EXPECT_EQ(reader.DwordAt(~uint64_t{0} - 1), 0U);
}

TEST(ImFieldReader, BuilderWritesTheIdsThatTestsName) {
  const std::string bytes = ImBytes().Guid(0x1234).Guid(ImGuid(0xABCDEF01)).Bytes();
  ImFieldReader reader(bytes, 0);
  EXPECT_EQ(reader.ReadGuid(), ImGuid(0x1234));
  EXPECT_EQ(reader.ReadGuid(), ImGuid(0xABCDEF01));
}

}  // namespace
}  // namespace postmarker
