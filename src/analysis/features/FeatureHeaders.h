// The headers from which features are made.
#pragma once

#include <optional>
#include <string_view>

namespace postmarker {

// `key` is a key of a header map.
bool IsSubjectHeader(std::string_view key);

// "from", "reply-to" or "return-path" for a header that names a sender.
std::optional<std::string_view> SenderLabel(std::string_view key);

}  // namespace postmarker
