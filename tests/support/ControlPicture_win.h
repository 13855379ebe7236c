// The pixels of a control, as it draws itself.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <vector>

#include "support/DeviceContext_win.h"
#include "support/Handles_win.h"

namespace postmarker::test {

class ControlPicture {
 public:
  explicit ControlPicture(HWND control) {
    RECT client = {};
    ::GetClientRect(control, &client);
    // The rows from the top.
    m_header = {sizeof(m_header), client.right, -client.bottom, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    BITMAPINFO info = {};
    info.bmiHeader = m_header;
    void* bits = nullptr;
    const BitmapHandle bitmap(
        ::CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0));
    const MemoryDc memory(::CreateCompatibleDC(nullptr));
    const ObjectSelection selection(memory.Get(), bitmap.Get());
    ::SendMessageW(control, WM_PRINTCLIENT, reinterpret_cast<WPARAM>(memory.Get()), PRF_CLIENT);
    ::GdiFlush();
    const auto* const pixels = static_cast<const uint32_t*>(bits);
    m_pixels.assign(pixels, pixels + static_cast<ptrdiff_t>(client.right) * client.bottom);
  }

  [[nodiscard]] int Width() const { return m_header.biWidth; }
  [[nodiscard]] int Height() const { return -m_header.biHeight; }
  // Of the rows from the top, blue in the lowest byte.
  [[nodiscard]] const std::vector<uint32_t>& Pixels() const { return m_pixels; }

  // The color of a pixel, in the platform's order.
  [[nodiscard]] COLORREF At(int x, int y) const {
    const uint32_t rgb = m_pixels.at(static_cast<size_t>(y) * Width() + x);
    return RGB(rgb >> 16 & 0xFF, rgb >> 8 & 0xFF, rgb & 0xFF);
  }

  // Writes a bitmap file. False if that fails.
  [[nodiscard]] bool Write(const char* path) const {
    const auto size = static_cast<DWORD>(m_pixels.size() * sizeof(uint32_t));
    constexpr DWORD kHeaders = sizeof(BITMAPFILEHEADER) + sizeof(BITMAPINFOHEADER);
    const BITMAPFILEHEADER file = {0x4D42, kHeaders + size, 0, 0, kHeaders};  // "BM"
    std::ofstream out(path, std::ios::binary);
    out.write(reinterpret_cast<const char*>(&file), sizeof(file));
    out.write(reinterpret_cast<const char*>(&m_header), sizeof(m_header));
    out.write(reinterpret_cast<const char*>(m_pixels.data()), size);
    out.close();
    return out.good();
  }

 private:
  BITMAPINFOHEADER m_header = {};
  std::vector<uint32_t> m_pixels;
};

}  // namespace postmarker::test
