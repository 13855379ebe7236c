#include "ipc/ShmChannel_win.h"

#include <algorithm>

#include "ipc/ChannelMessage.h"
#include "ipc/ChannelWaits_win.h"

namespace postmarker {

ShmChannel::ShmChannel(KernelHandle mapping, FileView view, size_t size, KernelHandle sendEvent,
                       KernelHandle receiveEvent)
    : m_mapping(std::move(mapping)),
      m_view(std::move(view)),
      m_size(size),
      m_sendEvent(std::move(sendEvent)),
      m_receiveEvent(std::move(receiveEvent)) {}

std::span<std::byte> ShmChannel::Region() const {
  // The owner of views is for readers; this one was mapped for writing.
  auto* const bytes = static_cast<std::byte*>(const_cast<void*>(m_view.Get()));
  return {bytes, bytes != nullptr ? m_size : 0};
}

template <class Put>
bool ShmChannel::Send(Put put, uint32_t timeout, const StopQuery& stop) {
  // Neither this end's last message nor an answer that came late may be written over.
  if (ShouldStop(stop) || !IsClear(m_sendEvent.Get()) || !IsClear(m_receiveEvent.Get()) || !put()) {
    return false;
  }
  ::SetEvent(m_sendEvent.Get());
  return WaitUntilTaken(m_sendEvent.Get(), timeout, nullptr, stop);
}

template <class Take>
bool ShmChannel::Receive(Take take, uint32_t timeout, const StopQuery& stop) {
  if (!WaitUnlessCancelled(m_receiveEvent.Get(), timeout, nullptr, stop) || !take()) {
    return false;
  }
  ::ResetEvent(m_receiveEvent.Get());
  return true;
}

bool ShmChannel::SendText(const wchar_t* text, uint32_t timeout, const StopQuery& stop) {
  return text != nullptr && Send([&] { return PutText(Region(), text); }, timeout, stop);
}

bool ShmChannel::SendNumber(uint32_t value, uint32_t timeout, const StopQuery& stop) {
  return Send([&] { return PutNumber(Region(), value); }, timeout, stop);
}

bool ShmChannel::ReceiveText(std::wstring* text, uint32_t timeout, const StopQuery& stop,
                             size_t longestBytes) {
  const auto take = [&] {
    const std::span<std::byte> region = Region();
    const size_t longest = kMessageHeaderSize + std::min(longestBytes, region.size());
    return TakeText(region.first(std::min(longest, region.size())), text);
  };
  return Receive(take, timeout, stop);
}

bool ShmChannel::ReceiveNumber(uint32_t* value, uint32_t timeout, const StopQuery& stop) {
  return Receive([&] { return TakeNumber(Region(), value); }, timeout, stop);
}

}  // namespace postmarker
