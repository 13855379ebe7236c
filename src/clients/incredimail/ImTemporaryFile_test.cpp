#include "clients/incredimail/ImTemporaryFile.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "support/TempFolder.h"

namespace postmarker {
namespace {

// The files in the system's folder for them, which is one of the test's own meanwhile.
class ImTemporaryFileTest : public testing::Test {
 protected:
  ImTemporaryFileTest() { SetFolder(m_folder.Path().string()); }
  ~ImTemporaryFileTest() override { SetFolder(m_before); }

  static void SetFolder(const std::string& path) {
#if defined(_WIN32)
    ::SetEnvironmentVariableA("TMP", path.c_str());
#else
    ::setenv("TMPDIR", path.c_str(), 1);
#endif
  }

  // In folders below it, too: those of processes that this one started.
  [[nodiscard]] size_t CountFiles() const {
    size_t count = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(m_folder.Path())) {
      count += entry.is_regular_file() ? 1 : 0;
    }
    return count;
  }

  static std::uintmax_t SizeOf(const std::wstring& path) {
    return std::filesystem::file_size(std::u16string(path.begin(), path.end()));
  }

 private:
  std::string m_before = std::filesystem::temp_directory_path().string();

 protected:
  test::TempFolder m_folder;
};

TEST_F(ImTemporaryFileTest, BeginsEmptyUnderANameOfItsOwnAndStaysIfNothingIsWritten) {
  std::wstring path;
  {
    const ImTemporaryFile file;
    path = file.Path();
    EXPECT_TRUE(path.substr(path.find_last_of(L"/\\") + 1).starts_with(L"tmp"));
    EXPECT_TRUE(file.Bytes().empty());
    EXPECT_NE(ImTemporaryFile().Path(), path);
  }
  EXPECT_EQ(SizeOf(path), 0U);
  EXPECT_EQ(CountFiles(), 2U);
}

TEST_F(ImTemporaryFileTest, ContentIsReadBackAndTheFileIsGoneWithTheObject) {
  {
    ImTemporaryFile file;
    EXPECT_TRUE(file.Write("content"));
    EXPECT_EQ(file.Bytes(), "content");
  }
  EXPECT_EQ(CountFiles(), 0U);
}

TEST_F(ImTemporaryFileTest, EmptyContentIsWrittenToo) {
  {
    ImTemporaryFile file;
    EXPECT_TRUE(file.Write(""));
    EXPECT_TRUE(file.Bytes().empty());
  }
  EXPECT_EQ(CountFiles(), 0U);
}

TEST_F(ImTemporaryFileTest, NothingIsWrittenWithoutAFolder) {
  SetFolder((m_folder.Path() / "missing").string());
  ImTemporaryFile file;
  EXPECT_TRUE(file.Path().empty());
  EXPECT_FALSE(file.Write("x"));
  EXPECT_TRUE(file.Bytes().empty());
}

// Ends the process as a crash does: no destructor runs.
[[noreturn]] void EndProcess() {
#if defined(_WIN32)
  ::TerminateProcess(::GetCurrentProcess(), 7);
  ::Sleep(INFINITE);
#endif
  std::_Exit(7);
}

TEST_F(ImTemporaryFileTest, MailIsGoneWhenTheProcessDies) {
  EXPECT_EXIT(
      {
        ImTemporaryFile file;
        if (file.Write("mail") && file.Bytes() == "mail") {
          EndProcess();
        }
      },
      testing::ExitedWithCode(7), "");
  EXPECT_EQ(CountFiles(), 0U);
}

}  // namespace
}  // namespace postmarker
