// The client's end of a channel.
#pragma once

#include <cstdint>
#include <memory>

#include "ipc/ShmChannel_win.h"
#include "support/StopQuery.h"

namespace postmarker {

// What a client waits for. Times are in milliseconds.
struct ConnectOptions {
  HANDLE cancel = nullptr;        // ends every wait when signalled; may be null
  uint32_t timeout = 0;           // for its turn at the rendezvous
  uint32_t handshakeTimeout = 0;  // for each of the server's two answers; `timeout` if that is less
  StopQuery stop = {};            // ends every wait as well; asked at least every 100 ms
};

// Claims the rendezvous `name` (1 to 210 units) and connects to its server. True gives a connected
// channel; otherwise *channel is empty, and the turn is free for other clients. When the server was
// called and did not answer in time, the call stands: other clients wait for the server's next
// round. Blocks, for no longer than its turn and two answers may take; any thread.
bool ChannelConnect(const wchar_t* name, std::unique_ptr<ShmChannel>* channel,
                    const ConnectOptions& options);

// Repeats ChannelConnect every 100 ms until it succeeds, `cancel` is signalled or more than
// `timeout` have passed. Each attempt may take the whole of `timeout`.
bool ChannelConnectRetry(const wchar_t* name, std::unique_ptr<ShmChannel>* channel,
                         const ConnectOptions& options);

}  // namespace postmarker
