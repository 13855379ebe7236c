// Decoding and encoding of blocks of text: the two transfer encodings and encoded words. All of it
// works on bytes: a charset is never looked at. The room that `out` must have is its capacity and
// one byte more for the closing NUL.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace postmarker {

// The byte of two hexadecimal digits, 0 to 9 and upper-case A to F. False for anything else; *out
// stays.
bool HexPairToByte(char high, char low, uint8_t* out);

inline constexpr std::string_view kBase64Alphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

namespace detail {
constexpr std::array<int8_t, 256> MakeBase64Bits() {
  std::array<int8_t, 256> table = {};
  table.fill(-1);
  for (size_t i = 0; i < kBase64Alphabet.size(); ++i) {
    table[static_cast<unsigned char>(kBase64Alphabet[i])] = static_cast<int8_t>(i);
  }
  return table;
}
inline constexpr std::array<int8_t, 256> kBase64Bits = MakeBase64Bits();
}  // namespace detail

// The 6 bits of a byte of the base64 alphabet, or -1.
constexpr int Base64Bits(char c) {
  return detail::kBase64Bits[static_cast<unsigned char>(c)];
}

// Decodes quoted-printable text, as far as a NUL or the capacity, puts a NUL after it, and returns
// the count of bytes without it. Hexadecimal digits of either case are taken; an "=" without two of
// them is copied. With `wrap`, a CR LF goes out after each 75 columns.
size_t DecodeQuotedPrintable(std::string_view in, char* out, size_t capacity, bool wrap);

// Decodes base64 text up to the first "=", passing over what is not of its alphabet, puts a NUL
// after it, and returns the count of bytes without it. With `keepLineBreaks`, CR and LF are
// copied. Deliberate: a decoded byte 0 is dropped, since what comes out is text that ends with a
// NUL.
size_t DecodeBase64(std::string_view in, char* out, size_t capacity, bool keepLineBreaks);

// Encodes bytes as base64 and adds a NUL; returns the count of bytes without it. With
// `wrap`, a CR LF stands before each group of 57 input bytes, also the first, and two more CR
// LF at the end, each only where the capacity has 2 bytes left.
size_t EncodeBase64(std::string_view in, char* out, size_t capacity, bool wrap);

// Copies `in` to `out` and decodes the encoded words in it. Returns the count of input bytes in
// words that were decoded; *outLength is the count of bytes written. `out` needs room for one byte
// more than `in` has. Null data or a null `out` gives 0 and an *outLength of 0. Deliberate: an
// underscore in a "q" word stays one, and blanks between two words stay.
size_t DecodeEncodedWords(std::string_view in, char* out, size_t* outLength);

}  // namespace postmarker
