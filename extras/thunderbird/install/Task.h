// What the program is started for.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace postmarker::install {

enum class TaskKind {
  kServe,    // by Thunderbird, whose first argument is a path
  kInstall,  // --install [PROFILE]
  kRemove,   // --remove [PROFILE]
  kUnknown,
};

struct Task {
  TaskKind kind = TaskKind::kUnknown;
  std::optional<std::string> profile;
};

inline constexpr char kUsage[] =
    "usage: postmarker-thunderbird --install [PROFILE]\n"
    "       postmarker-thunderbird --remove [PROFILE]\n"
    "PROFILE is the folder of Thunderbird's profile; without it the default profile is used. Any\n"
    "other argument is Thunderbird's own.\n";

// Exit codes of a task.
inline constexpr int kDone = 0;
inline constexpr int kFailed = 1;  // nothing is changed
inline constexpr int kMisused = 2;

// `arguments` without the program's own name, in UTF-8.
Task ParseTask(const std::vector<std::string>& arguments);

}  // namespace postmarker::install
