// A label in a dialog of its own, and the ways in which a person uses it.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "controls/CXHTMLStatic_win.h"
#include "support/ControlPicture_win.h"
#include "support/RecordingLinkShell.h"
#include "ui/CWinApp.h"

namespace postmarker::test {

// The window of a dialog with a label: keeps what it is sent.
class LabelParent : public CWnd {
 public:
  static constexpr UINT kCommand = WM_APP + 7;

  std::vector<std::pair<WPARAM, LPARAM>> drags;     // WM_NCLBUTTONDOWN
  std::vector<std::pair<WPARAM, LPARAM>> commands;  // kCommand
  int pressedButtons = 0;                           // WM_COMMAND of the default button
  int shortcuts = 0;  // WM_NEXTDLGCTL, by which the keyboard's loop moves the focus for a shortcut

 protected:
  [[nodiscard]] const MessageTable* Messages() const override { return &kMessages; }
  static const MessageTable kMessages;
  static const MessageEntry kEntries[];

 private:
  LRESULT HandleDrag(const MessageArgs& args);
  LRESULT HandleAppCommand(const MessageArgs& args);
  LRESULT HandleButton(const MessageArgs& args);
  LRESULT HandleNextControl(const MessageArgs& args);
};

// What a label looks like.
class LabelPicture : public ControlPicture {
 public:
  using ControlPicture::ControlPicture;

  // Does any pixel of the rectangle have this color?
  [[nodiscard]] bool Has(const LabelRect& rect, COLORREF color) const;
};

// In the dialog there are a button before the label and one after it.
class LabelFixture : public testing::Test {
 protected:
  LabelFixture();
  ~LabelFixture() override;

  // Makes the label with a text, 300 by 120 pixels large, at 10, 40. `parent` is the dialog unless
  // told.
  void Show(const std::wstring& text, DWORD style = SS_LEFT, HWND parent = nullptr);

  static void Pump();
  // Delivers a key press to the window with the focus, as the dialog's loop does.
  void PressKey(WORD key, LPARAM flags = 1);
  void PressShiftTab();

  static LPARAM At(const LabelRect& rect);
  void Move(LPARAM point) { m_label.Send(WM_MOUSEMOVE, 0, point); }
  void Press(LPARAM point) { m_label.Send(WM_LBUTTONDOWN, MK_LBUTTON, point); }
  void Release(LPARAM point) { m_label.Send(WM_LBUTTONUP, 0, point); }
  void Click(LPARAM point) {
    Press(point);
    Release(point);
  }
  // In the middle of the rectangle of this number.
  LPARAM Place(size_t number) { return At(m_label.LinkPlaces().at(number).place); }
  static constexpr LPARAM kNowhere = MAKELPARAM(295, 115);

  ModuleStateGuard m_guard;
  LabelParent m_parent;
  HWND m_before = nullptr;
  HWND m_after = nullptr;
  RecordingLinkShell m_shell;
  CXHTMLStatic m_label{&m_shell};
};

}  // namespace postmarker::test
