#include "support/UniqueHandle.h"

#include <gtest/gtest.h>

#include <functional>
#include <type_traits>
#include <vector>

namespace postmarker {
namespace {

// Notes what is closed; -1 and 0 are both "none", as with file handles.
struct CountedTraits {
  using Type = int;
  static Type None() noexcept { return -1; }
  static bool IsOpen(Type handle) noexcept { return handle > 0; }
  static void Close(Type handle) noexcept {
    s_closed.push_back(handle);
    if (s_onClose) {
      s_onClose();
    }
  }
  static inline std::vector<int> s_closed;
  static inline std::function<void()> s_onClose;
};
using Counted = UniqueHandle<CountedTraits>;
using Numbers = std::vector<int>;

class UniqueHandleTest : public testing::Test {
 protected:
  UniqueHandleTest() {
    CountedTraits::s_closed.clear();
    CountedTraits::s_onClose = nullptr;
  }
  static const Numbers& Closed() { return CountedTraits::s_closed; }
};

static_assert(!std::is_copy_constructible_v<Counted> && !std::is_copy_assignable_v<Counted>);
static_assert(std::is_nothrow_move_constructible_v<Counted>);
static_assert(!std::is_convertible_v<int, Counted>, "taking ownership is always spelled out");

TEST_F(UniqueHandleTest, DefaultIsNoneAndClosesNothing) {
  {
    const Counted none;
    EXPECT_FALSE(none);
    EXPECT_EQ(none.Get(), -1);
  }
  EXPECT_TRUE(Closed().empty());
}

TEST_F(UniqueHandleTest, EveryInvalidValueCountsAsNone) {
  {
    const Counted minusOne(-1);
    const Counted zero(0);
    EXPECT_FALSE(minusOne);
    EXPECT_FALSE(zero);
  }
  EXPECT_TRUE(Closed().empty());
}

TEST_F(UniqueHandleTest, ClosesExactlyOnceAtTheEndOfItsScope) {
  {
    const Counted one(1);
    EXPECT_TRUE(one);
    EXPECT_EQ(one.Get(), 1);
    EXPECT_TRUE(Closed().empty());
  }
  EXPECT_EQ(Closed(), Numbers{1});
}

TEST_F(UniqueHandleTest, MovedFromHoldsNoneAndOnlyTheNewOwnerCloses) {
  {
    Counted first(1);
    const Counted second(std::move(first));
    // NOLINTNEXTLINE(bugprone-use-after-move): the state after a move is promised
    EXPECT_EQ(first.Get(), -1);
    EXPECT_EQ(second.Get(), 1);
  }
  EXPECT_EQ(Closed(), Numbers{1});
}

TEST_F(UniqueHandleTest, MoveAssignmentClosesWhatWasHeld) {
  {
    Counted first(1);
    Counted second(2);
    second = std::move(first);
    EXPECT_EQ(Closed(), Numbers{2});
    EXPECT_EQ(second.Get(), 1);
    // NOLINTNEXTLINE(bugprone-use-after-move): the state after a move is promised
    EXPECT_EQ(first.Get(), -1);
  }
  EXPECT_EQ(Closed(), (Numbers{2, 1}));
}

TEST_F(UniqueHandleTest, SelfMovedKeepsItsHandle) {
  {
    Counted one(1);
    Counted& same = one;
    one = std::move(same);
    EXPECT_EQ(one.Get(), 1);
    EXPECT_TRUE(Closed().empty());
  }
  EXPECT_EQ(Closed(), Numbers{1});
}

TEST_F(UniqueHandleTest, ReleasedHandleIsTheCallersToClose) {
  {
    Counted one(1);
    EXPECT_EQ(one.Release(), 1);
    EXPECT_FALSE(one);
  }
  EXPECT_TRUE(Closed().empty());
}

TEST_F(UniqueHandleTest, ResetClosesTheOldHandleAndTakesTheNewOne) {
  {
    Counted one(1);
    one.Reset(2);
    EXPECT_EQ(Closed(), Numbers{1});
    one.Reset();
    EXPECT_EQ(Closed(), (Numbers{1, 2}));
    one.Reset();
  }
  EXPECT_EQ(Closed(), (Numbers{1, 2}));
}

TEST_F(UniqueHandleTest, PutClosesWhatWasHeldBeforeItGivesItsAddress) {
  {
    Counted one(1);
    int* const place = one.Put();
    EXPECT_EQ(Closed(), Numbers{1});
    EXPECT_EQ(*place, -1);
    *place = 2;
    EXPECT_EQ(one.Get(), 2);
  }
  EXPECT_EQ(Closed(), (Numbers{1, 2}));
}

TEST_F(UniqueHandleTest, CloseThatComesBackFindsTheNewHandle) {
  Counted owner(1);
  int seen = 0;
  CountedTraits::s_onClose = [&owner, &seen] { seen = owner.Get(); };
  owner.Reset(2);
  EXPECT_EQ(seen, 2);
  CountedTraits::s_onClose = nullptr;
}

TEST(ScopeExit, RunsOnceAtTheEndOfTheScope) {
  int runs = 0;
  {
    const ScopeExit atEnd([&runs] { ++runs; });
    EXPECT_EQ(runs, 0);
  }
  EXPECT_EQ(runs, 1);
}

}  // namespace
}  // namespace postmarker
