#include "ipc/SharedMemClient_win.h"

#include "ipc/ChannelClient_win.h"

namespace postmarker {

SharedMemClient::SharedMemClient(const std::wstring& module, ChannelKind kind, uint32_t timeout,
                                 const StopQuery& stop)
    : m_tunnelName(ModuleTunnelName(module, kind)) {
  // Whether the event can be opened at all is the whole question, so the least right will do.
  if (!KernelHandle(::OpenEventW(READ_CONTROL, FALSE, ModuleEventName(module, kind).c_str()))) {
    return;
  }
  const ConnectOptions options = {nullptr, timeout, 5'000, stop};
  m_status =
      ChannelConnectRetry(m_tunnelName.c_str(), &m_channel, options) ? kOk : kModuleUnreachable;
}

}  // namespace postmarker
