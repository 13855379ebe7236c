// Which names lines of attachments may give.
#pragma once

#include <string_view>

namespace postmarker {

// Is this the name of a file directly in the folder that it is looked for in, on every system: no
// path, no drive, no stream, no device. `name` is in the code page.
bool IsAttachmentName(std::string_view name);

}  // namespace postmarker
