// A named region of shared memory, mapped.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "ipc/ObjectSecurity_win.h"
#include "support/Handles_win.h"

namespace postmarker {

// The memory lasts while any process has it mapped; the name while any has a handle.
struct SharedRegion {
  KernelHandle mapping;
  FileView view;
  // In bytes, as the system tells of the view: whole pages, so it can be more than was asked for.
  size_t size = 0;

  // Only for a view that was mapped for writing.
  [[nodiscard]] std::span<std::byte> Bytes() const {
    return {static_cast<std::byte*>(const_cast<void*>(view.Get())), size};
  }
};

// Makes a region of at least `size` bytes that did not exist before, mapped for writing.
std::optional<SharedRegion> MakeSharedRegion(const std::wstring& name, uint32_t size,
                                             ObjectSecurity* security);

// Maps a region that somebody else has made. Its size is what the system says: nothing that the
// other side tells about it counts. Nothing if its memory is only reserved, as that can't be read.
std::optional<SharedRegion> OpenSharedRegion(const std::wstring& name, DWORD access,
                                             DWORD viewAccess);

}  // namespace postmarker
