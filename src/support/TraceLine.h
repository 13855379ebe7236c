// The line that the trace of commands gets for each command.
#pragma once

#include <cstdint>
#include <string>

namespace postmarker {

// A point in local time.
struct TraceTime {
  uint16_t year;
  uint16_t month;
  uint16_t day;
  uint16_t hour;
  uint16_t minute;
  uint16_t second;
  uint16_t millisecond;
};

// "2026/03/09 07:05:02.045 | Postmarker.dll                 |    21 |    12ms" and a line end.
// `module` is a file name without its folder, `elapsed` counts milliseconds.
std::wstring FormatTraceLine(const TraceTime& time, const std::wstring& module, int32_t command,
                             uint32_t elapsed);

// The milliseconds between two moments of the system's clock, of which only the low 32 bits (in
// units of 100 ns) are given. Deliberate: an interval of more than seven minutes loses a multiple
// of them; commands are over long before.
uint32_t TraceMilliseconds(uint32_t start, uint32_t end);

}  // namespace postmarker
