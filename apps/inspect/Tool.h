// The command line of the tool.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace postmarker::inspect {

// Takes a document with its line end, or a usage line.
using Print = std::function<void(std::string_view text)>;

// Runs the tool with the arguments behind the program's name, in UTF-8. Documents go to `print`,
// what is to be said about wrong usage to `complain`. Returns the exit code: 0 when a command ran,
// 2 for wrong usage.
int RunTool(const std::vector<std::string>& arguments, const Print& print, const Print& complain);

// The same with the program's standard output and standard error.
int RunTool(const std::vector<std::string>& arguments);

}  // namespace postmarker::inspect
