#include "ipc/ShmChannel_win.h"

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
bool ShmChannel::Send(Put put, uint32_t timeout) {
  // Neither this end's last message nor an answer that came late may be written over.
  if (!IsClear(m_sendEvent.Get()) || !IsClear(m_receiveEvent.Get()) || !put()) {
    return false;
  }
  ::SetEvent(m_sendEvent.Get());
  return WaitUntilTaken(m_sendEvent.Get(), timeout);
}

template <class Take>
bool ShmChannel::Receive(Take take, uint32_t timeout) {
  if (::WaitForSingleObject(m_receiveEvent.Get(), timeout) != WAIT_OBJECT_0 || !take()) {
    return false;
  }
  ::ResetEvent(m_receiveEvent.Get());
  return true;
}

bool ShmChannel::SendText(const wchar_t* text, uint32_t timeout) {
  return text != nullptr && Send([&] { return PutText(Region(), text); }, timeout);
}

bool ShmChannel::SendNumber(uint32_t value, uint32_t timeout) {
  return Send([&] { return PutNumber(Region(), value); }, timeout);
}

bool ShmChannel::ReceiveText(std::wstring* text, uint32_t timeout) {
  return Receive([&] { return TakeText(Region(), text); }, timeout);
}

bool ShmChannel::ReceiveNumber(uint32_t* value, uint32_t timeout) {
  return Receive([&] { return TakeNumber(Region(), value); }, timeout);
}

}  // namespace postmarker
