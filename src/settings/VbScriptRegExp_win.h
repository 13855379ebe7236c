// The platform's regular expression class.
#pragma once

#include <memory>

#include "settings/AddressValidator.h"

namespace postmarker {

// A VBScript.RegExp object that ignores case; null where the platform has none, or the calling
// thread has not joined an apartment. The engine belongs to that thread's apartment and must be
// gone before the thread leaves it.
std::unique_ptr<RegExpEngine> CreateVbScriptRegExp();

}  // namespace postmarker
