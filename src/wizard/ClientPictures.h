// The pictures on the client page.
#pragma once

#include <string_view>

namespace postmarker {

// The picture of a client's tile: a bitmap of the resource module, found by the client's display
// name, case ignored. 0 for a client that has none.
unsigned TilePictureOf(std::wstring_view displayName);

}  // namespace postmarker
