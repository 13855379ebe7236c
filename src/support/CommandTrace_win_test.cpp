#include "support/CommandTrace_win.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>
#include <thread>

#include "support/TraceFolder_win.h"

namespace postmarker {
namespace {

using test::TraceFolder;

FILETIME Now() {
  FILETIME now = {};
  ::GetSystemTimeAsFileTime(&now);
  return now;
}

FILETIME MillisecondsAgo(uint32_t milliseconds) {
  FILETIME time = Now();
  time.dwLowDateTime -= milliseconds * 10'000;
  return time;
}

// A line of UTF-16 as bytes.
std::string Bytes(const std::wstring& text) {
  return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t)};
}

// Date and time are the clock's; what stands around them is known to the byte.
constexpr size_t kTimeLength = 23;

TEST(CommandTrace, FirstLineStandsBehindAByteOrderMark) {
  const TraceFolder folder;
  folder.MakeSuiteFolder();
  SYSTEMTIME before = {};
  ::GetLocalTime(&before);
  TraceCommand(21, MillisecondsAgo(250));
  const std::string bytes = folder.TraceBytes();
  ASSERT_GT(bytes.size(), 2 + 2 * kTimeLength);
  EXPECT_EQ(bytes.substr(0, 2), "\xFF\xFE");
  const std::vector<std::wstring> lines = folder.TraceLines();
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_EQ(bytes, "\xFF\xFE" + Bytes(lines[0])) << "nothing stands around the line";

  const std::wstring time = lines[0].substr(0, kTimeLength);
  EXPECT_TRUE(std::regex_match(time, std::wregex(LR"(\d{4}/\d\d/\d\d \d\d:\d\d:\d\d\.\d{3})")));
  EXPECT_EQ(std::wcstol(time.c_str(), nullptr, 10), before.wYear);
  const std::wstring rest = lines[0].substr(kTimeLength);
  EXPECT_EQ(rest.substr(0, 46), L" | support_test.exe               |    21 |   ");
  EXPECT_TRUE(std::regex_match(rest.substr(46), std::wregex(LR"([ \d]\d{2,}ms\r\n)")))
      << "the time";
  EXPECT_GE(std::wcstol(rest.c_str() + 44, nullptr, 10), 250);
}

TEST(CommandTrace, SecondLineHasNoByteOrderMarkBeforeIt) {
  const TraceFolder folder;
  folder.MakeSuiteFolder();
  TraceCommand(21, Now());
  const std::string first = folder.TraceBytes();
  TraceCommand(4, Now());
  const std::string both = folder.TraceBytes();
  EXPECT_EQ(both.substr(0, first.size()), first);
  EXPECT_EQ(both.find("\xFF\xFE", 1), std::string::npos);
  ASSERT_EQ(folder.TraceLines().size(), 2U);
  EXPECT_EQ(folder.TraceLines()[1].substr(kTimeLength, 43),
            L" | support_test.exe               |     4 |");
}

TEST(CommandTrace, LineGoesBehindWhatAnotherWriterHasOpen) {
  const TraceFolder folder;
  folder.MakeSuiteFolder();
  const FileHandle other(::CreateFileW(folder.TraceFile().c_str(), FILE_APPEND_DATA,
                                       FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_ALWAYS, 0,
                                       nullptr));
  DWORD written = 0;
  ::WriteFile(other.Get(), "\xFF\xFE", 2, &written, nullptr);
  TraceCommand(21, Now());
  EXPECT_EQ(folder.TraceLines().size(), 1U);
}

TEST(CommandTrace, LinesOfSeveralWritersDoNotMix) {
  const TraceFolder folder;
  folder.MakeSuiteFolder();
  TraceCommand(0, Now());
  std::vector<std::thread> writers;
  for (int32_t command : {11, 22, 33, 44}) {
    writers.emplace_back([command] {
      for (int i = 0; i < 40; ++i) {
        TraceCommand(command, Now());
      }
    });
  }
  for (std::thread& writer : writers) {
    writer.join();
  }
  const std::wregex line(
      LR"(\d{4}/\d\d/\d\d \d\d:\d\d:\d\d\.\d{3} \| support_test\.exe {15}\| .{5} \| .{5}ms\r\n)");
  const std::vector<std::wstring> lines = folder.TraceLines();
  EXPECT_EQ(lines.size(), 161U);
  for (const std::wstring& text : lines) {
    EXPECT_TRUE(std::regex_match(text, line));
  }
}

TEST(CommandTrace, WithoutTheSuitesFolderThereIsNone) {
  const TraceFolder folder;
  TraceCommand(21, Now());
  EXPECT_FALSE(std::filesystem::exists(std::filesystem::path(folder.TraceFile())));
  folder.MakeSuiteFolder();
  EXPECT_FALSE(std::filesystem::exists(std::filesystem::path(folder.TraceFile())));
}

TEST(CommandTrace, FileThatCannotBeOpenedIsNoFailure) {
  const TraceFolder folder;
  folder.MakeSuiteFolder();
  const FileHandle exclusive(::CreateFileW(folder.TraceFile().c_str(), GENERIC_WRITE, 0, nullptr,
                                           CREATE_ALWAYS, 0, nullptr));
  ASSERT_TRUE(exclusive);
  TraceCommand(21, Now());
  LARGE_INTEGER size = {};
  ::GetFileSizeEx(exclusive.Get(), &size);
  EXPECT_EQ(size.QuadPart, 0);
}

}  // namespace
}  // namespace postmarker
