#include <windows.h>

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "support/Text.h"

namespace postmarker {
namespace {

// The Turkish I with a dot: its small letter is ours of ASCII, while the system leaves it alone.
constexpr wchar_t kDottedCapitalI = 0x130;

void AddCharacter(UINT codePage, const std::string& bytes, std::set<wchar_t>* characters) {
  wchar_t wide[2] = {};
  if (::MultiByteToWideChar(codePage, MB_ERR_INVALID_CHARS, bytes.data(),
                            static_cast<int>(bytes.size()), wide, 2) == 1) {
    characters->insert(wide[0]);
  }
}

// All characters of a code page, of one byte or two.
std::set<wchar_t> CharactersOf(UINT codePage) {
  std::set<wchar_t> characters;
  CPINFO info = {};
  EXPECT_TRUE(::GetCPInfo(codePage, &info)) << codePage;
  for (int lead = 1; lead < 256; ++lead) {
    const std::string first(1, static_cast<char>(lead));
    if (!::IsDBCSLeadByteEx(codePage, static_cast<BYTE>(lead))) {
      AddCharacter(codePage, first, &characters);
      continue;
    }
    for (int trail = 0x40; trail < 256; ++trail) {
      AddCharacter(codePage, first + static_cast<char>(trail), &characters);
    }
  }
  return characters;
}

TEST(TextOfCodePages, EveryLetterGetsTheLowerCaseOfTheSystem) {
  for (const UINT codePage :
       {874, 932, 936, 949, 950, 1250, 1251, 1252, 1253, 1254, 1255, 1256, 1257, 1258}) {
    const std::set<wchar_t> characters = CharactersOf(codePage);
    EXPECT_GE(characters.size(), 200U) << "code page " << codePage;
    for (const wchar_t unit : characters) {
      wchar_t lower[] = {unit, L'\0'};
      ::CharLowerW(lower);
      if (unit == kDottedCapitalI) {
        lower[0] = L'i';
      }
      EXPECT_EQ(ToLower(unit), lower[0])
          << std::hex << static_cast<unsigned>(unit) << std::dec << " of code page " << codePage;
    }
  }
}

}  // namespace
}  // namespace postmarker
