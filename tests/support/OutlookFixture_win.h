// Tests with the stand-in for Outlook in this process: nothing that it gave may be left at the end.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <vector>

#include "postmarker/ProgressCallbacks.h"
#include "support/ComPtr_win.h"
#include "support/OutlookInstallation_win.h"
#include "support/StopQuery.h"

namespace postmarker::test {

// Notes what is reported, and cancels at a step.
struct CountedProgress {
  std::vector<int> totals;
  int steps = 0;
  int cancelAtStep = -1;
  ProgressCallbacks callbacks;

  CountedProgress() {
    callbacks.handle = this;
    callbacks.setProgress = &Set;
    callbacks.increaseProgress = &Increase;
    callbacks.isCancelled = &IsCancelled;
  }

 private:
  static CountedProgress& Of(void* handle) { return *static_cast<CountedProgress*>(handle); }
  static void POSTMARKER_CALL Set(void* handle, const wchar_t* /*text*/, int32_t total) {
    Of(handle).totals.push_back(total);
  }
  static void POSTMARKER_CALL Increase(void* handle, int32_t count) { Of(handle).steps += count; }
  static int32_t POSTMARKER_CALL IsCancelled(void* handle) {
    return Of(handle).steps == Of(handle).cancelAtStep ? 1 : 0;
  }
};

class OutlookTest : public testing::Test {
 protected:
  explicit OutlookTest(OutlookClassServer server = OutlookClassServer::kNone) : m_outlook(server) {}

  void TearDown() override { ExpectNothingLeft(); }

  void ExpectNothingLeft() const {
    EXPECT_EQ(Peer().Live(), 0) << "Outlook's objects were not released";
    EXPECT_EQ(Peer().FalseReleases(), 0) << "what was not Outlook's was given back to it";
  }

  [[nodiscard]] peer::PeerControl& Peer() const { return m_outlook.Peer(); }

  // A stop query that says yes from its n-th question on.
  static StopQuery StopAtQuestion(int number) {
    return [number, asked = 0]() mutable { return ++asked >= number; };
  }

  OutlookInstallation m_outlook;
  ComApartment m_apartment;
};

}  // namespace postmarker::test
