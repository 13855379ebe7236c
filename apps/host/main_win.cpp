// A complete small host of Postmarker.dll: fills a request, runs the wizard, prints what came back.
// It expects the layout of an installed suite: bin\postmarker-host.exe, Spamfilter\Postmarker.dll
// and res\<language>\PostmarkerRes.dll below one root.
#include <windows.h>

#include <shellapi.h>

#include <cstdio>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "ProgressJob_win.h"
#include "RecordText.h"
#include "postmarker/Postmarker.h"
#include "support/Handles_win.h"
#include "support/Registry_win.h"
#include "support/SuiteKeys.h"
#include "support/Text.h"

namespace postmarker {
namespace {

constexpr int kExitOk = 0;
constexpr int kExitNoModule = 1;
constexpr int kExitUsage = 2;

constexpr DWORD kLookMs = 50;

constexpr char kUsage[] =
    "usage: postmarker-host [--client NAME] [--training] [--hook] [--language LL] [--json]\n"
    "       postmarker-host --prefill\n"
    "       postmarker-host --progress [--language LL]\n"
    "  --client NAME   set up this mail client, such as IncrediMail; without it the wizard asks\n"
    "  --training      offer the training pages; their folders are in the record\n"
    "  --hook          hand the sheet's window to the suite's window hook module\n"
    "  --language LL   use the texts of res\\LL (sets the suite's language in the registry)\n"
    "  --json          print the record as JSON\n"
    "  --prefill       show no wizard, but fill the list of allowed senders from all mail "
    "clients\n"
    "  --progress      show no wizard, but the progress window on a sample job\n";

struct Options {
  WizardRequest request;
  std::optional<std::wstring> language;
  bool json = false;
  bool prefill = false;
  bool progress = false;
};

std::vector<std::wstring> Arguments() {
  int count = 0;
  wchar_t** const list = ::CommandLineToArgvW(::GetCommandLineW(), &count);
  const ScopeExit freeList([list] { ::LocalFree(list); });
  return {list + 1, list + count};
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
    } else if (name == L"--prefill") {
      options.prefill = true;
    } else if (name == L"--progress") {
      options.progress = true;
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
      RegistryKey::Create(HKEY_LOCAL_MACHINE, kMainKey, KEY_SET_VALUE | SuiteKeyView());
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

// An export of the module by its plain name, the same in both widths; null if it has none.
template <class Function>
Function ExportOf(const LibraryHandle& module, const char* name) {
  return reinterpret_cast<Function>(reinterpret_cast<void*>(::GetProcAddress(module.Get(), name)));
}

// A host that goes on working need not wait. This one would take the module's thread with it, so it
// stays until the thread has let go of the module.
void PrefillAndWait(LibraryHandle module, PostmarkerStartWhitelistPrefill startWhitelistPrefill) {
  startWhitelistPrefill();
  module.Reset();
  while (::GetModuleHandleW(L"Postmarker.dll") != nullptr) {
    ::Sleep(kLookMs);
  }
  (void)std::puts("The mail clients have been looked through.");
}

int Run(Options options) {
  if (options.language) {
    SetSuiteLanguage(*options.language);
  }
  LibraryHandle module(::LoadLibraryW(ModulePath().c_str()));
  const auto showWizard = ExportOf<PostmarkerShowWizard>(module, "ShowWizard");
  const auto startWhitelistPrefill =
      ExportOf<PostmarkerStartWhitelistPrefill>(module, "StartWhitelistPrefill");
  if (!module || showWizard == nullptr || startWhitelistPrefill == nullptr) {
    (void)std::fprintf(stderr, "postmarker-host: %s can't be loaded (error %lu)\n",
                       NarrowUtf8(ModulePath()).c_str(), ::GetLastError());
    return kExitNoModule;
  }
  if (options.prefill) {
    PrefillAndWait(std::move(module), startWhitelistPrefill);
    return kExitOk;
  }
  if (options.progress) {
    (void)std::puts(RunProgressJob(module.Get()).c_str());
    return kExitOk;
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
