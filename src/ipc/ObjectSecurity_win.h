// Who may open the named objects that this process makes.
#pragma once

#include <windows.h>

#include <string>

#include "support/Handles_win.h"

namespace postmarker {

namespace handle_close {
inline void Local(void* memory) noexcept {
  ::LocalFree(memory);  // owner
}
}  // namespace handle_close

using LocalMemory = UniqueHandle<NullableHandleTraits<void*, handle_close::Local>>;

// A security descriptor, to be given to the functions that create objects. Not for use from several
// threads at once.
class ObjectSecurity {
 public:
  // Grants the rights of `access`, and no others, to everyone. With `lowIntegrity` processes of low
  // integrity may open the object as well. Nothing is inherited.
  static ObjectSecurity ForEveryone(DWORD access, bool lowIntegrity);

  // Grants everything to everyone.
  static ObjectSecurity Open();

  // Grants everything to the account of this process, and nothing to anyone else.
  static ObjectSecurity ForThisUser();

  // Whether there is a descriptor: the system can refuse to make one.
  explicit operator bool() const { return static_cast<bool>(m_descriptor); }

  // For a creating function. The handle that comes back is not inherited by child processes. Valid
  // while this object lives and is not moved.
  [[nodiscard]] SECURITY_ATTRIBUTES* Attributes() { return &m_attributes; }

 private:
  ObjectSecurity() = default;  // without a descriptor
  explicit ObjectSecurity(const std::wstring& description);

  LocalMemory m_descriptor;
  SECURITY_ATTRIBUTES m_attributes = {};
};

}  // namespace postmarker
