// A shell that opens nothing and keeps what it was asked for.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "controls/LinkOpener.h"

namespace postmarker::test {

class RecordingLinkShell : public LinkShell {
 public:
  std::optional<std::wstring> ReadClass(const std::wstring& key) override {
    const auto found = classes.find(key);
    return found != classes.end() ? std::optional(found->second) : std::nullopt;
  }
  bool StartProcess(const std::wstring& commandLine) override {
    actions.push_back(L"start " + commandLine);
    if (startResults.empty()) {
      return true;
    }
    const bool result = startResults.front();
    startResults.erase(startResults.begin());
    return result;
  }
  bool RunVerb(const std::wstring& verb, const std::wstring& target) override {
    actions.push_back(verb + L' ' + target);
    return verbResult;
  }

  std::map<std::wstring, std::wstring> classes;
  std::vector<bool> startResults;  // of the next processes; true for all after them
  bool verbResult = true;
  std::vector<std::wstring> actions;
};

}  // namespace postmarker::test
