// Other mail programs, for comparison.
#pragma once

#include <string>
#include <vector>

namespace postmarker::bench {

// Runs a program to its end with a file as standard input and its output thrown away. Returns the
// seconds of user time that it took, or a negative number where it could not be run or failed.
double RunProgram(const std::vector<std::string>& command, const std::string& inputPath);

}  // namespace postmarker::bench
