// The channel to one of the suite's modules inside a client.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "ipc/ChannelNames.h"
#include "ipc/ShmChannel_win.h"
#include "support/Results.h"

namespace postmarker {

// The module's event exists, but its channel can't be reached. Callers take it as an empty answer.
inline constexpr ResultCode kModuleUnreachable = static_cast<ResultCode>(0x8001011F);

// Connects at construction and disconnects at destruction. For one thread at a time.
class SharedMemClient {
 public:
  // `module` is the module's file name. Without the module's event the status is kFail at once;
  // with it, a connection is tried for about `timeout` milliseconds (up to four times as long if
  // the server breaks off), and the status is 0 or kModuleUnreachable. The latter also as soon as
  // `stop` says so: it is asked at least every 100 ms.
  SharedMemClient(const std::wstring& module, ChannelKind kind, uint32_t timeout,
                  const StopQuery& stop = {});
  SharedMemClient(const SharedMemClient&) = delete;
  SharedMemClient& operator=(const SharedMemClient&) = delete;
  virtual ~SharedMemClient() = default;

  [[nodiscard]] ResultCode Status() const { return m_status; }

  // The connected channel; null unless the status is 0. Lives as long as this object.
  [[nodiscard]] ShmChannel* Channel() const { return m_channel.get(); }

 private:
  std::unique_ptr<ShmChannel> m_channel;
  ResultCode m_status = kFail;
  std::wstring m_tunnelName;  // for who looks at a client in a debugger
};

}  // namespace postmarker
