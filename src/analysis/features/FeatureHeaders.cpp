#include "analysis/features/FeatureHeaders.h"

#include <algorithm>
#include <array>

#include "support/Bytes.h"

namespace postmarker {
namespace {

// Deliberate: what follows in the header's name does not matter, so that all of a sender's headers
// count, repeated ones too.
constexpr std::array<std::string_view, 3> kSenderLabels = {"from", "reply-to", "return-path"};

}  // namespace

bool IsSubjectHeader(std::string_view key) {
  return EqualNoCase(key, "subject");
}

std::optional<std::string_view> SenderLabel(std::string_view key) {
  const auto* const label =
      std::find_if(kSenderLabels.begin(), kSenderLabels.end(),
                   [&](std::string_view text) { return key.starts_with(text); });
  return label == kSenderLabels.end() ? std::nullopt : std::optional(*label);
}

}  // namespace postmarker
