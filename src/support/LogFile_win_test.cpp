#include "support/LogFile_win.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <thread>

#include "support/RegistrySandbox_win.h"
#include "support/Registry_win.h"
#include "support/TempFolder.h"
#include "support/Text.h"

namespace postmarker {
namespace {

using test::ReadFile;
using test::TempFolder;
using test::WriteFile;

constexpr uint32_t kNotOpen = 2;
constexpr uint32_t kLockOrClosed = 6;
constexpr uint32_t kBadFormat = 13;
constexpr uint32_t kTooSmall = 122;
constexpr uint32_t kOpenAlready = 183;

class LogFileTest : public testing::Test {
 protected:
  [[nodiscard]] std::string Text() const { return ReadFile(m_path); }

  TempFolder m_folder;
  std::wstring m_path = m_folder.PathOf("x.log");
};

TEST_F(LogFileTest, WritesFormattedTextAndNothingElse) {
  LogFile log(m_path.c_str(), true);
  EXPECT_EQ(log.Write("%s %d%%", "done", 50), 0U);
  EXPECT_EQ(log.Write("\n"), 0U);
  EXPECT_EQ(log.Write("%s", ""), 0U);
  EXPECT_EQ(Text(), "done 50%\n");
}

TEST_F(LogFileTest, OpenGoesOnAtTheEndOrBeginsAnew) {
  WriteFile(m_path, "old ");
  LogFile(m_path.c_str(), false).Write("new");
  EXPECT_EQ(Text(), "old new");
  LogFile(m_path.c_str(), true).Write("only");
  EXPECT_EQ(Text(), "only");
}

TEST_F(LogFileTest, OpenOnAnOpenObjectReturns183AndLeavesTheFileAsItWas) {
  LogFile log(m_path.c_str(), true);
  log.Write("kept");
  EXPECT_EQ(log.Open(true), kOpenAlready);
  EXPECT_EQ(log.Open(false), kOpenAlready);
  EXPECT_EQ(Text(), "kept");
  EXPECT_EQ(log.Write(" on"), 0U);
  EXPECT_EQ(Text(), "kept on");
}

TEST_F(LogFileTest, OthersMayReadAndNotWrite) {
  const LogFile log(m_path.c_str(), true);
  const auto open = [&](DWORD access) {
    return static_cast<bool>(
        FileHandle(::CreateFileW(m_path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                 nullptr, OPEN_EXISTING, 0, nullptr)));
  };
  EXPECT_TRUE(open(GENERIC_READ));
  EXPECT_FALSE(open(GENERIC_WRITE));
}

TEST_F(LogFileTest, OperationsOnAClosedLogReturn2) {
  LogFile log(m_path.c_str(), true);
  EXPECT_EQ(log.Close(), 0U);
  EXPECT_EQ(log.Close(), kNotOpen);
  EXPECT_EQ(log.Clear(), kNotOpen);
  EXPECT_EQ(log.Write("x"), kNotOpen);
  EXPECT_EQ(log.WriteDate(), kNotOpen);
  EXPECT_EQ(log.WriteTime(), kNotOpen);
  EXPECT_EQ(log.WriteDateTime(), kNotOpen);
  EXPECT_EQ(log.WriteWithDateTime("x"), kNotOpen);
  EXPECT_EQ(log.GetSize(), 0U);
  EXPECT_EQ(log.Open(false), 0U);
  EXPECT_EQ(log.Write("x"), 0U);
}

TEST_F(LogFileTest, WithoutAPathNothingOpens) {
  LogFile log(nullptr, true);
  EXPECT_EQ(log.Open(true), kNotOpen);
  wchar_t path[10] = L"before";
  EXPECT_EQ(log.GetPath(path, 10), kNotOpen);
  EXPECT_STREQ(path, L"");
}

TEST_F(LogFileTest, OpenThatFailsGivesTheSystemsError) {
  LogFile log((m_path + L"\\missing\\x.log").c_str(), true);
  EXPECT_EQ(log.Open(true), static_cast<uint32_t>(ERROR_PATH_NOT_FOUND));
  EXPECT_EQ(log.Write("x"), kNotOpen);
}

TEST_F(LogFileTest, ClearMakesTheFileEmpty) {
  LogFile log(m_path.c_str(), true);
  log.Write("something");
  EXPECT_EQ(log.GetSize(), 9U);
  EXPECT_EQ(log.Clear(), 0U);
  EXPECT_EQ(log.GetSize(), 0U);
  log.Write("new");
  EXPECT_EQ(Text(), "new");
}

TEST_F(LogFileTest, TextsAroundTheBuffersSizeAreWrittenWhole) {
  for (const size_t length : {size_t{3095}, size_t{3096}, size_t{3097}, size_t{100'000}}) {
    const std::string text(length, 'x');
    LogFile(m_path.c_str(), true).Write("%s", text.c_str());
    EXPECT_TRUE(Text() == text) << length << " bytes, written: " << Text().size();
  }
}

TEST_F(LogFileTest, WideArgumentsComeInThePersonsCodePage) {
  LogFile log(m_path.c_str(), true);
  EXPECT_EQ(log.Write("%ls", L"caf\xE9"), 0U);
  EXPECT_EQ(Text(), Narrow(L"caf\xE9"));
}

TEST_F(LogFileTest, FormatThatFailsReturns13AndWritesNothing) {
  LogFile log(m_path.c_str(), true);
  // Half of a pair is in no code page.
  EXPECT_EQ(log.Write("%ls", L"a\xD800"), kBadFormat);
  EXPECT_EQ(Text(), "");
  EXPECT_EQ(log.Write("on"), 0U);
  EXPECT_EQ(Text(), "on");
}

TEST_F(LogFileTest, LocaleOfTheThreadIsAsBefore) {
  const std::string before = std::setlocale(LC_ALL, nullptr);
  LogFile(m_path.c_str(), true).Write("%ls", L"\xE9");
  EXPECT_EQ(std::setlocale(LC_ALL, nullptr), before);
}

TEST_F(LogFileTest, PrefixesAreLocalDateAndTime) {
  LogFile log(m_path.c_str(), true);
  EXPECT_EQ(log.WriteDate(), 0U);
  EXPECT_EQ(log.WriteTime(), 0U);
  EXPECT_EQ(log.WriteDateTime(), 0U);
  EXPECT_EQ(log.WriteWithDate("a%d\n", 1), 0U);
  EXPECT_EQ(log.WriteWithTime("b%d\n", 2), 0U);
  EXPECT_EQ(log.WriteWithDateTime("c%d\n", 3), 0U);
  SYSTEMTIME now = {};
  ::GetLocalTime(&now);
  const std::string date = R"(\d{4}/\d\d/\d\d )";
  const std::string time = R"(\d\d:\d\d:\d\d )";
  EXPECT_TRUE(std::regex_match(Text(), std::regex(date + time + date + time + date + "a1\n" + time +
                                                  "b2\n" + date + time + "c3\n")))
      << Text();
  EXPECT_EQ(Text().substr(0, 5), std::to_string(now.wYear) + "/");
}

TEST_F(LogFileTest, PrefixAndTextAreOneUnit) {
  LogFile log(m_path.c_str(), true);
  const auto write = [&](char letter) {
    for (int i = 0; i < 200; ++i) {
      log.WriteWithDate("%c\n", letter);
    }
  };
  std::thread other(write, 'a');
  write('b');
  other.join();
  EXPECT_TRUE(std::regex_match(Text(), std::regex(R"((\d{4}/\d\d/\d\d [ab]\n){400})")));
}

TEST_F(LogFileTest, PathIsCopiedWhereThereIsRoom) {
  LogFile log(m_path.c_str(), true);
  std::wstring room(m_path.size() + 1, L'?');
  EXPECT_EQ(log.GetPath(room.data(), room.size()), 0U);
  EXPECT_EQ(room, m_path + L'\0');
  EXPECT_EQ(log.GetPath(room.data(), room.size() - 1), kTooSmall);
  EXPECT_EQ(room[0], L'\0');
  EXPECT_EQ(log.GetPath(nullptr, 0), kTooSmall);
}

TEST_F(LogFileTest, EmptyPathsAreIgnored) {
  LogFile log(m_path.c_str(), true);
  EXPECT_EQ(log.SetPath(nullptr), 0U);
  EXPECT_EQ(log.SetPath(L""), 0U);
  wchar_t path[MAX_PATH] = {};
  EXPECT_EQ(log.GetPath(path, MAX_PATH), 0U);
  EXPECT_EQ(path, m_path);
}

TEST_F(LogFileTest, NewPathIsForTheNextOpen) {
  LogFile log(m_path.c_str(), true);
  const std::wstring second = m_folder.PathOf("y.log");
  log.SetPath(second.c_str());
  log.Write("first");
  log.Close();
  log.Open(true);
  log.Write("second");
  log.Close();
  EXPECT_EQ(Text(), "first");
  EXPECT_EQ(ReadFile(second), "second");
}

std::wstring PathOf(const wchar_t* text) {
  LogFile log(nullptr, false);
  log.SetPath(text);
  wchar_t path[MAX_PATH] = {};
  log.GetPath(path, MAX_PATH);
  return path;
}

TEST(LogFileFolders, MacrosLeadToTheSystemsFolders) {
  wchar_t program[MAX_PATH] = {};
  ::GetModuleFileNameW(nullptr, program, MAX_PATH);
  EXPECT_EQ(PathOf(L"appdir:\\x.log"),
            (std::filesystem::path(program).parent_path() / "x.log").wstring());
  wchar_t temp[MAX_PATH] = {};
  ::GetTempPathW(MAX_PATH, temp);
  EXPECT_EQ(PathOf(L"temp:\\x.log"), std::wstring(temp) + L"x.log");
}

TEST(LogFileFolders, ShellFoldersComeFromTheRegistry) {
  const test::RegistrySandbox sandbox;
  EXPECT_EQ(PathOf(L"appdata:\\x.log"), L"appdata:\\x.log") << "the folder is unknown";
  const RegistryKey key = RegistryKey::Create(
      HKEY_CURRENT_USER, L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders",
      KEY_ALL_ACCESS);
  key.WriteString(L"AppData", L"D:\\Data");
  key.WriteString(L"Desktop", L"D:\\Desktop\\");
  EXPECT_EQ(PathOf(L"appdata:\\x.log"), L"D:\\Data\\x.log");
  EXPECT_EQ(PathOf(L"desktop:\\x.log"), L"D:\\Desktop\\x.log");
}

class ShrinkTest : public LogFileTest {
 protected:
  // Ten lines of ten bytes.
  void SetUp() override { WriteFile(m_path, Lines(0, 10)); }

  static std::string Lines(int first, int end) {
    std::string lines;
    for (int i = first; i < end; ++i) {
      lines += "line " + std::to_string(i) + " .\r\n";
    }
    return lines;
  }
  static std::string Notice(uint64_t size, uint32_t target) {
    return "INFO: The log was shrunk from " + std::to_string(size) + " bytes to ~" +
           std::to_string(target) + " bytes\r\n\r\n";
  }
  [[nodiscard]] bool CopyIsGone() const {
    return !std::filesystem::exists(std::filesystem::path(m_path + L".tmp"));
  }
};

TEST_F(ShrinkTest, KeepsTheEndFromALinesBeginning) {
  ASSERT_EQ(Lines(0, 10).size(), 100U);
  LogFile log(m_path.c_str(), false);
  EXPECT_EQ(log.Shrink(35), 0U);
  EXPECT_EQ(Text(), Notice(100, 35) + Lines(7, 10));
  EXPECT_TRUE(CopyIsGone());
  EXPECT_EQ(log.Write("on"), 0U) << "the log is open again, at its end";
  EXPECT_EQ(Text(), Notice(100, 35) + Lines(7, 10) + "on");
}

TEST_F(ShrinkTest, LineThatBeginsAtTheTargetIsCutAsWell) {
  LogFile log(m_path.c_str(), false);
  EXPECT_EQ(log.Shrink(30), 0U);
  EXPECT_EQ(Text(), Notice(100, 30) + Lines(8, 10));
}

TEST_F(ShrinkTest, TargetAboveTheSizeChangesNothing) {
  LogFile log(m_path.c_str(), false);
  EXPECT_EQ(log.Shrink(101), 0U);
  EXPECT_EQ(log.Shrink(100), 0U);
  EXPECT_EQ(log.Shrink(0xFFFF'FFFF), 0U);
  EXPECT_EQ(Text(), Lines(0, 10));
}

TEST_F(ShrinkTest, LogWithoutALineFeedInItsLastBytesGivesTheNoticeOnly) {
  WriteFile(m_path, Lines(0, 3) + std::string(10'000, 'x'));
  LogFile log(m_path.c_str(), false);
  EXPECT_EQ(log.Shrink(9'000), 0U);
  EXPECT_EQ(Text(), Notice(10'030, 9'000));
}

TEST_F(ShrinkTest, LineFeedAsTheLastByteGivesTheNoticeOnly) {
  LogFile log(m_path.c_str(), false);
  EXPECT_EQ(log.Shrink(5), 0U);
  EXPECT_EQ(Text(), Notice(100, 5));
}

TEST_F(ShrinkTest, TargetOfZeroGivesTheNoticeOnly) {
  LogFile log(m_path.c_str(), false);
  EXPECT_EQ(log.Shrink(0), 0U);
  EXPECT_EQ(Text(), Notice(100, 0));
}

TEST_F(ShrinkTest, LogOfManyBlocksIsCopiedWhole) {
  // The first line feed within the kept end stands in its second block.
  const std::string end = "\n" + std::string(5'000, 'b') + "\n" + Lines(0, 700);
  WriteFile(m_path, std::string(20'000, 'x') + end);
  LogFile log(m_path.c_str(), false);
  const auto target = static_cast<uint32_t>(end.size() + 4'000);
  const uint64_t size = log.GetSize();
  EXPECT_EQ(log.Shrink(target), 0U);
  EXPECT_TRUE(Text() == Notice(size, target) + end.substr(1)) << Text().substr(0, 200);
}

TEST_F(ShrinkTest, ClosedLogReturns6) {
  LogFile log(m_path.c_str(), false);
  log.Close();
  EXPECT_EQ(log.Shrink(5), kLockOrClosed);
  EXPECT_EQ(Text(), Lines(0, 10));
}

TEST_F(ShrinkTest, CopyThatCannotBeMadeLeavesTheLogAsItWas) {
  std::filesystem::create_directory(std::filesystem::path(m_path + L".tmp"));
  LogFile log(m_path.c_str(), false);
  EXPECT_NE(log.Shrink(35), 0U);
  EXPECT_EQ(Text(), Lines(0, 10));
  EXPECT_EQ(log.Write("on"), 0U);
  EXPECT_EQ(Text(), Lines(0, 10) + "on");
}

TEST_F(ShrinkTest, LogThatIsBeingReadIsNotReplacedAndStaysOpen) {
  LogFile log(m_path.c_str(), false);
  const FileHandle reader(::CreateFileW(m_path.c_str(), GENERIC_READ,
                                        FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                                        0, nullptr));
  ASSERT_TRUE(reader);
  EXPECT_NE(log.Shrink(35), 0U);
  EXPECT_EQ(Text(), Lines(0, 10));
  EXPECT_TRUE(CopyIsGone());
  EXPECT_EQ(log.Write("on"), 0U);
  EXPECT_EQ(Text(), Lines(0, 10) + "on");
}

}  // namespace
}  // namespace postmarker
