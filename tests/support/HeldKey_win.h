// A key that the thread takes for pressed.
#pragma once

#include <windows.h>

namespace postmarker::test {

class HeldKey {
 public:
  explicit HeldKey(WORD key) : m_key(key) { Set(0x80); }
  HeldKey(const HeldKey&) = delete;
  HeldKey& operator=(const HeldKey&) = delete;
  ~HeldKey() { Set(0); }

 private:
  void Set(BYTE state) const {
    BYTE keys[256] = {};
    ::GetKeyboardState(keys);
    keys[m_key] = state;
    ::SetKeyboardState(keys);
  }
  WORD m_key;
};

}  // namespace postmarker::test
