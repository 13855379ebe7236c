#include "ThunderbirdSetup_posix.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <nlohmann/json.hpp>
#include <utility>

#include "FilePlace.h"
#include "Installer.h"

namespace postmarker::install {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;

constexpr char kHosts[] = ".mozilla/native-messaging-hosts";
constexpr char kManifest[] = "postmarker_thunderbird.json";
constexpr char kRecord[] = "postmarker-thunderbird.json";
constexpr char kWine[] = "wine";
constexpr char kWindowsProgram[] = "postmarker-thunderbird.exe";

// The manifest beside the program, with the whole path that Thunderbird asks for here.
Content ManifestFor(const fs::path& program) {
  Content source;
  if (!FilePlace(program.parent_path() / kManifest).Read(&source) || !source) {
    return std::nullopt;
  }
  Json manifest = Json::parse(*source, nullptr, false);
  if (!manifest.is_object()) {
    return std::nullopt;
  }
  manifest["path"] = program.string();
  return manifest.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

// What the system's calls take: pointers that end with a null one.
class ArgumentList {
 public:
  ArgumentList(const fs::path& program, const std::vector<std::string>& arguments)
      : m_texts{kWine, program.parent_path() / kWindowsProgram} {
    m_texts.insert(m_texts.end(), arguments.begin(), arguments.end());
    for (std::string& text : m_texts) {
      m_pointers.push_back(text.data());
    }
    m_pointers.push_back(nullptr);
  }
  [[nodiscard]] char* const* Get() const { return m_pointers.data(); }

 private:
  std::vector<std::string> m_texts;
  std::vector<char*> m_pointers;
};

// The exit code; kFailed if it can't be run.
int RunWindowsProgram(const fs::path& program, const Task& task) {
  std::vector<std::string> arguments = {task.kind == TaskKind::kInstall ? "--install" : "--remove"};
  if (task.profile) {
    // Wine has the whole file system as a drive.
    std::string path = fs::absolute(*task.profile).lexically_normal().string();
    std::replace(path.begin(), path.end(), '/', '\\');
    arguments.push_back("Z:" + path);
  }
  const ArgumentList list(program, arguments);
  pid_t child = 0;
  int status = 0;
  if (::posix_spawnp(&child, kWine, nullptr, nullptr, list.Get(), environ) != 0 ||
      ::waitpid(child, &status, 0) != child || !WIFEXITED(status)) {
    return kFailed;
  }
  return WEXITSTATUS(status);
}

}  // namespace

void Become(const fs::path& program, const std::vector<std::string>& arguments) {
  ::execvp(kWine, ArgumentList(program, arguments).Get());
}

int RunSetup(const Task& task, const fs::path& home, const fs::path& program,
             const std::function<void(const std::string&)>& say) {
  FilePlace record(home / kHosts / kRecord);
  const auto fillings = [&](const std::string& /*target*/) {
    Fillings all;
    all.push_back({std::make_unique<FilePlace>(home / kHosts / kManifest),
                   [&](const Content& /*before*/) { return ManifestFor(program); },
                   "can't be made: there is no manifest beside the program."});
    return all;
  };
  Installer installer(&record, fillings, say);
  const bool wasInstalled = installer.IsInstalled();
  if (task.kind == TaskKind::kInstall && !installer.Install(home.string())) {
    return kFailed;
  }
  if (const int code = RunWindowsProgram(program, task); code != kDone) {
    say("The Windows program can't do its part; see above, or start it by hand: wine " +
        (program.parent_path() / kWindowsProgram).string());
    if (task.kind == TaskKind::kInstall && !wasInstalled) {
      (void)installer.Remove(std::nullopt);
    }
    return code;
  }
  return task.kind == TaskKind::kInstall || installer.Remove(std::nullopt) ? kDone : kFailed;
}

}  // namespace postmarker::install
