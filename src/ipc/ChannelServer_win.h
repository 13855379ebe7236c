// The server's end of a channel.
#pragma once

#include <cstdint>
#include <memory>

#include "ipc/ChannelNames.h"
#include "ipc/ShmChannel_win.h"

namespace postmarker {

// What a server waits for. Times are in milliseconds.
struct ListenOptions {
  ChannelKind kind = ChannelKind::kLocal;
  HANDLE cancel = nullptr;        // ends the waiting for a client when signalled; may be null
  uint32_t timeout = 0;           // for a client to come
  uint32_t size = 0;              // of the private region in bytes, at least 4096
  uint32_t handshakeTimeout = 0;  // for a client that has come to answer; `timeout` if that is less
};

// Publishes the rendezvous `name` (1 to 210 units) and waits for one client. True gives a connected
// channel; otherwise *channel is empty, everything made is gone again, and the rendezvous is free.
// One server of a name at a time: an object that exists already fails the attempt, but for the
// mutex, whose last holder is waited for. Once there is a channel the rendezvous is free for the
// next call. Blocks; any thread.
bool ChannelListen(const wchar_t* name, std::unique_ptr<ShmChannel>* channel,
                   const ListenOptions& options);

// Repeats ChannelListen every 100 ms until it succeeds, `cancel` is signalled or more than
// `timeout` have passed. Each attempt may take the whole of `timeout`.
bool ChannelListenRetry(const wchar_t* name, std::unique_ptr<ShmChannel>* channel,
                        const ListenOptions& options);

}  // namespace postmarker
