// Keys and clicks as a person's devices send them: the system finds the window that gets them.
#pragma once

#include <windows.h>

#include <initializer_list>
#include <vector>

namespace postmarker::test {

// Presses and releases a key, with the keys of `modifiers` held down.
inline void PressKey(WORD key, std::initializer_list<WORD> modifiers = {}) {
  std::vector<INPUT> input;
  const auto add = [&input](WORD code, DWORD flags) {
    INPUT one = {};
    one.type = INPUT_KEYBOARD;
    one.ki.wVk = code;
    one.ki.dwFlags = flags;
    input.push_back(one);
  };
  for (const WORD modifier : modifiers) {
    add(modifier, 0);
  }
  add(key, 0);
  add(key, KEYEVENTF_KEYUP);
  for (const WORD modifier : modifiers) {
    add(modifier, KEYEVENTF_KEYUP);
  }
  ::SendInput(static_cast<UINT>(input.size()), input.data(), sizeof(INPUT));
}

// Moves the pointer to a point of the screen, and clicks there. In one piece: the system can still
// be busy with an earlier place of the pointer.
inline void ClickAt(POINT point, bool rightButton = false) {
  constexpr LONG kWhole = 65535;  // the screen's size in the units of such input
  INPUT input[3] = {};
  for (INPUT& one : input) {
    one.type = INPUT_MOUSE;
    one.mi.dx = ::MulDiv(point.x, kWhole, ::GetSystemMetrics(SM_CXSCREEN) - 1);
    one.mi.dy = ::MulDiv(point.y, kWhole, ::GetSystemMetrics(SM_CYSCREEN) - 1);
    one.mi.dwFlags = MOUSEEVENTF_MOVE | MOUSEEVENTF_ABSOLUTE;
  }
  input[1].mi.dwFlags |= rightButton ? MOUSEEVENTF_RIGHTDOWN : MOUSEEVENTF_LEFTDOWN;
  input[2].mi.dwFlags |= rightButton ? MOUSEEVENTF_RIGHTUP : MOUSEEVENTF_LEFTUP;
  ::SetCursorPos(point.x, point.y);
  ::SendInput(3, input, sizeof(INPUT));
}

}  // namespace postmarker::test
