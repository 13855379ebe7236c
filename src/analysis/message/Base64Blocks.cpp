#include "analysis/message/Base64Blocks.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#include "analysis/message/Decoders.h"

#if defined(__x86_64__) || defined(__i386__)
#include <immintrin.h>
#endif

namespace postmarker {
namespace {

constexpr size_t kGroup = 3;
constexpr size_t kDigits = 4;

// Two digits for each twelve bits.
using DigitPairs = std::array<std::array<char, 2>, 4096>;

constexpr DigitPairs MakeDigitPairs() {
  DigitPairs pairs = {};
  for (size_t bits = 0; bits < pairs.size(); ++bits) {
    pairs[bits] = {kBase64Alphabet[bits >> 6], kBase64Alphabet[bits & 0x3F]};
  }
  return pairs;
}

constexpr DigitPairs kDigitPairs = MakeDigitPairs();

void EncodeByTable(const char* in, size_t groups, char* out) {
  for (size_t i = 0; i < groups; ++i, in += kGroup, out += kDigits) {
    const uint32_t bits = static_cast<uint32_t>(static_cast<unsigned char>(in[0])) << 16 |
                          static_cast<uint32_t>(static_cast<unsigned char>(in[1])) << 8 |
                          static_cast<uint32_t>(static_cast<unsigned char>(in[2]));
    std::memcpy(out, kDigitPairs[bits >> 12].data(), 2);
    std::memcpy(out + 2, kDigitPairs[bits & 0xFFF].data(), 2);
  }
}

#if defined(__x86_64__) || defined(__i386__)

constexpr size_t kBlockBytes = 12;  // of the 16 that are loaded
constexpr size_t kLoadedBytes = 16;

// The values of sixteen digits, from the twelve bytes in front.
[[gnu::target("ssse3")]] __m128i DigitValues(__m128i bytes) {
  // Each group of three as b1 b0 b2 b1, so that every digit lies within one half.
  const __m128i spread =
      _mm_shuffle_epi8(bytes, _mm_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10));
  // Multiplying shifts the halves apart.
  const __m128i odd = _mm_mulhi_epu16(_mm_and_si128(spread, _mm_set1_epi32(0x0FC0FC00)),
                                      _mm_set1_epi32(0x04000040));
  const __m128i even = _mm_mullo_epi16(_mm_and_si128(spread, _mm_set1_epi32(0x003F03F0)),
                                       _mm_set1_epi32(0x01000010));
  return _mm_or_si128(odd, even);
}

// Each digit is its value plus an offset that depends on the range of the value.
[[gnu::target("ssse3")]] __m128i Digits(__m128i values) {
  const __m128i offsets =
      _mm_setr_epi8('a' - 26, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52,
                    '0' - 52, '0' - 52, '0' - 52, '+' - 62, '/' - 63, 'A', 0, 0);
  // 0 for small letters, 1 to 10 for numbers, 11 and 12 for the signs, 13 for capitals.
  const __m128i range = _mm_subs_epu8(values, _mm_set1_epi8(51));
  const __m128i isCapital = _mm_cmpgt_epi8(_mm_set1_epi8(26), values);
  const __m128i kind = _mm_or_si128(range, _mm_and_si128(isCapital, _mm_set1_epi8(13)));
  return _mm_add_epi8(values, _mm_shuffle_epi8(offsets, kind));
}

// Gives the number of groups that it did.
[[gnu::target("ssse3")]] size_t EncodeBlocks(const char* in, size_t size, size_t groups,
                                             char* out) {
  size_t done = 0;
  while (size >= kLoadedBytes && groups - done >= kBlockBytes / kGroup) {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), Digits(DigitValues(bytes)));
    in += kBlockBytes;
    size -= kBlockBytes;
    out += kBlockBytes / kGroup * kDigits;
    done += kBlockBytes / kGroup;
  }
  return done;
}

size_t EncodeBlocksIfPossible(const char* in, size_t size, size_t groups, char* out) {
  return __builtin_cpu_supports("ssse3") != 0 ? EncodeBlocks(in, size, groups, out) : 0;
}

#else

size_t EncodeBlocksIfPossible(const char*, size_t, size_t, char*) {
  return 0;
}

#endif

}  // namespace

size_t EncodeBase64Groups(std::string_view in, size_t groups, char* out) {
  groups = std::min(groups, in.size() / kGroup);
  const size_t done = EncodeBlocksIfPossible(in.data(), in.size(), groups, out);
  EncodeByTable(in.data() + done * kGroup, groups - done, out + done * kDigits);
  return groups;
}

}  // namespace postmarker
