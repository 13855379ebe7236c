#include "ThunderbirdSetup_win.h"

#include <windows.h>

#include <array>
#include <filesystem>
#include <memory>
#include <system_error>
#include <utility>

#include "ExtensionsIni.h"
#include "FilePlace.h"
#include "Installer.h"
#include "RegistryPlace_win.h"
#include "clients/thunderbird/TbInstallation_win.h"
#include "support/MappedFile.h"
#include "support/Text.h"

namespace postmarker::install {
namespace {

namespace fs = std::filesystem;

constexpr wchar_t kHostKey[] = L"Software\\Mozilla\\NativeMessagingHosts\\postmarker_thunderbird";
constexpr wchar_t kManifest[] = L"postmarker_thunderbird.json";
constexpr wchar_t kPackage[] = L"postmarker-thunderbird.xpi";
constexpr wchar_t kRecord[] = L"Thunderbird\\postmarker-thunderbird.json";

// Without a last backslash, so that one folder has one name.
fs::path Absolute(const std::wstring& path) {
  std::error_code failure;
  const fs::path whole = fs::absolute(ToPath(path), failure).lexically_normal();
  return whole.has_filename() ? whole : whole.parent_path();
}

// The wizard reads its value with the environment's variables put in.
bool IsReadAsWritten(const std::wstring& path) {
  std::array<wchar_t, 1024> expanded = {};
  const DWORD needed = ::ExpandEnvironmentStringsW(path.c_str(), expanded.data(), expanded.size());
  return needed > 0 && needed <= expanded.size() && path == expanded.data();
}

// `programFolder` holds the manifest and the package.
Fillings FillingsFor(const fs::path& programFolder, const fs::path& profile) {
  const fs::path manifest = programFolder / kManifest;
  const fs::path source = programFolder / kPackage;
  const fs::path package =
      profile / L"extensions" / (std::wstring(thunderbird::kExtensionId) + L".xpi");
  Fillings fillings;
  fillings.push_back(
      {std::make_unique<RegistryPlace>(kHostKey, std::wstring()),
       [path = ToWide(manifest)](const Content& /*before*/) {
         return CanOpenForReading(path) ? Content(TextContent(path)) : std::nullopt;
       },
       "can't name the native program: " + FilePlace(manifest).Name() + " can't be read."});
  fillings.push_back({std::make_unique<FilePlace>(package),
                      [source](const Content& /*before*/) {
                        Content content;
                        return FilePlace(source).Read(&content) ? content : std::nullopt;
                      },
                      "can't be made: " + FilePlace(source).Name() + " can't be read."});
  fillings.push_back(
      {std::make_unique<FilePlace>(profile / L"extensions.ini"),
       [package](const Content& before) {
         return WithExtension(before.value_or(std::string()), ToWide(package));
       },
       "can't name the extension: its path is too long, or has letters that the file can't hold."});
  fillings.push_back(
      {std::make_unique<RegistryPlace>(thunderbird::kExtensionsKey, thunderbird::kExtensionId),
       [path = ToWide(package)](const Content& /*before*/) {
         return IsReadAsWritten(path) ? Content(TextContent(path)) : std::nullopt;
       },
       "can't name the extension: a part of its path is the name of a variable."});
  return fillings;
}

// The folder that was named; without one, the one that the wizard reads.
std::optional<fs::path> ProfileOf(const Task& task) {
  if (task.profile) {
    return Absolute(WidenUtf8(*task.profile));
  }
  std::wstring profile;
  return Succeeded(thunderbird::GetThunderbirdProfilePath(&profile))
             ? std::optional(Absolute(profile))
             : std::nullopt;
}

bool Install(const Task& task, Installer* installer,
             const std::function<void(const std::string&)>& say) {
  const std::optional<fs::path> profile = ProfileOf(task);
  std::error_code failure;
  if (!profile) {
    say("There is no default profile. Start Thunderbird once, or name the profile's folder.");
    return false;
  }
  const std::string name = NarrowUtf8(ToWide(*profile));
  if (!fs::is_directory(*profile, failure)) {
    say("There is no folder " + name + ".");
    return false;
  }
  if (!installer->Install(name)) {
    return false;
  }
  say("Installed in " + name + ". Start Thunderbird again, and allow the extension.");
  if (!thunderbird::IsThunderbirdExtensionInstalled()) {
    say("The wizard doesn't see it: it looks in the profile named \"default\" alone.");
  }
  return true;
}

bool Remove(const Task& task, Installer* installer,
            const std::function<void(const std::string&)>& say) {
  std::optional<std::string> profile;
  if (task.profile) {
    profile = NarrowUtf8(ToWide(Absolute(WidenUtf8(*task.profile))));
  }
  const bool wasInstalled = installer->IsInstalled();
  if (!installer->Remove(profile)) {
    return false;
  }
  if (wasInstalled) {
    say("Removed.");
  }
  return true;
}

}  // namespace

int RunSetup(const Task& task, const std::wstring& programFolder,
             const std::function<void(const std::string&)>& say) {
  const std::optional<std::wstring> data = thunderbird::ApplicationDataFolder();
  if (!data) {
    say("The user's folder for application data can't be found.");
    return kFailed;
  }
  FilePlace record(ToPath(*data) / kRecord);
  const auto fillings = [&](const std::string& profile) {
    return FillingsFor(ToPath(programFolder), ToPath(WidenUtf8(profile)));
  };
  Installer installer(&record, fillings, say);
  const bool isDone = task.kind == TaskKind::kInstall ? Install(task, &installer, say)
                                                      : Remove(task, &installer, say);
  return isDone ? kDone : kFailed;
}

}  // namespace postmarker::install
