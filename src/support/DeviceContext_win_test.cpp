#include "support/DeviceContext_win.h"

#include <gtest/gtest.h>

namespace postmarker {
namespace {

class DeviceContextTest : public testing::Test {
 protected:
  ~DeviceContextTest() override { ::DestroyWindow(m_window); }

  HWND m_window = ::CreateWindowExW(0, L"STATIC", L"window", WS_POPUP | WS_VISIBLE, 10, 10, 50, 50,
                                    nullptr, nullptr, nullptr, nullptr);
};

TEST_F(DeviceContextTest, WindowDcIsGivenBack) {
  HDC given = nullptr;
  {
    const WindowDc dc(m_window);
    given = dc.Get();
    EXPECT_EQ(::WindowFromDC(given), m_window);
  }
  EXPECT_EQ(::WindowFromDC(given), nullptr);
}

TEST_F(DeviceContextTest, MemoryDcIsDeletedAndLetsItsBitmapGo) {
  HDC dc = nullptr;
  HBITMAP picture = nullptr;
  {
    const MemoryDc memory(::CreateCompatibleDC(nullptr));
    const BitmapHandle bitmap(::CreateBitmap(1, 1, 1, 1, nullptr));
    const ObjectSelection selection(memory.Get(), bitmap.Get());
    dc = memory.Get();
    picture = bitmap.Get();
    EXPECT_NE(::GetObjectType(dc), 0U);
  }
  EXPECT_EQ(::GetObjectType(dc), 0U);
  EXPECT_EQ(::GetObjectType(picture), 0U);
}

TEST_F(DeviceContextTest, SelectionGivesTheFormerObjectBack) {
  const MemoryDc memory(::CreateCompatibleDC(nullptr));
  const HGDIOBJ former = ::GetCurrentObject(memory.Get(), OBJ_BRUSH);
  const BrushHandle brush(::CreateSolidBrush(RGB(1, 2, 3)));
  {
    const ObjectSelection selection(memory.Get(), brush.Get());
    EXPECT_EQ(::GetCurrentObject(memory.Get(), OBJ_BRUSH), brush.Get());
  }
  EXPECT_EQ(::GetCurrentObject(memory.Get(), OBJ_BRUSH), former);
}

TEST_F(DeviceContextTest, SelectionOfNothingChangesNothing) {
  const MemoryDc memory(::CreateCompatibleDC(nullptr));
  const HGDIOBJ former = ::GetCurrentObject(memory.Get(), OBJ_FONT);
  {
    const ObjectSelection selection(memory.Get(), nullptr);
    EXPECT_EQ(::GetCurrentObject(memory.Get(), OBJ_FONT), former);
  }
  EXPECT_EQ(::GetCurrentObject(memory.Get(), OBJ_FONT), former);
}

TEST_F(DeviceContextTest, SavedStateComesBack) {
  const MemoryDc memory(::CreateCompatibleDC(nullptr));
  ::SetTextColor(memory.Get(), RGB(1, 2, 3));
  {
    const SavedDcState saved(memory.Get());
    ::SetTextColor(memory.Get(), RGB(4, 5, 6));
  }
  EXPECT_EQ(::GetTextColor(memory.Get()), RGB(1, 2, 3));
}

HDC g_paintDc = nullptr;

LRESULT CALLBACK PaintingProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message != WM_PAINT) {
    return ::DefWindowProcW(window, message, wParam, lParam);
  }
  const PaintDc dc(window);
  g_paintDc = dc.Get();
  EXPECT_EQ(::WindowFromDC(g_paintDc), window);
  return 0;
}

TEST_F(DeviceContextTest, PaintDcValidatesTheWindowAndIsGivenBack) {
  ::SetWindowLongPtrW(m_window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&PaintingProc));
  ::InvalidateRect(m_window, nullptr, TRUE);
  ::UpdateWindow(m_window);
  ASSERT_NE(g_paintDc, nullptr);
  EXPECT_EQ(::WindowFromDC(g_paintDc), nullptr);
  EXPECT_FALSE(::GetUpdateRect(m_window, nullptr, FALSE));
}

}  // namespace
}  // namespace postmarker
