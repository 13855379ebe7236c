// The trace of the commands that go to the suite's resident process.
#pragma once

#include <windows.h>

#include <cstdint>

namespace postmarker {

// Appends a line to Kestrelon\AccountTools-<user>.log in the application data of all users: UTF-16
// with a byte order mark. `start` is the system time at the command's beginning. The folder is not
// made: where it is missing there is no trace. No failure is reported. Any thread; each line is
// one write at the file's end.
void TraceCommand(int32_t command, const FILETIME& start) noexcept;

}  // namespace postmarker
