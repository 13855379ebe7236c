// The surroundings of each client for the promises that hold for all of them.
#pragma once

#include <windows.h>

#include <unknwn.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace postmarker::test {

// A client as installed on a machine of its own, for one test. This class is one of a client that
// is not there at all; a client that needs a stand-in has a class of its own.
class ClientEnvironment {
 public:
  ClientEnvironment() = default;
  ClientEnvironment(const ClientEnvironment&) = delete;
  ClientEnvironment& operator=(const ClientEnvironment&) = delete;
  virtual ~ClientEnvironment() = default;

  // A store with folders and addresses, anew.
  virtual void Fill() {}
  // Installed, but with nothing in the store.
  virtual void Empty() {}
  // A store that is there and can't be understood.
  virtual void Damage() {}

  // The steps at which another process that serves the client can go away.
  [[nodiscard]] virtual std::vector<std::string> Steps() const { return {}; }
  // Lets that process go away at a step.
  virtual void GoAwayAt(const std::string& /*step*/) {}

  // Outlook's application as the calling thread may call it, for the client that is Outlook.
  [[nodiscard]] virtual std::shared_ptr<IUnknown> MakeApplication() const { return nullptr; }

  // Does Fill give the adapter anything to find.
  [[nodiscard]] virtual bool HasStandIn() const { return false; }
};

// The environment of a client by its display name; that of one without a stand-in for other names.
std::unique_ptr<ClientEnvironment> MakeClientEnvironment(std::wstring_view displayName);

}  // namespace postmarker::test
