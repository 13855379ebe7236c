// The run at Finish: everything that the wizard changes on the machine, in one fixed order.
#pragma once

#include <string>
#include <vector>

#include "postmarker/WizardRequest.h"

namespace postmarker {

struct ClientRow;

// The steps in their order.
enum class FinishStep {
  kLastConfigured,  // the client that was set up last
  kActionPlugin,    // the client that the next run begins with
  kRecommendation,  // the advice to set up the filter is taken back
  kSettings,        // the client's record of settings
  kWhitelist,       // the addresses that the user kept
  kStoreId,         // the store's id as it is now, for clients with local folder ids
  kSpamRule,        // the rule of the suite's module inside the client
  kNotice,          // that a client with local folder ids must be started again
  kMoveSwitch,      // the client is told whether to move spam
};

enum class FinishOutcome { kDone, kFailed, kNotNeeded };

struct FinishRecord {
  FinishStep step;
  FinishOutcome outcome;
};

// One run over a request, the row of its client, and the client's settings. For the sheet's thread,
// which it blocks: the notice waits for the user.
class FinishRun {
 public:
  // All that is given must outlive the object. `caption` is that of the notice.
  FinishRun(const WizardRequest& request, const ClientRow& client, std::wstring settingsName,
            std::wstring caption);

  // Runs every step; none is stopped by another's failure. Returns what became of each.
  std::vector<FinishRecord> Run();

 private:
  struct Step;
  static const Step kSteps[];

  FinishOutcome SaveLastConfigured();
  FinishOutcome SaveActionPlugin();
  FinishOutcome ClearRecommendation();
  FinishOutcome SaveSettings();
  FinishOutcome WriteWhitelist();
  FinishOutcome RefreshStoreId();
  FinishOutcome AddRule();
  FinishOutcome ShowNotice();
  FinishOutcome TellMoveSwitch();

  const WizardRequest& m_request;
  const ClientRow& m_client;
  std::wstring m_settingsName;
  std::wstring m_caption;
  bool m_isChanged = false;  // the move switch or the folder, against what was saved before
};

}  // namespace postmarker
