// The wizard on its page of found addresses, with a made-up client.
#pragma once

#include <windows.h>

#include <commctrl.h>

#include <atomic>
#include <memory>
#include <string>

#include "wizard/ClientGrid_win.h"
#include "wizard/WizardFixture_win.h"

namespace postmarker::test {

inline constexpr int kRunningText = 10033;
inline constexpr int kProgressBar = 10041;
inline constexpr int kStopButton = 10043;
inline constexpr int kGridLabel = 10030;
inline constexpr int kGrid = 10016;
inline constexpr int kAddButton = 13033;
inline constexpr int kRemoveButton = 13034;

// How often the made-up client asks whether to stop.
inline constexpr DWORD kPollMs = 30;

class PrefillFixture : public WizardFixture {
 protected:
  // From the start to the page, whose worker may still run.
  std::unique_ptr<WizardSession> StartAtPrefill() {
    auto session = StartAtFolders();
    session->ClickItem(L"Inbox");
    session->ClickButton(kNextButton);
    session->WaitForPage(Page::kPrefill);
    return session;
  }
  std::unique_ptr<WizardSession> StartAtAddresses(const AddressSet& addresses) {
    m_clients.client.addresses = addresses;
    auto session = StartAtPrefill();
    session->WaitForAddresses();
    return session;
  }

  // The client collects until it is told to stop, or until it is let go.
  void CollectUntilStopped() {
    m_clients.client.whileCollecting = [this](const ProgressCallbacks* callbacks) {
      m_collecting = true;
      while (callbacks->isCancelled(callbacks->handle) == 0 && !m_letGo) {
        ::Sleep(kPollMs);
      }
      m_collecting = false;
    };
  }

  void Finish(WizardSession& session) {
    session.ClickButton(kNextButton);
    session.WaitForPage(Page::kSettings);
    session.ClickButton(kFinishButton);
    session.Result();
  }

  static bool IsShown(const WizardSession& session, int control) {
    return ::IsWindowVisible(session.Control(control)) != FALSE;
  }
  static LRESULT Ask(const WizardSession& session, int control, UINT message, WPARAM wParam = 0,
                     LPARAM lParam = 0) {
    return ::SendMessageW(session.Control(control), message, wParam, lParam);
  }
  static void SelectRow(const WizardSession& session, int row, bool selected = true) {
    LVITEMW item = {};
    item.stateMask = LVIS_SELECTED;
    item.state = selected ? LVIS_SELECTED : 0;
    Ask(session, kGrid, LVM_SETITEMSTATE, static_cast<WPARAM>(row),
        reinterpret_cast<LPARAM>(&item));
  }
  // Gives a window of the sheet the focus, as the Tab key does.
  static void FocusWindow(const WizardSession& session, HWND window) {
    ::PostMessageW(session.CurrentPage(), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(window), TRUE);
    WizardSession::Require(
        [&] {
          GUITHREADINFO info = {};
          info.cbSize = sizeof(info);
          ::GetGUIThreadInfo(::GetWindowThreadProcessId(session.Sheet(), nullptr), &info);
          return info.hwndFocus == window;
        },
        "the control has no focus");
  }
  static void Focus(const WizardSession& session, int control) {
    FocusWindow(session, session.Control(control));
  }
  static bool IsEditOpen(const WizardSession& session) {
    return ::FindWindowExW(session.AddressGrid(), nullptr, L"Edit", nullptr) != nullptr;
  }
  static void WaitForEdit(const WizardSession& session) {
    WizardSession::Require([&] { return IsEditOpen(session); }, "no edit was opened");
  }
  static void Type(const WizardSession& session, const std::wstring& text) {
    const HWND edit = ::FindWindowExW(session.AddressGrid(), nullptr, L"Edit", nullptr);
    for (const wchar_t unit : text) {
      ::PostMessageW(edit, WM_CHAR, unit, 1);
    }
    WizardSession::Require([&] { return TextOf(edit) == text; }, "the text did not arrive");
  }

  std::atomic<bool> m_collecting = false;
  std::atomic<bool> m_letGo = false;
};

}  // namespace postmarker::test
