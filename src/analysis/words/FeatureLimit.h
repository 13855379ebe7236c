// How much all features of a message may hold together.
#pragma once

#include <cstddef>

namespace postmarker {

// What the maps and lists of one message have left. The limit is the same on every platform: it
// counts keys and bytes of text, whatever these take in memory. Only messages that are made for it
// come near: with 256 KiB of subjects and senders and all text parts full, the worst known have
// 1,983,000 keys or 72 MiB of text. Full to the limit, maps and lists take about 150 MiB, a walk
// through them included. One thread at a time.
class FeatureLimit {
 public:
  static constexpr size_t kMaxKeys = 2500000;
  static constexpr size_t kMaxTextBytes = size_t{84} << 20;

  // Thrown when something does not fit; nothing was taken then.
  struct Reached {};

  // Everything is left again.
  void Reset() { *this = FeatureLimit(); }

  // Takes a key of a map, with its text.
  void TakeKey(size_t text) {
    if (m_keys == 0 || text > m_text) {
      throw Reached();
    }
    --m_keys;
    m_text -= text;
  }

  // Takes a word of a list: its text, and a byte for its length.
  void TakeWord(size_t text) {
    if (text >= m_text) {
      throw Reached();
    }
    m_text -= text + 1;
  }

 private:
  size_t m_keys = kMaxKeys;
  size_t m_text = kMaxTextBytes;
};

}  // namespace postmarker
