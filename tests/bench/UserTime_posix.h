// The processor time that a program spends in its own code.
#pragma once

#include <sys/resource.h>

namespace postmarker::bench {

// Seconds of user time; `who` is RUSAGE_SELF or RUSAGE_CHILDREN (those that were waited for).
inline double UserSeconds(int who) {
  struct rusage usage = {};
  ::getrusage(who, &usage);
  return static_cast<double>(usage.ru_utime.tv_sec) +
         static_cast<double>(usage.ru_utime.tv_usec) * 1e-6;
}

}  // namespace postmarker::bench
