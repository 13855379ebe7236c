// A stand-in for the suite's module inside a client, and what its mailbox holds.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "ipc/HookConnection_win.h"
#include "support/PeerProcess_win.h"
#include "support/TempFolder.h"
#include "support/Text.h"

namespace postmarker::test {

inline constexpr uint32_t kHookTime = 5'000;
inline constexpr uint32_t kShortHookTime = 150;

inline const MailFolderRef kInbox = {L"\\\\Post\\Inbox", "1", "s", 1};
inline const MailFolderRef kStrange = {L"\\\\Post\\a#-#b \x3B1\x4E2D", "i#d", "s", 0};

// The usual limits, with this time for a step.
inline HookLimits Limits(uint32_t stepMilliseconds) {
  HookLimits limits;
  limits.stepMilliseconds = stepMilliseconds;
  return limits;
}

inline nlohmann::json ToJson(const MailFolderRef& folder) {
  return {{"name", NarrowUtf8(folder.name)},
          {"firstId", folder.firstId},
          {"secondId", folder.secondId},
          {"flag", folder.flag}};
}

// The stand-in is one process for all tests, as long as it lives.
class HookModuleFixture : public testing::Test {
 protected:
  static void TearDownTestSuite() { s_peer.reset(); }

  // Sees to it that the module runs and answers from the usual mailbox, with these changes.
  void StartModule(const nlohmann::json& more = nlohmann::json::object()) {
    nlohmann::json state = {{"module", NarrowUtf8(m_module)},
                            {"text", "to be kept"},
                            {"folders", {ToJson(kInbox), ToJson(kStrange)}},
                            {"lookup", {{"4", ToJson(kStrange)}}},
                            {"contacts", {"b@x.example", "A@x.example", "b@x.example"}},
                            {"sent", {"c@x.example"}}};
    state.update(more);
    WriteFile(m_stateFile, state.dump());
    const bool inHandshake = more.contains("fault") && more["fault"].contains("step");
    if (!s_peer || s_peer->WaitForExit(0) != -1 || inHandshake) {
      s_peer.reset();
      s_peer.emplace(StartPeer(PeerPath(L"hookmodule\\hookmodule.exe"), {m_stateFile}));
    }
  }
  void StartFaultyModule(const nlohmann::json& fault) { StartModule({{"fault", fault}}); }

  // Ends the process, from outside.
  static void KillModule() { s_peer.reset(); }

  static inline const TempFolder s_folder;
  static inline const std::wstring s_module = FreshObjectName().substr(6) + L".dll";
  static inline std::optional<PeerProcess> s_peer;

  std::wstring m_stateFile = s_folder.PathOf("state.json");
  std::wstring m_module = s_module;

  std::wstring m_text = L"(as before)";
  MailFolderList m_folders;
  MailFolderRef m_record = {L"(as before)", "", "", 0};
  AddressSet m_addresses = {L"before"};
};

// The event of a module that serves nothing.
class UnreachableModule {
 public:
  [[nodiscard]] std::wstring Name() const { return m_name; }

 private:
  std::wstring m_name = FreshObjectName().substr(6) + L".dll";
  KernelHandle m_event{
      ::CreateEventW(nullptr, TRUE, FALSE, (L"Local\\Kestrelon." + m_name + L".Event").c_str())};
};

}  // namespace postmarker::test
