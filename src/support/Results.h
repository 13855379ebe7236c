// The 32-bit result codes that operations report: negative is failure.
#pragma once

#include <cstdint>

namespace postmarker {

using ResultCode = int32_t;

inline constexpr ResultCode kOk = 0;
inline constexpr ResultCode kFail = static_cast<ResultCode>(0x80004005);         // E_FAIL
inline constexpr ResultCode kNullPointer = static_cast<ResultCode>(0x80004003);  // E_POINTER

constexpr bool Failed(ResultCode code) {
  return code < 0;
}
constexpr bool Succeeded(ResultCode code) {
  return code >= 0;
}

}  // namespace postmarker
