// The tiles of the client page, as a person or a program for the blind meets them.
#pragma once

#include <windows.h>

#include <commctrl.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "support/PersonInput_win.h"
#include "support/WizardSession_win.h"

namespace postmarker::test {

inline constexpr int kClientGrid = 13032;

// What the cells of the tiles hold, row by row.
inline std::vector<std::wstring> TileTexts(const WizardSession& session) {
  const HWND grid = session.Control(kClientGrid);
  const auto header = reinterpret_cast<HWND>(::SendMessageW(grid, LVM_GETHEADER, 0, 0));
  const auto columns = static_cast<int>(::SendMessageW(header, HDM_GETITEMCOUNT, 0, 0));
  const LRESULT rows = ::SendMessageW(grid, LVM_GETITEMCOUNT, 0, 0);
  std::vector<std::wstring> texts;
  for (LRESULT row = 0; row < rows; ++row) {
    for (int column = 0; column < columns; ++column) {
      const std::wstring text = WizardSession::CellText(grid, row, column);
      if (!text.empty()) {
        texts.push_back(text);
      }
    }
  }
  return texts;
}

// The middle of the tile whose cell holds this text, in the grid's client area.
inline POINT TilePlace(const WizardSession& session, const std::wstring& text) {
  const HWND grid = session.Control(kClientGrid);
  const auto header = reinterpret_cast<HWND>(::SendMessageW(grid, LVM_GETHEADER, 0, 0));
  const auto columns = static_cast<int>(::SendMessageW(header, HDM_GETITEMCOUNT, 0, 0));
  const LRESULT rows = ::SendMessageW(grid, LVM_GETITEMCOUNT, 0, 0);
  for (LRESULT row = 0; row < rows; ++row) {
    for (int column = 0; column < columns; ++column) {
      if (WizardSession::CellText(grid, row, column) != text) {
        continue;
      }
      RECT rect = {};
      rect.left = LVIR_BOUNDS;
      ::SendMessageW(grid, LVM_GETITEMRECT, static_cast<WPARAM>(row),
                     reinterpret_cast<LPARAM>(&rect));
      LONG left = rect.left;
      for (int before = 0; before < column; ++before) {
        left += static_cast<LONG>(
            ::SendMessageW(grid, LVM_GETCOLUMNWIDTH, static_cast<WPARAM>(before), 0));
      }
      const auto width = static_cast<LONG>(
          ::SendMessageW(grid, LVM_GETCOLUMNWIDTH, static_cast<WPARAM>(column), 0));
      return {left + width / 2, (rect.top + rect.bottom) / 2};
    }
  }
  throw std::runtime_error("no such tile: " + NarrowUtf8(text));
}

// Clicks a tile, as the mouse's messages arrive.
inline void ClickTile(const WizardSession& session, const std::wstring& text) {
  const HWND grid = session.Control(kClientGrid);
  POINT point = TilePlace(session, text);
  const LPARAM place = MAKELPARAM(point.x, point.y);
  ::ClientToScreen(grid, &point);
  ::SetCursorPos(point.x, point.y);
  ::PostMessageW(grid, WM_LBUTTONDOWN, MK_LBUTTON, place);
  ::PostMessageW(grid, WM_LBUTTONUP, 0, place);
}

}  // namespace postmarker::test
