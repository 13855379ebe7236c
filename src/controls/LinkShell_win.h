// The system's own shell, by which labels open their links.
#pragma once

#include "controls/LinkOpener.h"

namespace postmarker {

// Has no state and may be used on any thread; verbs of the shell want an apartment of COM.
class SystemLinkShell final : public LinkShell {
 public:
  std::optional<std::wstring> ReadClass(const std::wstring& key) override;
  bool StartProcess(const std::wstring& commandLine) override;
  bool RunVerb(const std::wstring& verb, const std::wstring& target) override;
};

}  // namespace postmarker
