// The links of the finished progress window to the suite's web site.
#pragma once

#include <string>

namespace postmarker {

// The markup of a label (controls/LabelMarkup.h) that is one link: what can be read of it, and
// where it leads. The target is opened exactly as it is given here, whatever characters it holds.
std::wstring LinkMarkup(const std::wstring& target, const std::wstring& shown);

}  // namespace postmarker
