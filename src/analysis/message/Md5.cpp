#include "analysis/message/Md5.h"

namespace postmarker {

std::string DigestText(const Md5Digest& digest) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  text.reserve(2 * digest.size());
  for (const uint8_t byte : digest) {
    text.push_back(kDigits[byte >> 4]);
    text.push_back(kDigits[byte & 0xF]);
  }
  return text;
}

std::string Md5Text(std::string_view bytes) {
  Md5 md5;
  md5.Start();
  md5.Add(bytes);
  return DigestText(md5.Finish());
}

}  // namespace postmarker
