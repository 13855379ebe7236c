// Hook first, store second: which answers of a module keep the client's store closed.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ipc/HookConnection_win.h"
#include "support/HookModuleFixture_win.h"

namespace postmarker {
namespace {

using nlohmann::json;
using test::kInbox;
using test::kShortHookTime;
using test::Limits;
using test::UnreachableModule;
using testing::IsEmpty;

class HookFirstTest : public test::HookModuleFixture {
 protected:
  ResultCode Run(bool useHook, const std::function<HookOutcome(HookConnection&)>& ask,
                 const StopQuery& stop = {}) {
    const auto store = [this] {
      ++m_stores;
      return ResultCode{7};
    };
    return HookFirst(useHook, m_module, ask, store, Limits(kShortHookTime), stop);
  }
  ResultCode RunListing(bool useHook = true) {
    return Run(useHook, [this](HookConnection& hook) {
      ++m_asks;
      return OutcomeOf(hook.ListFolders(&m_text, &m_folders));
    });
  }

  int m_asks = 0;
  int m_stores = 0;
};

TEST_F(HookFirstTest, AnswerOfTheModuleKeepsTheStoreClosed) {
  StartModule();
  EXPECT_EQ(RunListing(), 0);
  EXPECT_EQ(m_folders.size(), 2U);
  EXPECT_EQ(m_stores, 0);
}

TEST_F(HookFirstTest, EmptyAnswerKeepsTheStoreClosedAsWell) {
  StartModule({{"folders", json::array()}});
  EXPECT_EQ(RunListing(), 0);
  EXPECT_THAT(m_folders, IsEmpty());
  EXPECT_EQ(m_stores, 0);
}

TEST_F(HookFirstTest, WithoutTheModuleTheStoreIsAsked) {
  m_module = L"nobody.dll";
  EXPECT_EQ(RunListing(), 7);
  EXPECT_EQ(m_asks, 1);
  EXPECT_EQ(m_stores, 1);
}

TEST_F(HookFirstTest, AnswerThatTheCallerTurnsDownLeadsToTheStore) {
  StartModule();
  EXPECT_EQ(Run(true, [](HookConnection&) { return HookOutcome::kAskStore; }), 7);
  EXPECT_EQ(m_stores, 1);
}

TEST_F(HookFirstTest, AnswerThatIsAFailureEndsTheOperationWithoutTheStore) {
  StartModule();
  const auto create = [this](HookConnection& hook) {
    if (Failed(hook.MakeFolder(L"x", kInbox, &m_record))) {
      return HookOutcome::kAskStore;
    }
    return m_record == MailFolderRef() ? HookOutcome::kFailed : HookOutcome::kDone;
  };
  EXPECT_EQ(Run(true, create), kOk);
  StartFaultyModule({{"do", "text"}, {"command", 5}, {"message", 0}, {"value", ""}});
  EXPECT_EQ(Run(true, create), kFail);
  EXPECT_EQ(m_stores, 0);
  m_module = L"nobody.dll";
  EXPECT_EQ(Run(true, create), 7);
  EXPECT_EQ(m_stores, 1);
}

TEST_F(HookFirstTest, ModuleIsNotAskedOnDemand) {
  StartModule();
  EXPECT_EQ(RunListing(false), 7);
  EXPECT_EQ(m_asks, 0);
  EXPECT_THAT(m_folders, IsEmpty());
}

TEST_F(HookFirstTest, ModuleThatCannotBeReachedKeepsTheStoreClosed) {
  const UnreachableModule module;
  m_module = module.Name();
  EXPECT_EQ(RunListing(), 0);
  EXPECT_EQ(m_stores, 0);
}

TEST_F(HookFirstTest, AskingThatIsStoppedKeepsTheStoreClosed) {
  StartModule();
  const auto list = [this](HookConnection& hook) {
    return OutcomeOf(hook.ListFolders(&m_text, &m_folders));
  };
  EXPECT_EQ(Run(true, list, [] { return true; }), 0);
  EXPECT_EQ(m_stores, 0);
  EXPECT_THAT(m_folders, IsEmpty());
}

}  // namespace
}  // namespace postmarker
