#include "wizard/PrefillWorker_win.h"

#include <gmock/gmock.h>

#include "support/Bstr_win.h"
#include "wizard/WizardFixture_win.h"

namespace postmarker::test {
namespace {

using testing::ElementsAre;

// A queue that is full every other time.
std::vector<std::wstring> g_received;
int g_refusals = 0;
bool g_isFull = false;

BOOL WINAPI PostToFullQueue(HWND /*window*/, UINT message, WPARAM wParam, LPARAM /*lParam*/) {
  g_isFull = !g_isFull;
  if (g_isFull) {
    ++g_refusals;
    ::SetLastError(ERROR_NOT_ENOUGH_QUOTA);
    return FALSE;
  }
  if (message == kPrefillAddress) {
    const Bstr text(reinterpret_cast<BSTR>(wParam));
    g_received.emplace_back(text.Get());
  }
  if (message == kPrefillFinished) {
    g_received.emplace_back(L"finished");
  }
  return TRUE;
}

// Runs a worker that collects from this client, to its end.
void CollectFrom(const ScriptedClient& client) {
  g_received.clear();
  g_refusals = 0;
  g_isFull = false;
  const KernelHandle stop(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
  const std::atomic<bool> abandoned = false;
  std::atomic<int> unread = 0;
  auto job = std::make_unique<PrefillJob>();
  job->client = {&client, nullptr};
  job->stopEvent = stop.Get();
  job->abandoned = &abandoned;
  job->unreadAddresses = &unread;
  job->post = &PostToFullQueue;
  const KernelHandle thread = StartPrefillWorker(std::move(job));
  ASSERT_EQ(::WaitForSingleObject(thread.Get(), 5000), WAIT_OBJECT_0);
}

TEST(PrefillWorkerTest, FullQueueLosesNothing) {
  ScriptedClient client;
  client.addresses = {L"a@b.org", L"c@b.org", L"d@b.org"};
  CollectFrom(client);
  EXPECT_THAT(g_received, ElementsAre(L"a@b.org", L"c@b.org", L"d@b.org", L"finished"));
  EXPECT_EQ(g_refusals, 4);
}

TEST(PrefillWorkerTest, StoreThatGoesAwayEndsTheCollectingAndNothingElse) {
  ScriptedClient client;
  client.addresses = {L"a@b.org"};
  client.whileCollecting = [](const ProgressCallbacks* /*callbacks*/) { LoseDrive(); };
  CollectFrom(client);
  EXPECT_EQ(client.collections, 1);
  EXPECT_THAT(g_received, ElementsAre(L"finished"));
}

}  // namespace
}  // namespace postmarker::test
