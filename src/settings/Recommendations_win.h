// The set of recommendations that the suite has for its user.
#pragma once

#include <cstdint>

namespace postmarker {

// Sets or clears recommendation `number`, counted from 1, taken modulo 32. All processes of the
// suite change the set under one mutex, for which this waits at most 1000 ms. 1 if the set was
// written; 0 if the mutex or the registry refused, or the time was over. Any thread.
int SetRecommendationBit(uint32_t number, bool on);

// The same under a mutex of another name, for tests that hold or break it.
int SetRecommendationBit(const wchar_t* mutexName, uint32_t number, bool on);

}  // namespace postmarker
