#include "ipc/ObjectSecurity_win.h"

#include <sddl.h>

#include <cwchar>

#include "ipc/ProcessUser_win.h"

namespace postmarker {
namespace {

constexpr wchar_t kLowIntegrityLabel[] = L"S:(ML;;NW;;;LW)";
constexpr wchar_t kAllToEveryone[] = L"D:(A;;GA;;;WD)";

}  // namespace

ObjectSecurity::ObjectSecurity(const std::wstring& description) {
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  if (::ConvertStringSecurityDescriptorToSecurityDescriptorW(description.c_str(), SDDL_REVISION_1,
                                                             &descriptor, nullptr)) {
    m_descriptor.Reset(descriptor);
  }
  m_attributes.nLength = sizeof(m_attributes);
  m_attributes.lpSecurityDescriptor = descriptor;
  m_attributes.bInheritHandle = FALSE;
}

ObjectSecurity ObjectSecurity::ForEveryone(DWORD access, bool lowIntegrity) {
  wchar_t list[40];
  std::swprintf(list, std::size(list), L"D:(A;;0x%lx;;;WD)", static_cast<unsigned long>(access));
  std::wstring description(list);
  if (lowIntegrity) {
    description.append(kLowIntegrityLabel);
  }
  return ObjectSecurity(description);
}

ObjectSecurity ObjectSecurity::Open() {
  return ObjectSecurity(kAllToEveryone);
}

ObjectSecurity ObjectSecurity::ForThisUser() {
  ProcessUser user = ProcessUser::Of(::GetCurrentProcess());
  wchar_t* sid = nullptr;
  if (!user || !::ConvertSidToStringSidW(user.Sid(), &sid)) {
    return {};
  }
  const LocalMemory owner(sid);
  return ObjectSecurity(std::wstring(L"D:P(A;;GA;;;").append(sid).append(L")"));
}

}  // namespace postmarker
