// Random texts that are nearly addresses, for comparisons of what judges them.
#pragma once

#include <random>
#include <string>

namespace postmarker::test {

// A random text of up to `most` units of an alphabet.
inline std::wstring RandomText(std::mt19937* random, const std::wstring& alphabet, size_t most) {
  std::wstring text((*random)() % (most + 1), L' ');
  for (wchar_t& unit : text) {
    unit = alphabet[(*random)() % alphabet.size()];
  }
  return text;
}

// Three texts of four have the signs of an address in their places, so that the parts between them
// decide.
inline std::wstring RandomAddressText(std::mt19937* random, const std::wstring& alphabet) {
  if ((*random)() % 4 == 0) {
    return RandomText(random, alphabet, 10);
  }
  std::wstring text = RandomText(random, alphabet, 5);
  text.append(L"@").append(RandomText(random, alphabet, 1));
  return text.append(L".").append(RandomText(random, alphabet, 2));
}

}  // namespace postmarker::test
