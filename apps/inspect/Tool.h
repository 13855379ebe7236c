// The command line of the tool.
#pragma once

#include <string>
#include <vector>

#include "JsonWriter.h"

namespace postmarker::inspect {

// Runs the tool with the arguments after the program's name, in UTF-8. Documents, each with its
// line end, go to `print` piece by piece, what is to be said about wrong usage to `complain`.
// Returns the exit code: 0 when a command ran, 2 for wrong usage.
int RunTool(const std::vector<std::string>& arguments, const Print& print, const Print& complain);

// The same with the program's standard output and standard error.
int RunTool(const std::vector<std::string>& arguments);

}  // namespace postmarker::inspect
