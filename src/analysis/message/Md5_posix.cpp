#include <md5.h>

#include "analysis/message/Md5.h"

namespace postmarker {

struct Md5::State {
  MD5_CTX context = {};
};

Md5::Md5() : m_state(std::make_unique<State>()) {
  Start();
}

Md5::~Md5() = default;

void Md5::Start() {
  MD5Init(&m_state->context);
}

void Md5::Add(std::string_view bytes) {
  MD5Update(&m_state->context, reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
}

Md5Digest Md5::Finish() {
  Md5Digest digest = {};
  MD5Final(digest.data(), &m_state->context);
  return digest;
}

}  // namespace postmarker
