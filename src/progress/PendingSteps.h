// Gathers the steps that a host reports faster than its window can show them.
#pragma once

#include <cstdint>

namespace postmarker {

// The first report goes to the window as a message. What is reported until the window has had time
// for its other messages is gathered here, and the window fetches it: at most one message is under
// way, however often the host reports. Not locked by itself; the host's thread and the window's
// each take the owner's lock.
class PendingSteps {
 public:
  // The host reports steps. True: they are to be sent as a message. False: they were gathered.
  bool Report(int32_t steps);

  // The message that Report asked for could not be sent: its steps go with the next one.
  void TakeBack(int32_t steps);

  // A new range begins: what was gathered no longer matters, and the next report is a message, so
  // that it comes after that of the range.
  void BeginRange();

  // The window has received a message. Returns the steps that were gathered after it; the window
  // fetches further ones after a while by FetchGathered, until that tells it to stop.
  int64_t MessageArrived();

  struct Gathered {
    int64_t steps = 0;
    bool more = false;  // look again after a while
  };
  Gathered FetchGathered();

 private:
  int64_t FetchSteps();

  int m_underWay = 0;  // messages sent and not received
  bool m_isGathering = false;
  int64_t m_steps = 0;
};

}  // namespace postmarker
