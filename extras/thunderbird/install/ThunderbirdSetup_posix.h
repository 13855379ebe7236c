// Lets a Thunderbird of this system be served by the Windows program through Wine.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "Task.h"

namespace postmarker::install {

// Does --install or --remove; returns the exit code. A manifest below `home` names `program`, which
// is to run the Windows program beside it; that one does the rest, and says itself what people
// should know. Both are absolute.
int RunSetup(const Task& task, const std::filesystem::path& home,
             const std::filesystem::path& program,
             const std::function<void(const std::string&)>& say);

// Runs the Windows program beside `program` with these arguments, in place of this process. Returns
// only if that can't be done.
void Become(const std::filesystem::path& program, const std::vector<std::string>& arguments);

}  // namespace postmarker::install
