#include "support/LogPath.h"

#include <gtest/gtest.h>

namespace postmarker {
namespace {

std::wstring FolderOf(LogFolder folder) {
  switch (folder) {
    case LogFolder::kProgram:
      return L"C:\\Suite";
    case LogFolder::kApplicationData:
      return L"C:\\Data";
    case LogFolder::kTemporary:
      return L"C:\\Temp\\";
    case LogFolder::kDesktop:
      return L"C:\\Desktop";
  }
  return {};
}

std::wstring NoFolder(LogFolder /*folder*/) {
  return {};
}

TEST(LogPath, EachMacroIsReplacedByItsFolder) {
  EXPECT_EQ(ExpandLogPath(L"appdir:\\x.log", FolderOf), L"C:\\Suite\\x.log");
  EXPECT_EQ(ExpandLogPath(L"appdata:\\x.log", FolderOf), L"C:\\Data\\x.log");
  EXPECT_EQ(ExpandLogPath(L"temp:\\x.log", FolderOf), L"C:\\Temp\\x.log");
  EXPECT_EQ(ExpandLogPath(L"desktop:\\x.log", FolderOf), L"C:\\Desktop\\x.log");
}

TEST(LogPath, MacrosAreFoundInAnyCase) {
  EXPECT_EQ(ExpandLogPath(L"AppDir:\\x.log", FolderOf), L"C:\\Suite\\x.log");
  EXPECT_EQ(ExpandLogPath(L"TEMP:\\x.log", FolderOf), L"C:\\Temp\\x.log");
}

TEST(LogPath, OnlyTheFirstFiveUnitsOfTheDesktopAreCompared) {
  EXPECT_EQ(ExpandLogPath(L"deskt:\\x.log", FolderOf), L"C:\\Desktop\\x.log");
  EXPECT_EQ(ExpandLogPath(L"DESKTops of all:\\x.log", FolderOf), L"C:\\Desktop\\x.log");
  EXPECT_EQ(ExpandLogPath(L"desk:\\x.log", FolderOf), L"desk:\\x.log");
}

TEST(LogPath, TextBehindTheFirstColonIsAppendedAsItStands) {
  EXPECT_EQ(ExpandLogPath(L"appdir:x.log", FolderOf), L"C:\\Suitex.log");
  EXPECT_EQ(ExpandLogPath(L"temp:\\a:b", FolderOf), L"C:\\Temp\\a:b");
  EXPECT_EQ(ExpandLogPath(L"temp:", FolderOf), L"C:\\Temp");
}

TEST(LogPath, BeginningWithoutAColonIsNoMacro) {
  EXPECT_EQ(ExpandLogPath(L"desktop.log", FolderOf), L"desktop.log");
}

TEST(LogPath, MacroElsewhereThanAtTheBeginningIsNone) {
  EXPECT_EQ(ExpandLogPath(L"C:\\temp:\\x.log", FolderOf), L"C:\\temp:\\x.log");
  EXPECT_EQ(ExpandLogPath(L"", FolderOf), L"");
}

TEST(LogPath, WholeTextIsThePathWhereTheFolderIsUnknown) {
  EXPECT_EQ(ExpandLogPath(L"appdata:\\x.log", NoFolder), L"appdata:\\x.log");
}

TEST(LogPath, ResultEndsAt260Units) {
  EXPECT_EQ(ExpandLogPath(L"temp:\\" + std::wstring(251, L'x'), FolderOf).size(), 259U);
  EXPECT_EQ(ExpandLogPath(L"temp:\\" + std::wstring(252, L'x'), FolderOf).size(), 260U);
  EXPECT_EQ(ExpandLogPath(L"temp:\\" + std::wstring(400, L'x'), FolderOf).size(), 260U);
}

}  // namespace
}  // namespace postmarker
