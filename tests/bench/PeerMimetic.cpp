#include <mimetic/mimetic.h>

#include <iterator>

#include "PeerLibraries.h"

namespace postmarker::bench {
namespace {

// Counts what is written to it.
struct Sink {
  using iterator_category = std::output_iterator_tag;
  using value_type = void;
  using difference_type = std::ptrdiff_t;
  using pointer = void;
  using reference = void;

  size_t* count;
  Sink& operator*() { return *this; }
  Sink& operator++() { return *this; }
  Sink& operator++(int) { return *this; }
  Sink& operator=(char /*byte*/) {
    ++*count;
    return *this;
  }
};

void Decode(const mimetic::MimeEntity& entity, size_t* count) {
  const mimetic::Body& body = entity.body();
  const mimetic::istring mechanism = entity.header().contentTransferEncoding().mechanism();
  if (mechanism == "base64") {
    mimetic::Base64::Decoder decoder;
    mimetic::decode(body.begin(), body.end(), decoder, Sink{count});
  } else if (mechanism == "quoted-printable") {
    mimetic::QP::Decoder decoder;
    mimetic::decode(body.begin(), body.end(), decoder, Sink{count});
  } else {
    *count += body.size();
  }
}

void Walk(const mimetic::MimeEntity& entity, bool decode, PeerResult* result) {
  ++result->parts;
  const mimetic::MimeEntityList& parts = entity.body().parts();
  if (decode && parts.empty()) {
    Decode(entity, &result->decodedBytes);
  }
  for (const mimetic::MimeEntity* const part : parts) {
    Walk(*part, decode, result);
  }
}

}  // namespace

PeerResult ReadWithMimetic(std::string_view message, bool decode) {
  PeerResult result;
  const mimetic::MimeEntity entity(message.begin(), message.end());
  Walk(entity, decode, &result);
  return result;
}

}  // namespace postmarker::bench
