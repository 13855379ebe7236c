#include "clients/outlook/MapiLibrary_win.h"

#include <gtest/gtest.h>

#include <fstream>

#include "support/OutlookFixture_win.h"

namespace postmarker::test {
namespace {

class MapiLibraryTest : public OutlookTest {
 protected:
  // A folder for common files, without a backslash at its end.
  [[nodiscard]] std::wstring CommonFiles() const { return m_outlook.Folder().PathOf("common"); }

  void Put(const std::wstring& names, const std::wstring& folder,
           const std::wstring& file = L"msmapi32.dll") {
    m_outlook.Copy(names, L"common\\" + folder, file);
  }
  void PutGarbage(const std::wstring& folder, const std::wstring& file = L"msmapi32.dll") {
    std::filesystem::create_directories(std::filesystem::path(CommonFiles()) / folder);
    WriteFile(CommonFiles() + L"\\" + folder + L"\\" + file, std::string(4000, 'x'));
  }
};

TEST_F(MapiLibraryTest, NoneIsLoadedWhereThereIsNone) {
  const MapiLibrary library = MapiLibrary::LoadBelow(CommonFiles());
  EXPECT_FALSE(library.IsLoaded());
  EXPECT_FALSE(library.IsUsable());
}

TEST_F(MapiLibraryTest, EachOfThePlacesIsSearched) {
  const std::pair<const wchar_t*, const wchar_t*> places[] = {
      {L"System\\MSMAPI\\1031", L"msmapi32.dll"},
      {L"System\\Mapi\\1031", L"msmapi32.dll"},
      {L"System\\Mapi\\1031\\NT", L"mapi32.dll"}};
  for (const auto& [folder, file] : places) {
    SCOPED_TRACE(NarrowUtf8(folder));
    std::filesystem::remove_all(CommonFiles());
    Put(L"Decorated", folder, file);
    EXPECT_TRUE(MapiLibrary::LoadBelow(CommonFiles()).IsUsable());
  }
}

TEST_F(MapiLibraryTest, FirstPlaceWithALibraryThatLoadsIsTaken) {
  PutGarbage(L"System\\MSMAPI\\1031");
  Put(L"Incomplete", L"System\\MSMAPI\\1033");
  Put(L"Decorated", L"System\\Mapi\\1031");
  const MapiLibrary library = MapiLibrary::LoadBelow(CommonFiles());
  EXPECT_TRUE(library.IsLoaded());
  EXPECT_EQ(library.hrGetOneProp, nullptr) << "the library in the second place was taken";
}

TEST_F(MapiLibraryTest, LibraryThatLacksAnEntryPointIsNotUsable) {
  Put(L"Incomplete", L"System\\MSMAPI\\1033");
  const MapiLibrary library = MapiLibrary::LoadBelow(CommonFiles());
  EXPECT_TRUE(library.IsLoaded());
  EXPECT_NE(library.initialize, nullptr);
  EXPECT_FALSE(library.IsUsable());
}

TEST_F(MapiLibraryTest, LibraryIsUsableWithAllOfItsEntryPointsOnly) {
  const auto isUsableWithout = [](auto MapiLibrary::*entry) {
    MapiLibrary library = MapiLibrary::LoadOutlooks();
    EXPECT_NE(library.*entry, nullptr);
    library.*entry = nullptr;
    return library.IsUsable();
  };
  EXPECT_FALSE(isUsableWithout(&MapiLibrary::initialize));
  EXPECT_FALSE(isUsableWithout(&MapiLibrary::uninitialize));
  EXPECT_FALSE(isUsableWithout(&MapiLibrary::logonEx));
  EXPECT_FALSE(isUsableWithout(&MapiLibrary::freeBuffer));
  EXPECT_FALSE(isUsableWithout(&MapiLibrary::hexFromBin));
  EXPECT_FALSE(isUsableWithout(&MapiLibrary::hrQueryAllRows));
  EXPECT_FALSE(isUsableWithout(&MapiLibrary::freeProws));
  EXPECT_FALSE(isUsableWithout(&MapiLibrary::hrGetOneProp));
}

TEST_F(MapiLibraryTest, OnlyTheFoldersBelowAPlaceAreLanguages) {
  Put(L"Decorated", L"System\\MSMAPI");
  Put(L"Decorated", L"System");
  EXPECT_FALSE(MapiLibrary::LoadBelow(CommonFiles()).IsLoaded());
}

TEST_F(MapiLibraryTest, PlainNamesOfUtilityFunctionsAreTakenIn64BitsOnly) {
  Put(L"Plain", L"System\\MSMAPI\\1033");
  EXPECT_EQ(MapiLibrary::LoadBelow(CommonFiles()).IsUsable(), sizeof(void*) == 8);
}

TEST_F(MapiLibraryTest, LibraryOfTheOtherWidthIsAsOneThatIsNotThere) {
  constexpr size_t kHeaderOffset = 0x3C;
  constexpr uint16_t kOtherMachine =
      sizeof(void*) == 8 ? IMAGE_FILE_MACHINE_I386 : IMAGE_FILE_MACHINE_AMD64;
  Put(L"Decorated", L"System\\MSMAPI\\1033");
  const std::wstring file = CommonFiles() + L"\\System\\MSMAPI\\1033\\msmapi32.dll";
  std::string bytes = ReadFile(file);
  uint32_t header = 0;
  bytes.copy(reinterpret_cast<char*>(&header), sizeof(header), kHeaderOffset);
  // The machine follows the signature of four bytes.
  std::memcpy(bytes.data() + header + 4, &kOtherMachine, sizeof(kOtherMachine));
  WriteFile(file, bytes);
  EXPECT_FALSE(MapiLibrary::LoadBelow(CommonFiles()).IsLoaded());
}

TEST_F(MapiLibraryTest, OutlooksLibraryIsFoundByTheSystemsFolder) {
  EXPECT_TRUE(MapiLibrary::LoadOutlooks().IsUsable());
  m_outlook.RemoveLibrary();
  EXPECT_FALSE(MapiLibrary::LoadOutlooks().IsLoaded());
}

TEST_F(MapiLibraryTest, BytesBecomeUpperCaseDigits) {
  BYTE bytes[] = {0x00, 0xA1, 0xFF};
  const SBinary binary = {sizeof(bytes), bytes};
  EXPECT_EQ(HexText(MapiLibrary::LoadOutlooks(), binary), "00A1FF");
  const MapiLibrary systems = MapiLibrary::LoadSystems();
  ASSERT_TRUE(systems.IsUsable());
  EXPECT_EQ(HexText(systems, binary), "00A1FF");
}

TEST_F(MapiLibraryTest, IdOfMoreThan4096DigitsIsNone) {
  const MapiLibrary library = MapiLibrary::LoadOutlooks();
  std::vector<BYTE> bytes(2049, BYTE{0xAB});
  EXPECT_EQ(HexText(library, {2048, bytes.data()}).size(), 4096U);
  EXPECT_EQ(HexText(library, {2049, bytes.data()}), "");
  EXPECT_EQ(HexText(library, {0, bytes.data()}), "");
  EXPECT_EQ(HexText(library, {4, nullptr}), "");
}

}  // namespace
}  // namespace postmarker::test
