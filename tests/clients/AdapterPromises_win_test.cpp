// What every adapter promises, for each row of the table of clients. A new row joins by being one;
// if its client needs a stand-in, that goes into ClientEnvironments_win.cpp.
#include <windows.h>

#include <gmock/gmock.h>

#include <atomic>
#include <cstdio>
#include <functional>
#include <string>
#include <thread>

#include "clients/ClientEnvironments_win.h"
#include "clients/ClientTable.h"
#include "support/ComPtr_win.h"
#include "support/Handles_win.h"
#include "support/Text.h"

namespace postmarker::test {
namespace {

using testing::IsEmpty;

constexpr DWORD kPatience = 60'000;

// The threads on which the interface lets operations be called.
enum class Thread { kSheet, kWorker, kHarvest };

// All operations once, with what they gave.
struct Outcome {
  MailFolderList folders = {{L"there before", "0", "s", 1}};
  MailFolderRef created = {L"as before", "1", "s", 1};
  ResultCode creation = kOk;
  AddressSet collected = {L"there@before"};
  AddressSet harvested = {L"there@before"};
  ResultCode collection = kOk;
  ResultCode harvest = kOk;

  [[nodiscard]] size_t FoundFolders() const { return folders.size() - 1; }
};

// Runs `work` on such a thread. Work that never ends ends the program, with a word.
void RunOn(Thread kind, const char* what, const std::function<void()>& work) {
  const KernelHandle done(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
  std::thread thread([&] {
    if (kind == Thread::kHarvest) {
      work();
    } else {
      const ComApartment apartment;
      work();
    }
    ::SetEvent(done.Get());
  });
  if (::WaitForSingleObject(done.Get(), kPatience) != WAIT_OBJECT_0) {
    std::fprintf(stderr, "FAILED: %s did not end within a minute\n", what);
    ::TerminateProcess(::GetCurrentProcess(), 1);
  }
  thread.join();
}

class AdapterPromises : public testing::TestWithParam<const ClientRow*> {
 protected:
  [[nodiscard]] static const MailClientAdapter& Adapter() { return *GetParam()->adapter; }

  // A session for one operation of the calling thread.
  ClientSession Session() {
    return {m_environment->MakeApplication(), [this] { return Answer(); }};
  }

  void List(Outcome* outcome) { Adapter().ListFolders(Session(), &outcome->folders); }
  void Create(Outcome* outcome) {
    outcome->creation =
        Adapter().CreateFolder(Session(), L"New", outcome->folders.back(), &outcome->created);
  }
  void Collect(Outcome* outcome) {
    outcome->collection =
        Adapter().CollectSentAddresses(Session(), &m_callbacks, &outcome->collected);
  }
  void Harvest(Outcome* outcome) {
    // Nobody hands the harvest anything.
    ClientSession session = Session();
    session.outlookApplication.reset();
    outcome->harvest = Adapter().HarvestAddresses(session, &outcome->harvested);
  }

  Outcome RunAll(Thread kind) {
    Outcome outcome;
    RunOn(kind, "an operation", [&] {
      List(&outcome);
      (void)Adapter().FindDefaultFolder(Session(), outcome.folders);
      Create(&outcome);
      Collect(&outcome);
      Harvest(&outcome);
      std::string storeId;
      (void)Adapter().ReadStoreId(&storeId);
      Adapter().SetMoveMails(true);
    });
    ExpectWhatWasThereStays(outcome);
    return outcome;
  }

  static void ExpectWhatWasThereStays(const Outcome& outcome) {
    EXPECT_EQ(outcome.folders.front().name, L"there before");
    EXPECT_TRUE(outcome.collected.contains(L"there@before"));
    EXPECT_TRUE(outcome.harvested.contains(L"there@before"));
    if (Failed(outcome.creation)) {
      EXPECT_EQ(outcome.created.name, L"as before") << "a failure changed the out parameter";
    }
  }

  static int32_t POSTMARKER_CALL IsCancelled(void* handle) {
    return static_cast<AdapterPromises*>(handle)->Answer() ? 1 : 0;
  }
  bool Answer() {
    ++m_questions;
    return m_isStopped;
  }

  void StopFromNowOn() {
    m_isStopped = true;
    m_questions = 0;
  }

  std::unique_ptr<ClientEnvironment> m_environment = MakeClientEnvironment(GetParam()->displayName);
  std::atomic<bool> m_isStopped = false;
  std::atomic<int> m_questions = 0;
  ProgressCallbacks m_callbacks = [this] {
    ProgressCallbacks callbacks;
    callbacks.handle = this;
    callbacks.isCancelled = &IsCancelled;
    return callbacks;
  }();
};

// Counted in questions and not in time, so that a busy machine changes nothing.
TEST_P(AdapterPromises, StoppedOperationEndsAtOnceAndIsNoFailure) {
  constexpr int kFewQuestions = 10;
  m_environment->Fill();
  StopFromNowOn();
  Outcome outcome;
  const std::pair<const char*, std::function<void()>> operations[] = {
      {"listing", [&] { List(&outcome); }},
      {"collecting", [&] { Collect(&outcome); }},
      {"harvesting", [&] { Harvest(&outcome); }}};
  for (const auto& [what, operation] : operations) {
    m_questions = 0;
    RunOn(Thread::kWorker, what, operation);
    EXPECT_LE(m_questions, kFewQuestions) << what << " went on after a yes";
    EXPECT_TRUE(m_questions > 0 || !m_environment->HasStandIn()) << what << " never asked";
  }
  ExpectWhatWasThereStays(outcome);
  EXPECT_EQ(outcome.FoundFolders(), 0U);
  EXPECT_EQ(outcome.collection, kOk);
  EXPECT_EQ(outcome.harvest, kOk);
}

TEST_P(AdapterPromises, EachOperationEndsWhenThePeerGoesAwayAtAnyStep) {
  for (const std::string& step : m_environment->Steps()) {
    SCOPED_TRACE(step);
    m_environment->GoAwayAt(step);
    (void)RunAll(Thread::kWorker);
  }
  // Afterwards a peer that is back is found.
  m_environment->Fill();
  EXPECT_EQ(RunAll(Thread::kWorker).FoundFolders() > 0, m_environment->HasStandIn());
}

TEST_P(AdapterPromises, EmptyStoreHasNoAddressesAndNoDefaultFolder) {
  m_environment->Empty();
  const Outcome outcome = RunAll(Thread::kWorker);
  EXPECT_EQ(outcome.collected.size(), 1U);
  EXPECT_EQ(outcome.harvested.size(), 1U);
  EXPECT_EQ(Adapter().FindDefaultFolder(Session(), {}), MailFolderRef());
}

TEST_P(AdapterPromises, StoreThatCanNotBeReadAddsNothing) {
  m_environment->Damage();
  const Outcome outcome = RunAll(Thread::kWorker);
  EXPECT_EQ(outcome.FoundFolders(), 0U);
  EXPECT_EQ(outcome.collected.size(), 1U);
  EXPECT_EQ(outcome.harvested.size(), 1U);
}

TEST_P(AdapterPromises, EveryThreadOfTheInterfaceGetsTheSame) {
  m_environment->Fill();
  const Outcome first = RunAll(Thread::kSheet);
  EXPECT_EQ(first.collected.size() > 1, m_environment->HasStandIn());
  EXPECT_EQ(first.harvested, first.collected);
  for (const Thread kind : {Thread::kWorker, Thread::kHarvest}) {
    m_environment->Fill();
    const Outcome outcome = RunAll(kind);
    EXPECT_EQ(outcome.collected, first.collected);
    EXPECT_EQ(outcome.harvested, first.harvested);
    EXPECT_EQ(outcome.folders, first.folders);
  }
}

std::vector<const ClientRow*> AllRows() {
  std::vector<const ClientRow*> rows;
  for (const ClientRow& row : AllClients()) {
    rows.push_back(&row);
  }
  return rows;
}

std::string NameOf(const testing::TestParamInfo<const ClientRow*>& info) {
  std::string name = NarrowUtf8(info.param->displayName);
  std::erase(name, ' ');
  return name;
}

INSTANTIATE_TEST_SUITE_P(All, AdapterPromises, testing::ValuesIn(AllRows()), &NameOf);

}  // namespace
}  // namespace postmarker::test
