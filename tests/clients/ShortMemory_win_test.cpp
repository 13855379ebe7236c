// Want of memory where no caller can catch it: at the start of a thread, and in destructors.
#include <windows.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

#include "clients/ClientEnvironments_win.h"
#include "clients/ClientTable.h"
#include "clients/WhitelistPrefill_win.h"
#include "clients/thunderbird/ThunderbirdConnection_win.h"
#include "support/ThunderbirdInstallation_win.h"

namespace {

// Allocations of this thread that still succeed; below 0 all do.
thread_local int t_left = -1;

void* Allocate(size_t size) {
  if (t_left == 0) {
    throw std::bad_alloc();
  }
  if (t_left > 0) {
    --t_left;
  }
  void* const memory = std::malloc(size == 0 ? 1 : size);
  if (memory == nullptr) {
    throw std::bad_alloc();
  }
  return memory;
}

}  // namespace

void* operator new(size_t size) {
  return Allocate(size);
}
void* operator new[](size_t size) {
  return Allocate(size);
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete[](void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, size_t /*size*/) noexcept {
  std::free(memory);
}
void operator delete[](void* memory, size_t /*size*/) noexcept {
  std::free(memory);
}

namespace postmarker::test {
namespace {

// Lets the allocations of this thread fail after some have succeeded, while it lives.
class ShortMemory {
 public:
  explicit ShortMemory(int succeeding) { t_left = succeeding; }
  ShortMemory(const ShortMemory&) = delete;
  ShortMemory& operator=(const ShortMemory&) = delete;
  ~ShortMemory() { t_left = -1; }
};

// Any exception would end the process, as the thread that runs this may not throw.
void HarvestWithoutThrowing() noexcept {
  HarvestAllClients();
}

TEST(ShortMemoryTest, HarvestThatCanNotEvenBeginEndsNothing) {
  const auto machine = MakeClientEnvironment(L"");
  for (const int succeeding : {0, 1, 2, 3, 5, 8, 13, 50}) {
    const ShortMemory memory(succeeding);
    HarvestWithoutThrowing();
  }
}

TEST(ShortMemoryTest, ReleasingAClientThatWasStartedEndsNothing) {
  ThunderbirdInstallation client;
  client.Register();
  client.SetMailbox("{}");
  ThunderbirdConnection connection;
  ASSERT_EQ(ConnectOrLaunch(&connection, kThunderbirdStartMilliseconds), kOk);
  ASSERT_EQ(connection.alreadyRunning, 0);
  const ShortMemory memory(0);
  EXPECT_EQ(ReleaseThunderbird(&connection), kOk);
}

}  // namespace
}  // namespace postmarker::test
