#include "support/TraceLine.h"

#include <algorithm>
#include <cwchar>

namespace postmarker {

std::wstring FormatTraceLine(const TraceTime& time, const std::wstring& module, int32_t command,
                             uint32_t elapsed) {
  constexpr size_t kModuleWidth = 30;
  wchar_t head[64];
  wchar_t tail[64];
  std::swprintf(head, std::size(head), L"%hu/%02hu/%02hu %02hu:%02hu:%02hu.%03hu | ", time.year,
                time.month, time.day, time.hour, time.minute, time.second, time.millisecond);
  std::swprintf(tail, std::size(tail), L" | %5i | %5ums\r\n", static_cast<int>(command),
                static_cast<unsigned>(elapsed));
  std::wstring line = std::wstring(head).append(module);
  line.append(kModuleWidth - std::min(kModuleWidth, module.size()), L' ');
  return line.append(tail);
}

uint32_t TraceMilliseconds(uint32_t start, uint32_t end) {
  constexpr uint32_t kUnitsPerMillisecond = 10'000;
  return (end - start) / kUnitsPerMillisecond;
}

}  // namespace postmarker
