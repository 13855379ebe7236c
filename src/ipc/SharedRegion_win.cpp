#include "ipc/SharedRegion_win.h"

namespace postmarker {
namespace {

std::optional<SharedRegion> Map(KernelHandle mapping, DWORD viewAccess) {
  SharedRegion region;
  region.mapping = std::move(mapping);
  region.view.Reset(::MapViewOfFile(region.mapping.Get(), viewAccess, 0, 0, 0));
  MEMORY_BASIC_INFORMATION memory = {};
  if (!region.view || ::VirtualQuery(region.view.Get(), &memory, sizeof(memory)) == 0 ||
      memory.State != MEM_COMMIT) {
    return std::nullopt;
  }
  region.size = memory.RegionSize;
  return region;
}

}  // namespace

std::optional<SharedRegion> MakeSharedRegion(const std::wstring& name, uint32_t size,
                                             ObjectSecurity* security) {
  KernelHandle mapping(::CreateFileMappingW(INVALID_HANDLE_VALUE, security->Attributes(),
                                            PAGE_READWRITE | SEC_COMMIT, 0, size, name.c_str()));
  if (!mapping || ::GetLastError() == ERROR_ALREADY_EXISTS) {
    return std::nullopt;
  }
  return Map(std::move(mapping), FILE_MAP_WRITE);
}

std::optional<SharedRegion> OpenSharedRegion(const std::wstring& name, DWORD access,
                                             DWORD viewAccess) {
  KernelHandle mapping(::OpenFileMappingW(access, FALSE, name.c_str()));
  return mapping ? Map(std::move(mapping), viewAccess) : std::nullopt;
}

}  // namespace postmarker
