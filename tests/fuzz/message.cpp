// Whole messages with all hooks: once in runs and once byte by byte, which must give the same.
#include <vector>

#include "FuzzTarget.h"
#include "analysis/KsMailTokenizer.h"

namespace postmarker::fuzz {
namespace {

// Sees all hooks, and gets its bodies byte by byte.
class Watcher : public KsMailTokenizer {
 public:
  int depth = 0;

 protected:
  ResultCode OnHeaders(HeaderMap* headers, int level, bool afterChildren) override {
    Require(level >= 0 && headers != nullptr);
    return KsMailTokenizer::OnHeaders(headers, level, afterChildren);
  }
  void OnBodyBegin(int level) override {
    Require(depth++ == 0);
    KsMailTokenizer::OnBodyBegin(level);
  }
  void OnBodyByte(uint8_t byte, bool inHeader, int level) override {
    Require(inHeader == (depth == 0));
    KsMailTokenizer::OnBodyByte(byte, inHeader, level);
  }
  void OnBodyDone(int level) override {
    Require(depth-- == 1);
    KsMailTokenizer::OnBodyDone(level);
  }
};

void RequireSame(const TokenCountMap& a, const TokenCountMap& b) {
  Require(a.Size() == b.Size());
  a.ForEach([&](std::string_view key, int32_t count) { Require(b.Count(key) == count); });
}

void RequireSame(KsMailTokenizer* a, KsMailTokenizer* b) {
  RequireSame(a->Tokens(), b->Tokens());
  RequireSame(a->SubjectTokens(), b->SubjectTokens());
  RequireSame(a->FromNameTokens(), b->FromNameTokens());
  RequireSame(a->HtmlUrls(), b->HtmlUrls());
  RequireSame(a->TextUrls(), b->TextUrls());
  Require(a->BodyWords().Size() == b->BodyWords().Size());
  Require(a->GetHeaders() == b->GetHeaders());
  Require(a->GetHops().size() == b->GetHops().size());
  Require(a->PlainParts() == b->PlainParts() && a->HtmlParts() == b->HtmlParts());
  Require(a->PdfBlobs() == b->PdfBlobs() && a->ImageBlobs() == b->ImageBlobs());
  Require(a->FingerprintCount() == b->FingerprintCount());
  for (size_t i = 0; i < a->FingerprintCount(); ++i) {
    Require(a->Fingerprint(i).digest == b->Fingerprint(i).digest);
    Require(a->Fingerprint(i).length == b->Fingerprint(i).length);
  }
}

}  // namespace
}  // namespace postmarker::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace postmarker;
  const char* const bytes = reinterpret_cast<const char*>(data);
  KsMailTokenizer runs;
  fuzz::Watcher watcher;
  const ResultCode result = runs.Parse(bytes, static_cast<uint32_t>(size), nullptr, nullptr);
  fuzz::Require(result == (size == 0 ? kFail : kOk));
  watcher.Parse(bytes, static_cast<uint32_t>(size), nullptr, nullptr);
  fuzz::Require(watcher.depth == 0);
  fuzz::RequireSame(&runs, &watcher);
  return 0;
}
