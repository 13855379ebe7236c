// The wizard's record as text, in UTF-8.
#pragma once

#include <cstdint>
#include <string>

#include "postmarker/WizardRequest.h"

namespace postmarker {

// All fields that carry an answer, as an indented JSON document with the result code in front, and
// a line end.
std::string RecordAsJson(int32_t result, const WizardRequest& request);

// The same for a person to read, a line a field, and a line for each folder of the training pages.
std::string RecordAsText(int32_t result, const WizardRequest& request);

}  // namespace postmarker
