// The program for systems without named pipes: --install and --remove, and for Thunderbird the
// Windows program beside it, through Wine.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "Task.h"
#include "ThunderbirdSetup_posix.h"

int main(int argc, char** argv) {
  using namespace postmarker::install;
  const std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
  const Task task = ParseTask(arguments);
  if (task.kind == TaskKind::kUnknown) {
    std::fputs(kUsage, stderr);
    return kMisused;
  }
  std::error_code failure;
  const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", failure);
  if (task.kind == TaskKind::kServe) {
    Become(program, arguments);
    std::perror("postmarker-thunderbird: wine");
    return kFailed;
  }
  const char* const home = std::getenv("HOME");
  if (home == nullptr || home[0] != '/') {
    std::fputs("postmarker-thunderbird: HOME names no folder\n", stderr);
    return kFailed;
  }
  return RunSetup(task, home, program, [](const std::string& sentence) {
    std::fprintf(stderr, "postmarker-thunderbird: %s\n", sentence.c_str());
  });
}
