// The bytes by which an index orders values.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "ese/Schema.h"

namespace postmarker::ese {

// How a column takes part in a key.
struct KeyRule {
  bool isDescending = false;
  bool hasNullsLast = false;
};

enum class KeyOutcome {
  kMade,
  kWrongSize,     // the value does not have the size of the column's type
  kUnknownOrder,  // texts in UTF-16: their order is that of a locale of the platform
};

// Appends the piece of a key that `value` gives in `column`; nullopt is null.
KeyOutcome AppendKeyPiece(const Column& column, KeyRule rule, std::optional<std::string_view> value,
                          std::string* key);

// The same for indexes of our own. UTF-16 texts are ordered by their lower-case units up to the
// first NUL, so equal texts have equal keys whatever their case.
KeyOutcome AppendOwnKeyPiece(const Column& column, KeyRule rule,
                             std::optional<std::string_view> value, std::string* key);

}  // namespace postmarker::ese
