// The progress service of the staged module, driven as a host and a person do.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "postmarker/Progress.h"
#include "support/Handles_win.h"
#include "support/RegistrySandbox_win.h"

namespace postmarker::test {

// The controls of the window.
inline constexpr int kBody = 13008;
inline constexpr int kNote = 13009;
inline constexpr int kText = 10025;
inline constexpr int kBar = 10021;
inline constexpr int kStop = 13014;
inline constexpr int kClose = 13015;
inline constexpr int kFinishedText = 13017;
inline constexpr int kStoppedText = 13025;
inline constexpr int kHelp = 13018;
inline constexpr int kSupportLabel = 13020;
inline constexpr int kSupportLink = 13022;
inline constexpr int kSecondLabel = 13021;
inline constexpr int kSecondLink = 13023;

// A job with its window. The functions that wait throw when their patience ends.
class Job {
 public:
  // Opens the window and waits until it is shown.
  explicit Job(const PostmarkerProgressFunctions& functions);
  Job(const Job&) = delete;
  Job& operator=(const Job&) = delete;
  // Closes the window if it is still there.
  ~Job();

  [[nodiscard]] PostmarkerProgress* Handle() const { return m_handle; }
  [[nodiscard]] HWND Window() const { return m_window; }
  [[nodiscard]] HWND Control(int id) const { return ::GetDlgItem(m_window, id); }

  void Set(const char* text, int32_t total) const { m_functions.set(m_handle, text, total); }
  void Increase(int32_t steps) const { m_functions.increase(m_handle, steps); }
  void Complete() const { m_functions.complete(m_handle); }
  [[nodiscard]] bool IsCancelled() const { return m_functions.isCancelled(m_handle) != 0; }
  [[nodiscard]] bool IsFinished() const { return m_functions.isFinished(m_handle) != 0; }

  // Ends the job on a thread of its own, as the call may wait for the user.
  void StartDestroy(bool closeNow);
  [[nodiscard]] bool IsDestroyed() const { return m_isDestroyed; }
  void WaitForDestroy();

  [[nodiscard]] bool IsShown(int id) const { return ::IsWindowVisible(Control(id)) != FALSE; }
  [[nodiscard]] LRESULT Position() const;
  void WaitForPosition(LRESULT position) const;
  void Click(int id) const;
  void WaitForFace(bool finished) const;

  // The window's Close, as the person or another program asks for it.
  void PressWindowClose() const { ::PostMessageW(m_window, WM_CLOSE, 0, 0); }

  // The question before a stop: null if there is none now; once it is there.
  [[nodiscard]] HWND Question() const;
  HWND WaitForQuestion() const;

  // Clicks a button of a question and waits until it is gone.
  static void Answer(HWND question, int button);

  // Waits until the window has received what was posted before. Gives the bar another range.
  void Settle() const;

 private:
  const PostmarkerProgressFunctions& m_functions;
  PostmarkerProgress* m_handle;
  HWND m_window = nullptr;
  std::thread m_destroyer;
  std::atomic<bool> m_isDestroyed = false;
};

class ProgressFixture : public testing::Test {
 protected:
  ProgressFixture();

  RegistrySandbox m_registry{Redirect::kUserAndMachine};
  LibraryHandle m_library;
  PostmarkerProgressFunctions m_progress = {};
};

}  // namespace postmarker::test
