// A sample job that reports to the progress service.
#pragma once

#include <windows.h>

#include <string>

namespace postmarker {

// Runs the job with a window of the module's, until it is done or the user stops it, and then until
// the user closes the window. What became of it, as a line; empty if the module lacks the service.
std::string RunProgressJob(HMODULE module);

}  // namespace postmarker
