// Classes of bytes and case, as the C locale has them, whatever locale the host process runs in.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace postmarker {

enum ByteClass : uint8_t {
  kSpaceByte = 1 << 0,    // what isspace accepts
  kAlnumByte = 1 << 1,    // ASCII letters and digits
  kUpperByte = 1 << 2,    // ASCII capital letters
  kWordByte = 1 << 3,     // may stand in a word
  kJointByte = 1 << 4,    // joins a word under conditions: . , @ " ' ! -
  kNumberByte = 1 << 5,   // may stand in a number
  kSpecialByte = 1 << 6,  // counts for the density of special characters
};

namespace detail {

constexpr void Mark(std::array<uint8_t, 256>* table, std::string_view bytes, ByteClass byteClass) {
  for (const char c : bytes) {
    (*table)[static_cast<unsigned char>(c)] |= byteClass;
  }
}

constexpr void MarkRange(std::array<uint8_t, 256>* table, int first, int last, int classes) {
  for (int c = first; c <= last; ++c) {
    (*table)[static_cast<size_t>(c)] |= static_cast<uint8_t>(classes);
  }
}

constexpr std::array<uint8_t, 256> MakeByteClasses() {
  std::array<uint8_t, 256> table = {};
  Mark(&table, " \t\n\v\f\r", kSpaceByte);
  MarkRange(&table, '0', '9', kAlnumByte | kWordByte | kNumberByte);
  MarkRange(&table, 'A', 'Z', kAlnumByte | kWordByte | kUpperByte);
  MarkRange(&table, 'a', 'z', kAlnumByte | kWordByte);
  Mark(&table, "!-'\"$.,@", kWordByte);
  // Deliberate: of the bytes beyond ASCII only these are word characters; 0xF7, 0xFF and all below
  // 0xBE part words, whatever letters some character set has there.
  MarkRange(&table, 0xBE, 0xF6, kWordByte);
  MarkRange(&table, 0xF8, 0xFE, kWordByte);
  Mark(&table, ".,@\"'!-", kJointByte);
  Mark(&table, ".,$-:;!&", kNumberByte);
  Mark(&table, "\xA9!&*-.1@_`|~", kSpecialByte);
  return table;
}

constexpr std::array<char, 256> MakeLowerCase() {
  std::array<char, 256> table = {};
  for (size_t c = 0; c < table.size(); ++c) {
    table[c] = static_cast<char>(c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c);
  }
  return table;
}

}  // namespace detail

inline constexpr std::array<uint8_t, 256> kByteClasses = detail::MakeByteClasses();
inline constexpr std::array<char, 256> kLowerCase = detail::MakeLowerCase();

constexpr uint8_t ClassesOf(char c) {
  return kByteClasses[static_cast<unsigned char>(c)];
}
constexpr bool Is(char c, ByteClass byteClass) {
  return (ClassesOf(c) & byteClass) != 0;
}
constexpr char LowerByte(char c) {
  return kLowerCase[static_cast<unsigned char>(c)];
}

// The text with its ASCII capitals in lower case.
inline std::string LowerText(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(), LowerByte);
  return lower;
}

// True if the texts are equal but for the case of ASCII letters.
inline bool EqualNoCase(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
           return LowerByte(x) == LowerByte(y);
         });
}

// The text without the bytes at its two ends for which `drop` holds.
template <class Predicate>
constexpr std::string_view TrimWhere(std::string_view text, Predicate drop) {
  while (!text.empty() && drop(text.front())) {
    text.remove_prefix(1);
  }
  while (!text.empty() && drop(text.back())) {
    text.remove_suffix(1);
  }
  return text;
}

constexpr std::string_view TrimSpace(std::string_view text) {
  return TrimWhere(text, [](char c) { return Is(c, kSpaceByte); });
}

constexpr std::string_view TrimByte(std::string_view text, char byte) {
  return TrimWhere(text, [byte](char c) { return c == byte; });
}

// Calls visit(label) for each part of `text` between dots that is not empty, from left to right.
template <class Visit>
void ForEachLabel(std::string_view text, Visit visit) {
  while (!text.empty()) {
    const size_t dot = text.find('.');
    if (const std::string_view label = text.substr(0, dot); !label.empty()) {
      visit(label);
    }
    text.remove_prefix(dot == std::string_view::npos ? text.size() : dot + 1);
  }
}

}  // namespace postmarker
