#include "NativePort_win.h"

#include <array>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <utility>

#include "NativeFrames.h"

namespace postmarker::bridge {
namespace {

constexpr size_t kReadBytes = 65536;
// More messages than requests can be under way are not kept: Thunderbird waits.
constexpr size_t kMaxWaiting = 16;

}  // namespace

struct NativePort::Inbox {
  std::mutex mutex;
  std::condition_variable changed;
  std::deque<std::string> messages;
  bool hasEnded = false;
  bool isClosed = false;  // nobody takes messages any more
  // Set while there is something to see.
  KernelHandle event{::CreateEventW(nullptr, TRUE, FALSE, nullptr)};

  // Adds a message, once there is room for it; false when nobody takes it.
  bool Put(std::string message) {
    std::unique_lock lock(mutex);
    changed.wait(lock, [this] { return isClosed || messages.size() < kMaxWaiting; });
    if (isClosed) {
      return false;
    }
    messages.push_back(std::move(message));
    ::SetEvent(event.Get());
    return true;
  }

  void End() {
    const std::lock_guard lock(mutex);
    hasEnded = true;
    ::SetEvent(event.Get());
  }
};

// What the thread keeps.
struct NativePort::Reading {
  std::shared_ptr<Inbox> inbox;
  HANDLE input;
};

// The system's own threads: the runtime library can give the record of a std::thread back twice, if
// the thread ends in the moment in which it is detached.
NativePort::NativePort(HANDLE input, HANDLE output)
    : m_inbox(std::make_shared<Inbox>()), m_output(output) {
  auto* const reading = new Reading{m_inbox, input};
  if (!KernelHandle(::CreateThread(nullptr, 0, ReadAll, reading, 0, nullptr))) {
    delete reading;
    m_inbox->End();
  }
}

NativePort::~NativePort() {
  const std::lock_guard lock(m_inbox->mutex);
  m_inbox->isClosed = true;
  m_inbox->changed.notify_all();
}

DWORD WINAPI NativePort::ReadAll(void* reading) {
  const std::unique_ptr<Reading> owned(static_cast<Reading*>(reading));
  const auto& [inbox, input] = *owned;
  FrameReader frames;
  std::array<char, kReadBytes> bytes = {};
  DWORD read = 0;
  while (::ReadFile(input, bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr) &&
         read > 0) {
    const bool isSound = frames.Append({bytes.data(), read});
    while (std::optional<std::string> message = frames.Next()) {
      if (!inbox->Put(*std::move(message))) {
        return 0;
      }
    }
    if (!isSound) {
      break;
    }
  }
  inbox->End();
  return 0;
}

void NativePort::Wait(DWORD milliseconds) const {
  ::WaitForSingleObject(m_inbox->event.Get(), milliseconds);
}

std::optional<std::string> NativePort::Next() {
  const std::lock_guard lock(m_inbox->mutex);
  if (m_inbox->messages.empty()) {
    return std::nullopt;
  }
  std::string message = std::move(m_inbox->messages.front());
  m_inbox->messages.pop_front();
  if (m_inbox->messages.empty() && !m_inbox->hasEnded) {
    ::ResetEvent(m_inbox->event.Get());
  }
  m_inbox->changed.notify_all();
  return message;
}

bool NativePort::HasEnded() const {
  const std::lock_guard lock(m_inbox->mutex);
  return m_inbox->hasEnded && m_inbox->messages.empty();
}

bool NativePort::Write(const std::string& message) {
  const std::string frame = MakeFrame(message);
  DWORD written = 0;
  return !frame.empty() &&
         ::WriteFile(m_output, frame.data(), static_cast<DWORD>(frame.size()), &written, nullptr) &&
         written == frame.size();
}

}  // namespace postmarker::bridge
