#include "clients/thunderbird/TbIniFile.h"

#include <gtest/gtest.h>

#include "support/Prefixes.h"

namespace postmarker::thunderbird {
namespace {

using namespace std::string_view_literals;

constexpr wchar_t kData[] = L"C:\\Data";

std::optional<std::wstring> Find(std::string_view ini) {
  return FindDefaultProfile(ini, kData);
}

TEST(DefaultProfile, RelativePathIsBelowTheDataFolderWithBackslashes) {
  EXPECT_EQ(Find("[General]\r\nStartWithLastProfile=1\r\n\r\n[Profile0]\r\nName=default\r\n"
                 "IsRelative=1\r\nPath=Profiles/ab12.default\r\nDefault=1\r\n"),
            L"C:\\Data\\Thunderbird\\Profiles\\ab12.default");
}

TEST(DefaultProfile, NameMayBeWrittenInAnyCase) {
  EXPECT_EQ(Find("Name=Default\nIsRelative=1\nPath=x\n"), L"C:\\Data\\Thunderbird\\x");
  EXPECT_EQ(Find("NAME=DEFAULT\nIsRelative=1\nPath=x"), L"C:\\Data\\Thunderbird\\x");
}

TEST(DefaultProfile, AbsolutePathKeepsItsSlashes) {
  EXPECT_EQ(Find("Name=default\nIsRelative=0\nPath=D:/mail/x\n"), L"D:/mail/x");
}

TEST(DefaultProfile, RelativeIsToldByTheWordAndAOneBehindTheSign) {
  EXPECT_EQ(Find("Name=default\nIsRelative = 1\nPath=x\n"), L"C:\\Data\\Thunderbird\\x");
  EXPECT_EQ(Find("Name=default\nIsRelative  =  1\nPath=x\n"), L"x");
  EXPECT_EQ(Find("Name=default\nisrelative=1\nPath=x\n"), L"x");
  EXPECT_EQ(Find("Name=default\nSomething=1\nPath=x\n"), L"x");
}

TEST(DefaultProfile, NameOfAnotherProfileAndALongerLineAreSkipped) {
  EXPECT_EQ(Find("Name=work\nIsRelative=1\nPath=w\n"
                 "Name=default-release\nIsRelative=1\nPath=r\n"
                 "Name=default\nIsRelative=1\nPath=d\n"),
            L"C:\\Data\\Thunderbird\\d");
  EXPECT_EQ(Find("Name=work\nIsRelative=1\nPath=w\n"), std::nullopt);
  EXPECT_EQ(Find(" Name=default\nIsRelative=1\nPath=w\n"), std::nullopt);
}

TEST(DefaultProfile, LinesCountByTheirPlaceAndTheScanGoesOnBehindThem) {
  EXPECT_EQ(Find("Name=default\nPath=a\nIsRelative=1\nPath=b\n"), std::nullopt);
  EXPECT_EQ(Find("Name=default\nIsRelative=1\nDefault=1\nName=default\nIsRelative=0\nPath=b\n"),
            L"b");
  // The lines after a match are not looked at for a name.
  EXPECT_EQ(Find("Name=default\nName=default\nName=default\nIsRelative=0\nPath=b\n"), std::nullopt);
}

TEST(DefaultProfile, PathLosesFiveCharactersWhereverTheWordStands) {
  EXPECT_EQ(Find("Name=default\nIsRelative=0\nThe Path=abc\n"), L"ath=abc");
  EXPECT_EQ(Find("Name=default\nIsRelative=0\nPath=\n"), L"");
}

TEST(DefaultProfile, FileThatEndsWithinTheThreeLinesNamesNone) {
  const std::string ini = "Name=default\r\nIsRelative=1\r\nPath=x";
  test::ForEveryPrefix(ini, [](std::string_view prefix) {
    const bool hasPath = prefix.find("Path=") != std::string_view::npos;
    EXPECT_EQ(Find(prefix).has_value(), hasPath);
  });
}

TEST(DefaultProfile, LongLineComesInPieces) {
  const std::string longLine(259, 'x');
  // The line end of a line of exactly 259 characters makes an empty line.
  EXPECT_EQ(Find("Name=default\nIsRelative=0" + std::string(247, ' ') + "\nPath=p\n"),
            std::nullopt);
  EXPECT_EQ(Find(longLine + "Name=default\nIsRelative=0\nPath=p\n"), L"p");
  EXPECT_EQ(Find("Name=default\nIsRelative=0\nPath=" + std::string(300, 'p') + "\n"),
            std::wstring(254, L'p'));
}

TEST(DefaultProfile, TextEndsAtTheEndOfFileCharacterAndALineAtItsNul) {
  EXPECT_EQ(Find("\x1AName=default\nIsRelative=0\nPath=p\n"), std::nullopt);
  EXPECT_EQ(Find("Name=default\0x\nIsRelative=0\nPath=p\0q\n"sv), L"p");
}

TEST(DefaultProfile, CarriageReturnAloneBelongsToItsLine) {
  EXPECT_EQ(Find("Name=default\r\r\nIsRelative=0\nPath=p\n"), std::nullopt);
}

TEST(DefaultProfile, ManyLinesAreReadInLinearTime) {
  std::string ini;
  for (int i = 0; i < 100'000; ++i) {
    ini += "Name=default\nIsRelative=1\n\n";
  }
  EXPECT_EQ(Find(ini), std::nullopt);
  EXPECT_EQ(Find(ini + "Name=default\nIsRelative=0\nPath=p\n"), L"p");
}

TEST(DefaultProfile, Utf8IsReadAsSuchAndOtherBytesInTheCodePage) {
  EXPECT_EQ(Find("Name=default\nIsRelative=0\nPath=C:\\J\xC3\xBCrgen\n"), L"C:\\J\u00FCrgen");
  EXPECT_EQ(Find("Name=default\nIsRelative=0\nPath=C:\\J\xFCrgen\n"), L"C:\\J\u00FCrgen");
  EXPECT_EQ(Find("Name=\xFC\nName=default\nIsRelative=0\nPath=\xC3\xBC\n"), L"\u00C3\u00BC")
      << "one byte that is none makes it a file of the code page";
}

TEST(DefaultProfile, PiecesOfALongLineInUtf8AreCountedInCharacters) {
  std::string value;
  for (int i = 0; i < 300; ++i) {
    value += "\xC3\xBC";
  }
  EXPECT_EQ(Find("Name=default\nIsRelative=0\nPath=" + value + "\n"), std::wstring(254, L'\u00FC'));
}

TEST(ExtensionLine, Utf8IsReadAsSuchAndOtherBytesInTheCodePage) {
  EXPECT_TRUE(HasLineWith("Extension0=C:\\J\xC3\xBCrgen\\tb\n", L"C:\\J\u00FCrgen\\tb"));
  EXPECT_TRUE(HasLineWith("Extension0=C:\\J\xFCrgen\\tb\n", L"C:\\J\u00FCrgen\\tb"));
}

TEST(ExtensionLine, IsFoundAnywhereInALineInItsOwnCase) {
  constexpr std::string_view kIni = "[ExtensionDirs]\r\nExtension0=C:\\Suite\\tb\r\n";
  EXPECT_TRUE(HasLineWith(kIni, L"C:\\Suite\\tb"));
  EXPECT_FALSE(HasLineWith(kIni, L"c:\\suite\\tb"));
  EXPECT_FALSE(HasLineWith(kIni, L"tb\nExtension1"));
  EXPECT_FALSE(HasLineWith("", L"x"));
  EXPECT_FALSE(HasLineWith(kIni, L""));
}

TEST(ExtensionLine, IsNotFoundAcrossTwoPiecesOfALongLine) {
  EXPECT_FALSE(HasLineWith(std::string(257, 'x') + "path", L"path"));
  EXPECT_TRUE(HasLineWith(std::string(255, 'x') + "path", L"path"));
  EXPECT_TRUE(HasLineWith(std::string(259, 'x') + "path", L"path"));
}

}  // namespace
}  // namespace postmarker::thunderbird
