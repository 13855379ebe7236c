// How many objects of each kind this process has, by means that count under Wine as well, where
// GetProcessHandleCount and GetGuiResources always say 0.
#pragma once

#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <ostream>
#include <vector>

namespace postmarker::test {

namespace object_count_detail {

// How many new objects the system still makes.
template <class Make, class Destroy>
int64_t CountRoom(Make make, Destroy destroy) {
  std::vector<decltype(make())> made;
  while (const auto object = make()) {
    made.push_back(object);
  }
  std::for_each(made.begin(), made.end(), destroy);
  return static_cast<int64_t>(made.size());
}

}  // namespace object_count_detail

// Handles of the kernel: threads, events, files, keys and the like. One number after the other is
// tried: the system's list of the handles of all processes ends Wine's server if one of them has
// none at that moment, as when it starts. New handles take the lowest numbers, so that a leak is
// seen below the limit.
inline int64_t CountKernelHandles() {
  constexpr uintptr_t kMaxHandles = 4'096;
  int64_t count = 0;
  for (uintptr_t number = 1; number <= kMaxHandles; ++number) {
    DWORD flags = 0;
    count += ::GetHandleInformation(reinterpret_cast<HANDLE>(number * 4), &flags) ? 1 : 0;
  }
  return count;
}

// Windows, menus, icons, hooks. What counts is the difference between two counts: this is how many
// the system refuses to make beyond, below 0. Wine shares the room between the processes of a
// desktop. Nobody else may need such an object meanwhile.
inline int64_t CountUserObjects() {
  return -object_count_detail::CountRoom([] { return ::CreateMenu(); },
                                         [](HMENU menu) { ::DestroyMenu(menu); });  // owner
}

// Fonts, brushes, bitmaps, device contexts, regions; the same kind of number.
inline int64_t CountGdiObjects() {
  return -object_count_detail::CountRoom([] { return ::CreatePen(PS_SOLID, 1, RGB(1, 2, 3)); },
                                         [](HPEN pen) { ::DeleteObject(pen); });  // owner
}

// What is in use of all heaps of the process, that of the C library too.
struct HeapUse {
  int64_t blocks = 0;
  int64_t bytes = 0;
};

inline HeapUse ReadHeapUse() {
  std::vector<HANDLE> heaps(64);
  heaps.resize(std::min<size_t>(heaps.size(), ::GetProcessHeaps(64, heaps.data())));
  HeapUse use;
  for (const HANDLE heap : heaps) {
    PROCESS_HEAP_ENTRY entry = {};
    ::HeapLock(heap);
    while (::HeapWalk(heap, &entry)) {
      if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0) {
        ++use.blocks;
        use.bytes += entry.cbData;
      }
    }
    ::HeapUnlock(heap);
  }
  return use;
}

struct ObjectCounts {
  int64_t handles = CountKernelHandles();
  int64_t userObjects = CountUserObjects();
  int64_t gdiObjects = CountGdiObjects();
  int64_t heapBlocks = ReadHeapUse().blocks;
};

inline void PrintTo(const ObjectCounts& counts, std::ostream* out) {
  *out << counts.handles << " handles, " << counts.userObjects << " user objects, "
       << counts.gdiObjects << " GDI objects, " << counts.heapBlocks << " heap blocks";
}

}  // namespace postmarker::test
