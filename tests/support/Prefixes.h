// Ways to harm valid input, for every reader's tests.
#pragma once

#include <string>
#include <string_view>

namespace postmarker::test {

// Calls `check` with every proper prefix of `bytes`. Each prefix is a heap block of its own size,
// so that the address sanitizer sees a read after its end.
template <class Check>
void ForEveryPrefix(std::string_view bytes, Check check) {
  for (size_t length = 0; length < bytes.size(); ++length) {
    const std::string prefix(bytes.substr(0, length));
    check(std::string_view(prefix));
  }
}

// Calls `check` with the bytes once for each position, the byte there inverted.
template <class Check>
void ForEveryFlippedByte(std::string_view bytes, Check check) {
  std::string harmed(bytes);
  for (char& byte : harmed) {
    byte = static_cast<char>(~byte);
    check(std::string_view(harmed));
    byte = static_cast<char>(~byte);
  }
}

}  // namespace postmarker::test
