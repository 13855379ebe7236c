// The training pages as a person uses them.
#pragma once

#include <windows.h>

#include <string>

#include "support/PersonInput_win.h"
#include "support/WizardSession_win.h"

namespace postmarker::test {

// The pages, by the note that each of them shows.
enum class TrainingPage { kFirst = 10037, kSecond = 10038 };

inline bool IsOnTraining(const WizardSession& session, TrainingPage page) {
  return session.IsOn(Page::kTraining) &&
         ::IsWindowVisible(session.Control(static_cast<int>(page)));
}

inline void WaitForTraining(const WizardSession& session, TrainingPage page) {
  WizardSession::Require([&] { return IsOnTraining(session, page); },
                         "the training page did not come");
}

// From a filled folder tree over this folder and the addresses, as they were found, to the first
// training page.
inline void GoToTraining(const WizardSession& session, const std::wstring& folder) {
  session.ClickItem(folder);
  session.ClickButton(kNextButton);
  session.WaitForAddresses();
  session.ClickButton(kNextButton);
  WaitForTraining(session, TrainingPage::kFirst);
}

inline void GoToSecondTraining(const WizardSession& session) {
  session.ClickButton(kNextButton);
  WaitForTraining(session, TrainingPage::kSecond);
}

// Clicks an item's check box with the mouse, and waits for what this changes.
inline void ClickBox(const WizardSession& session, const std::wstring& text,
                     bool rightButton = false) {
  const auto before = session.TreeLines();
  ClickAt(session.BoxPlace(text), rightButton);
  WizardSession::Require([&] { return session.TreeLines() != before; },
                         "the click changed no check box");
}

}  // namespace postmarker::test
