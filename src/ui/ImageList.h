// The owner of an image list.
#pragma once

#include <windows.h>

#include <commctrl.h>

#include "support/Handles_win.h"

namespace postmarker {

namespace handle_close {
inline void ImageList(HIMAGELIST list) noexcept {
  ::ImageList_Destroy(list);  // owner
}
}  // namespace handle_close

using ImageListHandle = UniqueHandle<NullableHandleTraits<HIMAGELIST, handle_close::ImageList>>;

}  // namespace postmarker
