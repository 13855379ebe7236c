// What this process holds: blocks of its heaps, handles, GDI objects.
#pragma once

#include <windows.h>

#include <winternl.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <vector>

namespace postmarker::test {

// Busy bytes of all heaps of the process. Pages of memory would tell less: heaps and the stacks of
// threads take and return them by pieces.
inline size_t HeapBytes() {
  std::array<HANDLE, 64> heaps = {};
  const DWORD count = ::GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data());
  size_t bytes = 0;
  for (DWORD i = 0; i < std::min<DWORD>(count, heaps.size()); ++i) {
    ::HeapLock(heaps[i]);
    PROCESS_HEAP_ENTRY entry = {};
    while (::HeapWalk(heaps[i], &entry) != FALSE) {
      bytes += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0 ? entry.cbData : 0;
    }
    ::HeapUnlock(heaps[i]);
  }
  return bytes;
}

// Open handles. The documented way, GetProcessHandleCount, gives 0 under Wine.
inline size_t HandleCount() {
  struct Entry {
    ULONG process;
    UCHAR type;
    UCHAR flags;
    USHORT value;
    void* object;
    ACCESS_MASK access;
  };
  using Query = NTSTATUS(NTAPI*)(SYSTEM_INFORMATION_CLASS, void*, ULONG, ULONG*);
  const auto query = reinterpret_cast<Query>(reinterpret_cast<void*>(
      ::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "NtQuerySystemInformation")));
  constexpr auto kHandleInformation = static_cast<SYSTEM_INFORMATION_CLASS>(16);
  constexpr auto kTooSmall = static_cast<NTSTATUS>(0xC0000004);
  std::vector<uint64_t> table(1024);
  NTSTATUS status = kTooSmall;
  while (status == kTooSmall) {
    table.resize(table.size() * 2);
    status = query(kHandleInformation, table.data(),
                   static_cast<ULONG>(table.size() * sizeof(uint64_t)), nullptr);
  }
  if (status != 0) {
    throw std::runtime_error("the system does not tell its handles");
  }
  const auto* bytes = reinterpret_cast<const char*>(table.data());
  const auto* entries = reinterpret_cast<const Entry*>(bytes + sizeof(void*));
  const ULONG count = *reinterpret_cast<const ULONG*>(bytes);
  const DWORD own = ::GetCurrentProcessId();
  return static_cast<size_t>(std::count_if(
      entries, entries + count, [own](const Entry& entry) { return entry.process == own; }));
}

// GDI objects. GetGuiResources gives 0 under Wine, whose table of them is in the process, though
// not where a process of 32 bits finds it: nullopt there.
inline std::optional<size_t> GdiObjectCount() {
  if (const DWORD known = ::GetGuiResources(::GetCurrentProcess(), GR_GDIOBJECTS)) {
    return known;
  }
  struct Entry {
    uint64_t object;
    uint32_t owner;
    uint16_t unique;
    uint8_t type;  // 0 for a free place
    uint8_t flags;
    uint64_t userData;
  };
  constexpr size_t kEntries = 0x4000;
  constexpr size_t kTableInPeb = sizeof(void*) == 8 ? 0xF8 : 0x94;
  const auto* peb = reinterpret_cast<const char*>(::NtCurrentTeb()->ProcessEnvironmentBlock);
  const auto* entries = *reinterpret_cast<const Entry* const*>(peb + kTableInPeb);
  if (entries == nullptr) {
    return std::nullopt;
  }
  return static_cast<size_t>(std::count_if(entries, entries + kEntries,
                                           [](const Entry& entry) { return entry.type != 0; }));
}

}  // namespace postmarker::test
