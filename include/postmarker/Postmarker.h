// What Postmarker.dll exports to a host. Link the import library, or load the module and take the
// functions by their undecorated names.
#pragma once

#include <cstdint>

#include "postmarker/ProgressCallbacks.h"
#include "postmarker/WizardRequest.h"

namespace postmarker {

// Results of ShowWizard.
inline constexpr int32_t kWizardFinished = 12325;  // ID_WIZFINISH
inline constexpr int32_t kWizardCancelled = 2;     // IDCANCEL
inline constexpr int32_t kWizardNoResources = -1;

}  // namespace postmarker

extern "C" {

// Runs the wizard modally and returns when it is closed.
//
// Thread: any that can pump messages and that is in a single-threaded COM apartment or in none. The
// owner window, if there is one, is disabled meanwhile. Several calls may follow each other; two at
// a time on two threads have a record of their own each.
//
// Results:
// - kWizardFinished, 12325: the person pressed Finish and the settings were written. Failures of
//   single writes are passed over in silence.
// - kWizardCancelled, 2: the person cancelled, `request` is null, `parentWindow` is not a window,
//   the owner was destroyed meanwhile, or memory ran out. No answer was written.
// - kWizardNoResources, -1: the system made no sheet, as a rule because the dialog templates are
//   missing: PostmarkerRes.dll could not be loaded.
//
// No exception leaves the function.
int32_t POSTMARKER_CALL ShowWizard(postmarker::WizardRequest* request);

// The type of ShowWizard, for GetProcAddress.
using PostmarkerShowWizard = int32_t(POSTMARKER_CALL*)(postmarker::WizardRequest* request);

}  // extern "C"
