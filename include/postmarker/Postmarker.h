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
// owner window, if there is one, is disabled meanwhile; of a child window, its top-level window.
// Several calls may follow each other; two at a time on two threads have a record of their own
// each.
//
// Results:
// - kWizardFinished, 12325: the person pressed Finish and the settings were written. Failures of
//   single writes are passed over in silence.
// - kWizardCancelled, 2: the person canceled, `request` is null, `parentWindow` is not a window,
//   the owner was destroyed meanwhile, the thread was told to quit, or memory ran out. As a rule no
//   answer was written. What was done before stays done: the client that was chosen is the one that
//   the next run begins with, and a folder that was created exists. If it was memory that ran out,
//   or the owner that went, during or after Finish, the settings may have been written.
// - kWizardNoResources, -1: the system made no sheet, as a rule because the dialog templates are
//   missing: PostmarkerRes.dll could not be loaded.
//
// No exception leaves the function.
int32_t POSTMARKER_CALL ShowWizard(postmarker::WizardRequest* request);

// The type of ShowWizard, for GetProcAddress.
using PostmarkerShowWizard = int32_t(POSTMARKER_CALL*)(postmarker::WizardRequest* request);

// Collects the addresses that the user has written to, and the user's contacts, from every mail
// client that is found, and adds them to the list of allowed senders, without any window. Returns
// at once; a thread of the module does the work and keeps the module loaded meanwhile. Call it from
// any thread, but not from a DllMain. That it was called is noted in the registry as
// "WhitelistPrefilled"; whether to call it again is the host's decision. Nothing is reported: a
// client that can't be read, or crashes, adds no addresses, and the others' are added all the same.
// No exception leaves the function.
void POSTMARKER_CALL StartWhitelistPrefill();

// The type of StartWhitelistPrefill, for GetProcAddress.
using PostmarkerStartWhitelistPrefill = void(POSTMARKER_CALL*)();

}  // extern "C"
