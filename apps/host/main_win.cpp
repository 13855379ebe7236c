// A complete small host of Postmarker.dll: fills a request, runs the wizard, prints what came back.
// It expects the layout of an installed suite: bin\postmarker-host.exe, Spamfilter\Postmarker.dll
// and res\<language>\PostmarkerRes.dll below one root.
#include <windows.h>

#include <shellapi.h>

#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "RecordText.h"
#include "postmarker/Postmarker.h"
#include "support/Handles_win.h"
#include "support/Registry_win.h"
#include "support/Text.h"

namespace postmarker {
namespace {

constexpr int kExitOk = 0;
constexpr int kExitNoModule = 1;
constexpr int kExitUsage = 2;

constexpr char kUsage[] =
    "usage: postmarker-host [--client NAME] [--training] [--hook] [--language LL] [--json]\n"
    "  --client NAME   set up this mail client, such as IncrediMail\n"
    "  --training      offer the training pages\n"
    "  --hook          hand the sheet's window to the suite's window hook module\n"
    "  --language LL   use the texts of res\\LL (sets the suite's language in the registry)\n"
    "  --json          print the record as JSON\n";

struct Options {
  WizardRequest request;
  std::optional<std::wstring> language;
  bool json = false;
};

std::vector<std::wstring> Arguments() {
  int count = 0;
  wchar_t** const list = ::CommandLineToArgvW(::GetCommandLineW(), &count);
  std::vector<std::wstring> arguments(list + 1, list + count);
  ::LocalFree(list);
  return arguments;
}

std::optional<Options> ParseOptions(const std::vector<std::wstring>& arguments) {
  Options options;
  for (size_t i = 0; i < arguments.size(); ++i) {
    const std::wstring& name = arguments[i];
    const bool hasValue = i + 1 < arguments.size();
    if (name == L"--client" && hasValue) {
      options.request.clientName = arguments[++i];
    } else if (name == L"--language" && hasValue && arguments[i + 1].size() == 2) {
      options.language = arguments[++i];
    } else if (name == L"--training") {
      options.request.offerTraining = 1;
    } else if (name == L"--hook") {
      options.request.useWindowHook = 1;
    } else if (name == L"--json") {
      options.json = true;
    } else {
      return std::nullopt;
    }
  }
  return options;
}

// The module looks the language up when it is loaded. Writing the setting takes an administrator's
// rights.
void SetSuiteLanguage(const std::wstring& language) {
  const RegistryKey key =
      RegistryKey::Create(HKEY_LOCAL_MACHINE, L"Software\\Kestrelon Ltd.\\Kestrelon\\Main",
                          KEY_SET_VALUE | SuiteKeyView());
  if (!key.WriteString(L"Language", language)) {
    (void)std::fprintf(stderr, "postmarker-host: the language could not be set\n");
  }
}

// ..\Spamfilter\Postmarker.dll, seen from this program's folder.
std::wstring ModulePath() {
  std::wstring path(MAX_PATH, L'\0');
  path.resize(::GetModuleFileNameW(nullptr, path.data(), MAX_PATH));
  for (int i = 0; i < 2; ++i) {
    path.resize(std::min(path.size(), path.rfind(L'\\')));
  }
  return path + L"\\Spamfilter\\Postmarker.dll";
}

int Run(Options options) {
  if (options.language) {
    SetSuiteLanguage(*options.language);
  }
  const LibraryHandle module(::LoadLibraryW(ModulePath().c_str()));
  const auto showWizard = reinterpret_cast<PostmarkerShowWizard>(
      reinterpret_cast<void*>(::GetProcAddress(module.Get(), "ShowWizard")));
  if (!module || showWizard == nullptr) {
    (void)std::fprintf(stderr, "postmarker-host: %s can't be loaded (error %lu)\n",
                       NarrowUtf8(ModulePath()).c_str(), ::GetLastError());
    return kExitNoModule;
  }
  const int32_t result = showWizard(&options.request);
  const std::string text =
      options.json ? RecordAsJson(result, options.request) : RecordAsText(result, options.request);
  (void)std::fwrite(text.data(), 1, text.size(), stdout);
  return kExitOk;
}

}  // namespace
}  // namespace postmarker

int main() {
  auto options = postmarker::ParseOptions(postmarker::Arguments());
  if (!options) {
    (void)std::fputs(postmarker::kUsage, stderr);
    return postmarker::kExitUsage;
  }
  return postmarker::Run(std::move(*options));
}
