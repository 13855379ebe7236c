// A channel between two processes of one machine: a region of shared memory that holds one message
// at a time, and an event for each direction. ChannelServer_win.h and ChannelClient_win.h make its
// two ends.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "support/Handles_win.h"
#include "support/StopQuery.h"

namespace postmarker {

// One end of a channel. The ends take turns: who is to send finds its own last message taken, and
// each send waits until the other end has taken the message. Destroying an end tells the other one
// nothing: that sees its waits end by time. An end that ran into its time is out of step, as the
// late answer still comes into the region: the next send fails then, and a new channel is needed.
//
// Times are in milliseconds. Each operation also fails when `stop` says so: it is asked at the
// beginning, before anything is sent or taken, and then at least every 100 ms. For one thread at a
// time.
class ShmChannel {
 public:
  // Takes what the two ends have agreed on. `size` is the region's in bytes.
  ShmChannel(KernelHandle mapping, FileView view, size_t size, KernelHandle sendEvent,
             KernelHandle receiveEvent);
  ShmChannel(const ShmChannel&) = delete;
  ShmChannel& operator=(const ShmChannel&) = delete;
  ~ShmChannel() = default;

  // Sends a text up to its terminator and waits until it is taken. False for a null text, one of
  // more than RegionSize() - 8 bytes, or while a message of either end is not taken, all with
  // nothing written; false as well if it is not taken within `timeout`, and then it still stands.
  bool SendText(const wchar_t* text, uint32_t timeout, const StopQuery& stop = {});

  // The same for a number.
  bool SendNumber(uint32_t value, uint32_t timeout, const StopQuery& stop = {});

  // Waits for a message and takes it. False, with the out value as it was, if none comes within
  // `timeout`, or if it is of the other type or malformed: then it stays where it is, and its
  // sender goes on waiting. A text may be empty, and may hold NULs if the sender put some in; one
  // of more than `longestBytes` bytes is refused as malformed before it is copied.
  bool ReceiveText(std::wstring* text, uint32_t timeout, const StopQuery& stop = {},
                   size_t longestBytes = SIZE_MAX);
  bool ReceiveNumber(uint32_t* value, uint32_t timeout, const StopQuery& stop = {});

  // The size of the region in bytes, as this end knows it.
  [[nodiscard]] size_t RegionSize() const { return m_size; }

 private:
  [[nodiscard]] std::span<std::byte> Region() const;
  template <class Put>
  bool Send(Put put, uint32_t timeout, const StopQuery& stop);
  template <class Take>
  bool Receive(Take take, uint32_t timeout, const StopQuery& stop);

  // In the reverse order of closing.
  KernelHandle m_mapping;
  FileView m_view;
  size_t m_size;
  KernelHandle m_sendEvent;
  KernelHandle m_receiveEvent;
  KernelHandle m_reserved[2];
};

}  // namespace postmarker
