#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <string>
#include <thread>

#include "support/MappedFile.h"
#include "support/ObjectCount_win.h"

namespace postmarker {
namespace {

std::wstring TemporaryFile() {
  wchar_t folder[MAX_PATH] = {};
  wchar_t path[MAX_PATH] = {};
  ::GetTempPathW(MAX_PATH, folder);
  ::GetTempFileNameW(folder, L"pm", 0, path);
  return path;
}

FileHandle OpenForWriting(const std::wstring& path, DWORD share) {
  return FileHandle(::CreateFileW(path.c_str(), GENERIC_WRITE, share, nullptr, CREATE_ALWAYS,
                                  FILE_ATTRIBUTE_NORMAL, nullptr));
}

void WriteBytes(const FileHandle& file, const char* bytes) {
  DWORD written = 0;
  ASSERT_TRUE(
      ::WriteFile(file.Get(), bytes, static_cast<DWORD>(std::strlen(bytes)), &written, nullptr));
}

TEST(MappedFileHeldByAClient, HeldOpenForWritingIsReadBySecondAttempt) {
  const std::wstring path = TemporaryFile();
  {
    const FileHandle writer = OpenForWriting(path, FILE_SHARE_READ | FILE_SHARE_WRITE);
    ASSERT_TRUE(writer);
    WriteBytes(writer, "held");
    const FileHandle firstAttempt(::CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ,
                                                nullptr, OPEN_EXISTING, 0, nullptr));
    ASSERT_FALSE(firstAttempt) << "the writer does not refuse shared reading, so nothing is shown";

    const MappedFile file(path, 1);
    EXPECT_EQ(file.Status(), kOk);
    EXPECT_EQ(file.Bytes(), "held");
    EXPECT_TRUE(CanOpenForReading(path));
  }
  EXPECT_TRUE(::DeleteFileW(path.c_str()));
}

TEST(MappedFileHeldByAClient, HeldWithoutSharingIsAFailure) {
  const std::wstring path = TemporaryFile();
  {
    const FileHandle writer = OpenForWriting(path, 0);
    ASSERT_TRUE(writer);
    WriteBytes(writer, "held");
    const MappedFile file(path, 1);
    EXPECT_EQ(file.Status(), kFail);
    EXPECT_EQ(file.Data(), nullptr);
    EXPECT_EQ(file.Size(), 0U);
    EXPECT_FALSE(CanOpenForReading(path));
  }
  EXPECT_TRUE(::DeleteFileW(path.c_str()));
}

TEST(MappedFileHeldByAClient, LeavesNoHandleBehind) {
  const std::wstring path = TemporaryFile();
  WriteBytes(OpenForWriting(path, 0), "x");
  { const MappedFile warmUp(path, 1); }
  const int64_t before = test::CountKernelHandles();
  for (int i = 0; i < 100; ++i) {
    const MappedFile file(path, 1);
    const MappedFile missing(path + L".missing", 1);
    ASSERT_EQ(file.Status(), kOk);
  }
  EXPECT_EQ(test::CountKernelHandles(), before);
  EXPECT_TRUE(::DeleteFileW(path.c_str()));
}

// The bytes of the view that a pointer is the beginning of, in whole pages.
size_t ViewedBytes(const uint8_t* data) {
  MEMORY_BASIC_INFORMATION view = {};
  EXPECT_NE(::VirtualQuery(data, &view, sizeof(view)), 0U);
  return view.RegionSize;
}

TEST(MappedFileHeldByAClient, SizeIsThatOfTheViewWhileTheClientCutsAndLengthensTheFile) {
  const std::wstring path = TemporaryFile();
  const FileHandle writer = OpenForWriting(path, FILE_SHARE_READ | FILE_SHARE_WRITE);
  ASSERT_TRUE(writer);
  std::atomic<bool> ends = false;
  std::thread client([&] {
    for (LONG size = 1; !ends; size = size == 1 ? 1 << 20 : 1) {
      ::SetFilePointer(writer.Get(), size, nullptr, FILE_BEGIN);
      ::SetEndOfFile(writer.Get());
    }
  });
  int viewed = 0;
  int cutShort = 0;
  for (int i = 0; i < 3000; ++i) {
    const MappedFile file(path, 1);
    if (Succeeded(file.Status())) {
      ++viewed;
      cutShort += ViewedBytes(file.Data()) < file.Size() ? 1 : 0;
    }
  }
  ends = true;
  client.join();
  EXPECT_GT(viewed, 0);
  EXPECT_EQ(cutShort, 0) << "reading to the size would have ended the process";
  ::DeleteFileW(path.c_str());
}

TEST(Handles, ClosingKeepsTheLastError) {
  KernelHandle event(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
  ASSERT_TRUE(event);
  FileHandle file(
      ::CreateFileW(L"NUL", GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
  ASSERT_TRUE(file);
  ::SetLastError(12345);
  event.Reset();
  file.Reset();
  EXPECT_EQ(::GetLastError(), 12345U);
}

TEST(Handles, ClosingABrokenHandleKeepsTheLastError) {
  KernelHandle event(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
  KernelHandle broken(event.Get());
  event.Reset();
  ::SetLastError(12345);
  broken.Reset();
  EXPECT_EQ(::GetLastError(), 12345U);
}

TEST(Handles, BothInvalidValuesOfAFileAreNone) {
  EXPECT_FALSE(FileHandle(INVALID_HANDLE_VALUE));
  EXPECT_FALSE(FileHandle(nullptr));
  EXPECT_FALSE(KernelHandle(nullptr));
}

TEST(Handles, EventIsClosedExactlyOnce) {
  KernelHandle event(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
  const HANDLE raw = event.Get();
  DWORD flags = 0;
  ASSERT_TRUE(::GetHandleInformation(raw, &flags));
  event.Reset();
  EXPECT_FALSE(::GetHandleInformation(raw, &flags));
}

TEST(Handles, GdiObjectsAreDeleted) {
  BrushHandle brush(::CreateSolidBrush(RGB(1, 2, 3)));
  const HBRUSH raw = brush.Get();
  ASSERT_EQ(::GetObjectType(raw), static_cast<DWORD>(OBJ_BRUSH));
  brush.Reset();
  EXPECT_EQ(::GetObjectType(raw), 0U);
}

}  // namespace
}  // namespace postmarker
