#include "support/MappedFile.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace postmarker {
namespace {

class MappedFileTest : public testing::Test {
 protected:
  MappedFileTest() : m_folder(std::filesystem::temp_directory_path() / FolderName()) {
    std::filesystem::create_directories(m_folder);
  }
  ~MappedFileTest() override {
    std::error_code ignored;
    std::filesystem::remove_all(m_folder, ignored);
  }

  std::wstring Write(const std::string& name, const std::string& bytes) {
    const std::filesystem::path path = m_folder / name;
    std::ofstream(path, std::ios::binary) << bytes;
    return path.wstring();
  }

  std::filesystem::path m_folder;

 private:
  static std::string FolderName() {
    const auto* const test = testing::UnitTest::GetInstance()->current_test_info();
    return std::string("pm-mapped-file-") + test->name();
  }
};

void ExpectFailure(const MappedFile& file) {
  EXPECT_EQ(file.Status(), kFail);
  EXPECT_EQ(file.Data(), nullptr);
  EXPECT_EQ(file.Size(), 0U);
  EXPECT_TRUE(file.Bytes().empty());
}

TEST_F(MappedFileTest, ViewsTheWholeFile) {
  const std::string bytes("first\0second\r\n\xFF", 15);
  const MappedFile file(Write("mail", bytes), 1);
  EXPECT_EQ(file.Status(), kOk);
  EXPECT_EQ(file.Size(), bytes.size());
  EXPECT_EQ(file.Bytes(), bytes);
}

TEST_F(MappedFileTest, AnyNonzeroByteAsksForMapping) {
  const MappedFile file(Write("mail", "x"), 0xFF);
  EXPECT_EQ(file.Status(), kOk);
}

TEST_F(MappedFileTest, ZeroByteMapsNothing) {
  ExpectFailure(MappedFile(Write("mail", "x"), 0));
}

TEST_F(MappedFileTest, EmptyFileIsAFailureWithoutView) {
  ExpectFailure(MappedFile(Write("empty", ""), 1));
}

TEST_F(MappedFileTest, MissingFileIsAFailure) {
  const std::wstring path = (m_folder / "missing").wstring();
  ExpectFailure(MappedFile(path, 1));
  EXPECT_FALSE(CanOpenForReading(path));
  ExpectFailure(MappedFile(L"", 1));
}

TEST_F(MappedFileTest, FolderIsAFailure) {
  ExpectFailure(MappedFile(m_folder.wstring(), 1));
  EXPECT_FALSE(CanOpenForReading(m_folder.wstring()));
}

TEST_F(MappedFileTest, EveryByteOfAFileLargerThanAPageIsThere) {
  std::string bytes;
  for (int i = 0; i < 100'000; ++i) {
    bytes.push_back(static_cast<char>(i * 7));
  }
  const MappedFile file(Write("large", bytes), 1);
  EXPECT_TRUE(file.Bytes() == bytes);
}

TEST_F(MappedFileTest, TwoObjectsViewOneFile) {
  const std::wstring path = Write("mail", "shared");
  const MappedFile first(path, 1);
  const MappedFile second(path, 1);
  EXPECT_EQ(first.Bytes(), "shared");
  EXPECT_EQ(second.Bytes(), "shared");
}

TEST_F(MappedFileTest, FileCanBeRemovedOnceTheObjectIsGone) {
  const std::wstring path = Write("mail", "x");
  { const MappedFile file(path, 1); }
  std::error_code error;
  EXPECT_TRUE(std::filesystem::remove(path, error)) << error.message();
}

TEST_F(MappedFileTest, LatinAndOtherNamesAreFound) {
  const std::filesystem::path path = m_folder / u8"Gr\u00FC\u00DFe \u65E5\u672C";
  std::ofstream(path, std::ios::binary) << "name";
#if defined(_WIN32)
  const std::wstring wide = path.wstring();
#else
  const std::wstring wide = m_folder.wstring() +
                            L"/Gr\x00FC\x00DF"
                            L"e \x65E5\x672C";
#endif
  EXPECT_EQ(MappedFile(wide, 1).Bytes(), "name");
  EXPECT_TRUE(CanOpenForReading(wide));
}

}  // namespace
}  // namespace postmarker
