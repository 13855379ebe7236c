#include "ProgressJob_win.h"

#include "postmarker/Progress.h"

namespace postmarker {
namespace {

constexpr DWORD kStepMs = 250;
constexpr int kMessagesInAFolder = 40;
constexpr const char* kFolders[] = {"Inbox", "Inbox\\Customers", "Junk"};

// False if the user has stopped the job.
bool ReadFolder(const PostmarkerProgressFunctions& service, PostmarkerProgress* progress,
                const std::string& folder) {
  service.set(progress, ("Reading the folder " + folder).c_str(), kMessagesInAFolder);
  for (int message = 0; message < kMessagesInAFolder; ++message) {
    if (service.isCancelled(progress) != 0) {
      return false;
    }
    ::Sleep(kStepMs);  // the job's work
    service.increase(progress, 1);
  }
  return true;
}

}  // namespace

std::string RunProgressJob(HMODULE module) {
  PostmarkerProgressFunctions service = {};
  if (PostmarkerLoadProgress(module, &service) == 0) {
    return {};
  }
  PostmarkerProgress* const progress = service.create(0, "A sample job", 0);
  bool isDone = true;
  for (const char* const folder : kFolders) {
    isDone = isDone && ReadFolder(service, progress, folder);
  }
  service.complete(progress);
  service.destroy(progress, 0);
  return isDone ? "The job is done." : "The job was stopped.";
}

}  // namespace postmarker
