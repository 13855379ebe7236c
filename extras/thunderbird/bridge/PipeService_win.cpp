#include "PipeService_win.h"

#include <algorithm>

namespace postmarker::bridge {
namespace {

// Room for a whole batch of the extension's, so that a client's pauses are not felt in Thunderbird.
constexpr int32_t kBufferChars = 65536;

}  // namespace

bool PipeService::Step(Bridge* bridge) {
  bool hasWorked = false;
  for (size_t number = 0; number < m_instances.size(); ++number) {
    Instance& instance = m_instances[number];
    if (!instance.hasClient && Accept(&instance)) {
      instance.hasClient = true;
      bridge->Reset(number);
      hasWorked = true;
    }
    if (instance.hasClient) {
      hasWorked = Serve(&instance, number, bridge) || hasWorked;
    }
  }
  return hasWorked;
}

bool PipeService::Accept(Instance* instance) const {
  if (!instance->isServing) {
    instance->isServing =
        instance->server.Init(m_name.c_str(), kBufferChars, PipeClients::kThisUser);
  }
  return instance->isServing && instance->server.Accept();
}

bool PipeService::HasClients() const {
  return std::any_of(m_instances.begin(), m_instances.end(),
                     [](const Instance& instance) { return instance.hasClient; });
}

bool PipeService::Serve(Instance* instance, size_t number, Bridge* bridge) {
  bool hasWorked = Send(instance, number, bridge);
  bool isThere = instance->server.IsConnected();
  if (isThere && bridge->WantsText(number) && instance->server.HasMessage()) {
    std::wstring text;
    isThere = instance->server.Read(&text);
    if (isThere) {
      bridge->TakeText(number, text);
    }
    hasWorked = true;
  }
  if (!isThere) {
    // Accept makes a new end of the pipe.
    bridge->Reset(number);
    instance->hasClient = false;
    hasWorked = true;
  }
  return hasWorked;
}

// Sends what the pipe has room for.
bool PipeService::Send(Instance* instance, size_t number, Bridge* bridge) {
  bool hasWorked = false;
  for (const std::wstring* text = bridge->NextText(number);
       text != nullptr && instance->server.Write(*text); text = bridge->NextText(number)) {
    bridge->DropText(number);
    hasWorked = true;
  }
  return hasWorked;
}

}  // namespace postmarker::bridge
