#include "Task.h"

namespace postmarker::install {

Task ParseTask(const std::vector<std::string>& arguments) {
  if (arguments.empty() || arguments[0].empty()) {
    return {};
  }
  if (!arguments[0].starts_with('-')) {
    return {TaskKind::kServe, std::nullopt};
  }
  const bool isInstall = arguments[0] == "--install";
  const bool hasProfile = arguments.size() == 2;
  if ((!isInstall && arguments[0] != "--remove") || arguments.size() > 2 ||
      (hasProfile && (arguments[1].empty() || arguments[1].starts_with('-')))) {
    return {};
  }
  return {isInstall ? TaskKind::kInstall : TaskKind::kRemove,
          hasProfile ? std::optional(arguments[1]) : std::nullopt};
}

}  // namespace postmarker::install
