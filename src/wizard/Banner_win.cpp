#include "wizard/Banner_win.h"

#include "resource.h"
#include "support/DeviceContext_win.h"
#include "ui/CWinApp.h"

namespace postmarker {
namespace {

// A copy of a picture in another size.
BitmapHandle ScaleBitmap(HBITMAP picture, SIZE size) {
  BITMAP info = {};
  ::GetObjectW(picture, sizeof(info), &info);
  const WindowDc screen(nullptr);
  BitmapHandle scaled(::CreateCompatibleBitmap(screen.Get(), size.cx, size.cy));
  const MemoryDc from(::CreateCompatibleDC(screen.Get()));
  const MemoryDc to(::CreateCompatibleDC(screen.Get()));
  const ObjectSelection fromSelection(from.Get(), picture);
  const ObjectSelection toSelection(to.Get(), scaled.Get());
  ::SetStretchBltMode(to.Get(), HALFTONE);
  ::SetBrushOrgEx(to.Get(), 0, 0, nullptr);
  ::StretchBlt(to.Get(), 0, 0, size.cx, size.cy, from.Get(), 0, 0, info.bmWidth, info.bmHeight,
               SRCCOPY);
  return scaled;
}

}  // namespace

BitmapHandle LoadBanner(SIZE size) {
  const BitmapHandle picture(
      static_cast<HBITMAP>(::LoadImageW(AfxGetResourceHandle(), MAKEINTRESOURCEW(IDB_BANNER),
                                        IMAGE_BITMAP, 0, 0, LR_CREATEDIBSECTION)));
  if (!picture || size.cx <= 0 || size.cy <= 0) {
    return {};
  }
  return ScaleBitmap(picture.Get(), size);
}

void ShowBanner(HWND control, HBITMAP picture) {
  if (control != nullptr) {
    ::SendMessageW(control, STM_SETIMAGE, IMAGE_BITMAP, reinterpret_cast<LPARAM>(picture));
  }
}

}  // namespace postmarker
