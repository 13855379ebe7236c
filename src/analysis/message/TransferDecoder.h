// Undoes the transfer encoding of a body while it is read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace postmarker {

// The state of quoted-printable and base64 decoding between two bytes. Bytes may be given one at a
// time or in runs, with the same result. Deliberate: unlike the block decoder it takes upper-case
// digits only, and drops an escape that is none: mail programs write upper case, so what is dropped
// was never text.
class TransferDecoder {
 public:
  void Reset() { *this = TransferDecoder(); }

  // Undoes quoted-printable. False where the byte gives none; otherwise *byte is the decoded one.
  bool DecodeQuotedPrintable(uint8_t* byte);

  // Undoes base64, in the same way. Nothing comes out any more after a "=".
  bool DecodeBase64(uint8_t* byte);

  // A run of bytes; returns the count written to `out`, which never exceeds the input's.
  // `out` may be where the input is.
  size_t DecodeQuotedPrintableRun(std::string_view in, char* out);
  size_t DecodeBase64Run(std::string_view in, char* out);

 private:
  uint8_t m_qpHigh = 0;  // the two characters after an "="
  uint8_t m_qpLow = 0;
  int32_t m_qpState = 0;  // 0 outside an escape; counts characters inside one
  uint32_t m_base64Bits = 0;
  int32_t m_base64Count = 0;  // bits held
  bool m_base64Done = false;  // a "=" was seen
};

}  // namespace postmarker
