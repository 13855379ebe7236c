#include "ese/IndexKey.h"

#include <gtest/gtest.h>

#include <string>

#include "support/EsePages.h"

namespace postmarker::ese {
namespace {

using test::EseBytes;
using namespace std::string_literals;

Column Of(ColumnType type, uint32_t id = 256, uint32_t codePage = 0) {
  Column column;
  column.type = type;
  column.id = id;
  column.codePage = codePage;
  return column;
}

std::string KeyOf(const Column& column, const std::string& value, KeyRule rule = {}) {
  std::string key;
  EXPECT_EQ(AppendKeyPiece(column, rule, value, &key), KeyOutcome::kMade);
  return key;
}

TEST(EseIndexKey, NumbersKeepTheirOrder) {
  EXPECT_EQ(KeyOf(Of(ColumnType::kLong), EseBytes(int32_t{5})), "\x7F\x80\x00\x00\x05"s);
  EXPECT_EQ(KeyOf(Of(ColumnType::kLongLong), EseBytes(int64_t{-1})),
            "\x7F\x7F\xFF\xFF\xFF\xFF\xFF\xFF\xFF"s);
  EXPECT_EQ(KeyOf(Of(ColumnType::kCurrency), EseBytes(int64_t{2})),
            "\x7F\x80\x00\x00\x00\x00\x00\x00\x02"s);
  EXPECT_EQ(KeyOf(Of(ColumnType::kShort), EseBytes(int16_t{-2})), "\x7F\x7F\xFE"s);
  EXPECT_EQ(KeyOf(Of(ColumnType::kUnsignedByte), "\x81"), "\x7F\x81"s);
  EXPECT_EQ(KeyOf(Of(ColumnType::kUnsignedShort), "\x01\x80"s), "\x7F\x80\x01"s);
  EXPECT_EQ(KeyOf(Of(ColumnType::kUnsignedLong), "\x01\x02\x03\x84"s), "\x7F\x84\x03\x02\x01"s);
  EXPECT_EQ(KeyOf(Of(ColumnType::kBit), "\x01"), "\x7F\xFF"s);
  EXPECT_EQ(KeyOf(Of(ColumnType::kBit), "\0"s), "\x7F\0"s);
}

TEST(EseIndexKey, FloatsKeepTheirOrder) {
  const double values[] = {-1e300, -1.0, -0.5, 0.0, 0.5, 1.0, 1e300};
  std::string last;
  for (const double value : values) {
    std::string bytes(8, '\0');
    std::memcpy(bytes.data(), &value, sizeof(value));
    for (const ColumnType type : {ColumnType::kDouble, ColumnType::kDate}) {
      EXPECT_GT(KeyOf(Of(type), bytes) + (type == ColumnType::kDate ? "" : "~"), last) << value;
    }
    last = KeyOf(Of(ColumnType::kDouble), bytes);
  }
  EXPECT_EQ(KeyOf(Of(ColumnType::kSingle), EseBytes(0x3F800000U)), "\x7F\xBF\x80\x00\x00"s);
  EXPECT_EQ(KeyOf(Of(ColumnType::kSingle), EseBytes(0xBF800000U)), "\x7F\x40\x7F\xFF\xFF"s);
}

TEST(EseIndexKey, GuidIsReordered) {
  std::string guid(16, '\0');
  for (size_t i = 0; i < guid.size(); ++i) {
    guid[i] = static_cast<char>(i);
  }
  EXPECT_EQ(KeyOf(Of(ColumnType::kGuid), guid),
            "\x7F\x0A\x0B\x0C\x0D\x0E\x0F\x08\x09\x06\x07\x04\x05\x00\x01\x02\x03"s);
}

TEST(EseIndexKey, BinaryGoesInGroupsOfEight) {
  const Column column = Of(ColumnType::kBinary, 130);
  EXPECT_EQ(KeyOf(column, "abc"), "\x7F"s + "abc\0\0\0\0\0\x03"s);
  EXPECT_EQ(KeyOf(column, "abcdefgh"), "\x7F"s + "abcdefgh\x08"s);
  EXPECT_EQ(KeyOf(column, "abcdefghi"), "\x7F"s + "abcdefgh\x09i\0\0\0\0\0\0\0\x01"s);
  EXPECT_EQ(KeyOf(column, ""), "\x40");
  EXPECT_EQ(KeyOf(Of(ColumnType::kBinary, 3), "abc"), "\x7F"s + "abc") << "a fixed column";
}

TEST(EseIndexKey, NarrowTextIsInUpperCaseUpToItsNul) {
  const Column column = Of(ColumnType::kText, 130, kCodePageLatin);
  EXPECT_EQ(KeyOf(column, "Abc\xE4\0xyz"s), "\x7F"s + "ABC\xE4\0"s);
  EXPECT_EQ(KeyOf(column, "F\0o\0"s), "\x7F\x46\0"s) << "UTF-16 under a code page of bytes";
}

TEST(EseIndexKey, NullsComeFirstOrLast) {
  const Column column = Of(ColumnType::kLong);
  std::string key;
  EXPECT_EQ(AppendKeyPiece(column, {}, std::nullopt, &key), KeyOutcome::kMade);
  EXPECT_EQ(AppendKeyPiece(column, {false, true}, std::nullopt, &key), KeyOutcome::kMade);
  EXPECT_EQ(AppendKeyPiece(column, {true, false}, std::nullopt, &key), KeyOutcome::kMade);
  EXPECT_EQ(key, "\x00\xC0\xFF"s);
}

TEST(EseIndexKey, DescendingColumnsAreInvertedAlone) {
  std::string key;
  AppendKeyPiece(Of(ColumnType::kUnsignedByte), {}, "\x01", &key);
  AppendKeyPiece(Of(ColumnType::kUnsignedByte), {.isDescending = true}, "\x01", &key);
  EXPECT_EQ(key, "\x7F\x01\x80\xFE"s);
}

TEST(EseIndexKey, ValuesOfAnotherSizeAreRefused) {
  std::string key = "so far";
  EXPECT_EQ(AppendKeyPiece(Of(ColumnType::kLong), {}, "12345678", &key), KeyOutcome::kWrongSize);
  EXPECT_EQ(AppendKeyPiece(Of(ColumnType::kLongLong), {}, "1234", &key), KeyOutcome::kWrongSize);
  EXPECT_EQ(AppendKeyPiece(Of(ColumnType::kLong), {}, "", &key), KeyOutcome::kWrongSize);
  EXPECT_EQ(key, "so far");
}

TEST(EseIndexKey, Utf16HasAnOrderOfOurOwnAlone) {
  const Column column = Of(ColumnType::kLongText, 300, kCodePageUtf16);
  std::string key;
  EXPECT_EQ(AppendKeyPiece(column, {}, test::EseUtf16(u"Ab"), &key), KeyOutcome::kUnknownOrder);
  EXPECT_EQ(key, "");
  const auto own = [&column](std::u16string_view text) {
    std::string made;
    EXPECT_EQ(AppendOwnKeyPiece(column, {}, test::EseUtf16(text), &made), KeyOutcome::kMade);
    return made;
  };
  EXPECT_EQ(own(u"\u041E\u0442"), own(u"\u043E\u0422"));
  EXPECT_EQ(own(u"Ab"), own(std::u16string_view(u"aB\0rest", 7)));
  EXPECT_LT(own(u"a"), own(u"ab"));
  EXPECT_LT(own(u"ab"), own(u"\u0100"));
}

}  // namespace
}  // namespace postmarker::ese
