// The named pipe's side of the bridge.
#pragma once

#include <array>
#include <string>
#include <utility>

#include "Bridge.h"
#include "ipc/NamedPipeServer_win.h"

namespace postmarker::bridge {

// Clients that can be served at the same time. A wizard holds one for its whole life and has
// another for what it does at the moment; two wizards and one to spare.
inline constexpr size_t kPipeInstances = 6;

// Serves the pipe to processes of this user. For one thread.
class PipeService {
 public:
  // `name` is the pipe's full name. Its instances are made by Step, and tried again if somebody
  // else has the name.
  explicit PipeService(std::wstring name) : m_name(std::move(name)) {}

  // Accepts clients, and passes on what has come from them and what is there for them. Waits for
  // nothing. True if anything happened.
  bool Step(Bridge* bridge);

  // Is any client there.
  [[nodiscard]] bool HasClients() const;

 private:
  struct Instance {
    NamedPipeServer server;
    bool isServing = false;
    bool hasClient = false;
  };

  bool Accept(Instance* instance) const;
  static bool Serve(Instance* instance, size_t number, Bridge* bridge);
  static bool Send(Instance* instance, size_t number, Bridge* bridge);

  std::wstring m_name;
  std::array<Instance, kPipeInstances> m_instances;
};

}  // namespace postmarker::bridge
