// What a window shows on the screen.
#pragma once

#include <windows.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "support/DeviceContext_win.h"
#include "support/Handles_win.h"

namespace postmarker::test {

// How many pixels of a color, red in the highest of three bytes, the window shows.
inline size_t PixelsOf(HWND window, uint32_t color) {
  RECT client = {};
  ::GetClientRect(window, &client);
  BITMAPINFO info = {};
  info.bmiHeader = {
      sizeof(info.bmiHeader), client.right, client.bottom, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
  void* bits = nullptr;
  const WindowDc dc(window);
  const MemoryDc memory(::CreateCompatibleDC(dc.Get()));
  const BitmapHandle bitmap(::CreateDIBSection(dc.Get(), &info, DIB_RGB_COLORS, &bits, nullptr, 0));
  const ObjectSelection selection(memory.Get(), bitmap.Get());
  ::BitBlt(memory.Get(), 0, 0, client.right, client.bottom, dc.Get(), 0, 0, SRCCOPY);
  ::GdiFlush();
  const auto* const pixels = static_cast<const uint32_t*>(bits);
  const auto size = static_cast<ptrdiff_t>(client.right) * client.bottom;
  const auto found = std::count_if(pixels, pixels + size,
                                   [color](uint32_t pixel) { return (pixel & 0xFFFFFF) == color; });
  return static_cast<size_t>(found);
}

}  // namespace postmarker::test
