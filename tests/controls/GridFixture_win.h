// Grids on a window of their own, and the ways in which a person uses them.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "controls/CGridCtrl_win.h"
#include "ui/CWinApp.h"

namespace postmarker::test {

// The parent of a grid: passes on what the grid draws and keeps what it says.
class GridParent : public CWnd {
 public:
  // The grid whose rows this window is asked to draw.
  CGridCtrl* grid = nullptr;

  std::vector<UINT> itemChanges;  // LVIS_... bits that came or went, one for each notification
  std::vector<WPARAM> keyUps;
  int activities = 0;  // messages 0x65C
  int drawn = 0;       // rows

 protected:
  [[nodiscard]] const MessageTable* Messages() const override { return &kMessages; }
  static const MessageTable kMessages;
  static const MessageEntry kEntries[];

 private:
  LRESULT HandleDraw(const MessageArgs& args);
  LRESULT HandleMeasure(const MessageArgs& args);
  LRESULT HandleNotify(const MessageArgs& args);
  LRESULT HandleKeyUp(const MessageArgs& args);
  LRESULT HandleActivity(const MessageArgs& args);
};

class GridFixture : public testing::Test {
 protected:
  GridFixture();
  ~GridFixture() override;

  // Makes a list view in report mode on the parent and gives it to the grid.
  void Show(CGridCtrl* grid, DWORD style = LVS_SHOWSELALWAYS, SIZE size = {420, 200});

  // Delivers the messages that wait.
  static void Pump();
  // Delivers messages until the condition holds; false if it does not in time.
  static bool PumpUntil(const std::function<bool()>& condition);

  // Keys as the keyboard sends them, each with its character, to the window that has the focus.
  static void PressKey(WORD key);
  static void PressWith(WORD modifier, WORD key);
  static void Type(const std::wstring& text);

  // Presses and releases the left button in the middle of a cell.
  static void Click(const CGridCtrl& grid, int row, int col, WPARAM keys = 0);

  // Replaces the text of an editor.
  static void SetEditText(HWND editor, const std::wstring& text);

  [[nodiscard]] static bool HasFocus(HWND window) { return ::GetFocus() == window; }

  ModuleStateGuard m_guard;
  GridParent m_parent;
  HWND m_other = nullptr;  // another control beside the grid
};

}  // namespace postmarker::test
