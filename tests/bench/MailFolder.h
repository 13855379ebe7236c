// The messages that benchmarks read.
#pragma once

#include <string>
#include <vector>

namespace postmarker::bench {

// All files "*.eml" below $POSTMARKER_MAIL, in the order of their paths.
struct MailFolder {
  std::vector<std::string> paths;
  std::vector<std::string> messages;
  size_t bytes = 0;
};

// Read once. Empty where the variable is not set.
const MailFolder& Mail();

}  // namespace postmarker::bench
