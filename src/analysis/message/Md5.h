// MD5 digests, by the platform's own implementation.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace postmarker {

using Md5Digest = std::array<uint8_t, 16>;

// One digest after the other. Where the platform refuses, digests are all zero. One thread at a
// time.
class Md5 {
 public:
  Md5();
  Md5(const Md5&) = delete;
  Md5& operator=(const Md5&) = delete;
  ~Md5();

  // Begins a digest; what was added since the last one is forgotten.
  void Start();
  void Add(std::string_view bytes);
  // The digest of what was added since Start.
  [[nodiscard]] Md5Digest Finish();

 private:
  struct State;
  std::unique_ptr<State> m_state;
};

// 32 lower-case hexadecimal digits.
std::string DigestText(const Md5Digest& digest);

// The digest of one piece of bytes, as text.
std::string Md5Text(std::string_view bytes);

}  // namespace postmarker
