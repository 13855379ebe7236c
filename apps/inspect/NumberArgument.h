// Numbers among the arguments.
#pragma once

#include <charconv>
#include <cstdint>
#include <string>
#include <system_error>

namespace postmarker::inspect {

// Reads a decimal number that is the whole text. False if it is none or does not fit.
inline bool ReadNumber(const std::string& text, uint32_t* number) {
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, *number);
  return error == std::errc() && stop == end;
}

}  // namespace postmarker::inspect
