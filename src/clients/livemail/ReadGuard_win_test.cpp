// What remains of the reader's engine when the drive with a file goes away under it.
#include "clients/livemail/ReadGuard.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <thread>

#include "clients/livemail/EseJetApi.h"
#include "clients/livemail/JetDbWrapper.h"
#include "support/EseFile.h"
#include "support/TempFolder.h"

namespace postmarker {
namespace {

constexpr DWORD kAccessViolation = 0xC0000005;

LONG CALLBACK TellOfADrive(EXCEPTION_POINTERS* exception) {
  if (exception->ExceptionRecord->ExceptionCode == kAccessViolation) {
    exception->ExceptionRecord->ExceptionCode = EXCEPTION_IN_PAGE_ERROR;
  }
  return EXCEPTION_CONTINUE_SEARCH;
}

// While it lives, memory that can't be read looks as if the drive with it had gone away.
class DriveThatGoesAway {
 public:
  DriveThatGoesAway() : m_handler(::AddVectoredExceptionHandler(1, &TellOfADrive)) {}
  DriveThatGoesAway(const DriveThatGoesAway&) = delete;
  DriveThatGoesAway& operator=(const DriveThatGoesAway&) = delete;
  ~DriveThatGoesAway() { ::RemoveVectoredExceptionHandler(m_handler); }

 private:
  PVOID m_handler;
};

TEST(ReadGuard, TellsWhetherTheDriveWentAway) {
  EXPECT_TRUE(RunReading([]() noexcept {}));
  EXPECT_FALSE(RunReading([]() noexcept {
    ::RaiseException(EXCEPTION_IN_PAGE_ERROR, EXCEPTION_NONCONTINUABLE, 0, nullptr);
  }));
}

TEST(ReadGuard, CallOfTheEngineFailsAndTheNextOneWorks) {
  const test::TempFolder folder;
  test::WriteFile(folder.PathOf("store.edb"),
                  test::MakeEseFile({{.name = "T", .columns = {{"Id", 1}}}}));
  const JetApi& api = EseJetApi();
  JetDbWrapper wrapper(folder.PathOf("store.edb"), api);
  ASSERT_EQ(wrapper.Status, kOk);
  const auto* const unreadable = reinterpret_cast<const char*>(uintptr_t{16});
  jet::TableId table = 0;
  {
    const DriveThatGoesAway drive;
    EXPECT_EQ(api.JetOpenTable(wrapper.Session.Get().id, wrapper.Database.Get().id, unreadable,
                               nullptr, 0, jet::kTableReadOnly, &table),
              jet::kDiskIo);
  }
  // A lock that stayed held would stop the other thread for good.
  JetColumns columns;
  std::thread([&] { EXPECT_EQ(wrapper.GetTableColumns(L"T", &columns), kOk); }).join();
  EXPECT_EQ(columns.size(), 1U);
}

}  // namespace
}  // namespace postmarker
