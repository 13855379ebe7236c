#include "controls/CXNamedColors.h"

#include <gtest/gtest.h>

#include <string>

#include "support/Text.h"

namespace postmarker {
namespace {

// The value as it is written: red first.
std::wstring TextOf(const wchar_t* name) {
  return CXNamedColors(name).Text();
}

TEST(CXNamedColors, ReadsHexadecimalValuesRedFirst) {
  EXPECT_EQ(CXNamedColors(L"#123456").Value(), 0x563412U);
  EXPECT_EQ(CXNamedColors(L"#abcdef").Text(), L"#ABCDEF");
  EXPECT_EQ(CXNamedColors(L"#00000A").Text(), L"#00000A");
}

TEST(CXNamedColors, FindsNamesIgnoringCase) {
  EXPECT_EQ(TextOf(L"CornflowerBlue"), L"#6495ED");
  EXPECT_EQ(TextOf(L"cornflowerBLUE"), L"#6495ED");
  EXPECT_EQ(TextOf(L"AliceBlue"), L"#F0F8FF");
  EXPECT_EQ(TextOf(L"yellow"), L"#FFFF00");
}

TEST(CXNamedColors, KeepsTheValuesThatDifferFromHtml) {
  EXPECT_EQ(TextOf(L"BlanchedAlmond"), L"#FFFFCD");
  EXPECT_EQ(TextOf(L"Gray"), L"#7F7F7F");
  EXPECT_EQ(TextOf(L"YellowGreen"), L"#8BCD32");
  EXPECT_EQ(TextOf(L"Green"), L"#008000");
  EXPECT_EQ(TextOf(L"Maroon"), L"#800000");
}

TEST(CXNamedColors, SpellsNamesAsInItsTable) {
  EXPECT_EQ(CXNamedColors(L"burlyWood").Name(), L"Burlywood");
  EXPECT_EQ(CXNamedColors(L"LawnGreen").Name(), L"Lawngreen");
  EXPECT_EQ(CXNamedColors(L"lightgrey").Name(), L"LightGrey");
  EXPECT_EQ(CXNamedColors(L"#DEB887").Name(), L"Burlywood");
}

TEST(CXNamedColors, TakesTheFirstOfTwoNamesOfAColor) {
  EXPECT_EQ(CXNamedColors(L"Cyan").Name(), L"Aqua");
  EXPECT_EQ(CXNamedColors(L"Magenta").Name(), L"Fuchsia");
}

TEST(CXNamedColors, SaysWhenAColorHasNoName) {
  EXPECT_EQ(CXNamedColors(0x010203U).Name(), L"not defined");
}

TEST(CXNamedColors, GivesBlackForWhatItDoesNotKnow) {
  for (const wchar_t* text :
       {L"", L"Bluish", L"#", L"#12345", L"#1234567", L"#12345G", L"#+12345", L"lightgray"}) {
    EXPECT_EQ(CXNamedColors(text).Value(), 0U) << NarrowUtf8(text);
  }
  EXPECT_EQ(CXNamedColors(static_cast<const wchar_t*>(nullptr)).Value(), 0U);
}

TEST(CXNamedColors, DropsBitsAboveBlue) {
  EXPECT_EQ(CXNamedColors(0x02FFFFFFU).Name(), L"White");
}

}  // namespace
}  // namespace postmarker
