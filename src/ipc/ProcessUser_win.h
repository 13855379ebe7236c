// The account that a process runs under.
#pragma once

#include <windows.h>

#include <cstddef>
#include <vector>

namespace postmarker {

// An account's identifier. Empty if the system does not tell it.
class ProcessUser {
 public:
  // `process` needs the right to query limited information. On failure the object is empty, and the
  // thread's last error says why.
  static ProcessUser Of(HANDLE process);

  explicit operator bool() const { return !m_user.empty(); }

  // The identifier, in this object's memory. REQUIRES: not empty.
  [[nodiscard]] PSID Sid() { return reinterpret_cast<TOKEN_USER*>(m_user.data())->User.Sid; }

 private:
  std::vector<std::byte> m_user;  // a TOKEN_USER and the identifier that it points to
};

}  // namespace postmarker
