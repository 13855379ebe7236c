// The frames in which Thunderbird and its native programs send each other messages.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace postmarker::bridge {

// The largest messages in bytes, without their frame.
inline constexpr size_t kMaxReceivedBytes = size_t{1024} * 1024;
inline constexpr size_t kMaxSentBytes = size_t{256} * 1024;

// A frame: the length in 4 bytes, the lowest first, and the message. Empty for an empty message and
// for one of more than kMaxSentBytes.
std::string MakeFrame(std::string_view message);

// Finds the messages in a stream of bytes, however it is cut. For one thread.
class FrameReader {
 public:
  // Adds bytes that have come. False once a frame has had the length 0 or one above
  // kMaxReceivedBytes: where the next message begins can't be known any more, and what comes is
  // dropped.
  bool Append(std::string_view bytes);

  // The next whole message; none until more bytes come. Holds at most one message and what was
  // appended since Next last returned none.
  std::optional<std::string> Next();

 private:
  void CheckLength();

  std::string m_bytes;
  size_t m_read = 0;  // before it lies what Next has returned
  bool m_isBroken = false;
};

}  // namespace postmarker::bridge
