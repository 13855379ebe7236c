// A long conversation over a channel, each message of which both sides know beforehand.
#pragma once

#include <cstdint>
#include <string>

#include "ipc/ShmChannel_win.h"

namespace postmarker::test {

enum class Side { kClient, kServer };

// The text of one message: of every length from 0 to the longest that the region holds, in an order
// that mixes long and short, with units of every kind but NUL.
inline std::wstring ExchangeText(uint32_t message, size_t longest) {
  uint32_t state = message * 2'654'435'761U + 1;
  const size_t length = (size_t{message} * 1'327) % (longest + 1);
  std::wstring text(length, L'\0');
  for (wchar_t& unit : text) {
    state = state * 1'664'525U + 1'013'904'223U;
    unit = static_cast<wchar_t>(state >> 16 != 0 ? state >> 16 : 1);
  }
  return text;
}

// Sends every even message as the client and every odd one as the server, and checks the others.
// The client begins by sending how many there are. Every tenth message is a number. Returns how
// many messages went through; fewer than `count` means that one was lost or changed.
inline uint32_t ExchangeMessages(ShmChannel& channel, Side side, uint32_t count) {
  constexpr uint32_t kTimeout = 20'000;
  const size_t longest = (channel.RegionSize() - 8) / sizeof(wchar_t);
  if (side == Side::kClient && !channel.SendNumber(count, kTimeout)) {
    return 0;
  }
  for (uint32_t i = 0; i < count; ++i) {
    const bool sends = (i % 2 == 0) == (side == Side::kClient);
    bool passed = false;
    if (i % 10 == 9) {
      uint32_t number = 0;
      passed = sends ? channel.SendNumber(~i, kTimeout)
                     : channel.ReceiveNumber(&number, kTimeout) && number == ~i;
    } else {
      const std::wstring text = ExchangeText(i, longest);
      std::wstring received;
      passed = sends ? channel.SendText(text.c_str(), kTimeout)
                     : channel.ReceiveText(&received, kTimeout) && received == text;
    }
    if (!passed) {
      return i;
    }
  }
  return count;
}

// The server's side, which is told how many messages there are. True if all went through.
inline bool AnswerExchange(ShmChannel& channel) {
  uint32_t count = 0;
  return channel.ReceiveNumber(&count, 20'000) &&
         ExchangeMessages(channel, Side::kServer, count) == count;
}

}  // namespace postmarker::test
