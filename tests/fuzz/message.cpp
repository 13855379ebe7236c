// Whole messages with all hooks, in runs and byte by byte: both must give the same.
#include "FuzzTarget.h"
#include "analysis/features/KsMailTokenizer.h"

namespace postmarker::fuzz {
namespace {

// Sees all hooks, and gets its bodies byte by byte.
class Watcher : public KsMailTokenizer {
 public:
  int depth = 0;

 protected:
  [[nodiscard]] bool WantsSingleBytes() const override { return true; }
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
  auto other = b.begin();
  for (const TokenCountMap::Item& item : a) {
    Require(other.HasItem());
    const TokenCountMap::Item same = *other;
    Require(item.key == same.key && item.count == same.count);
    ++other;
  }
  Require(!other.HasItem());
}

void RequireSame(const WordList& a, const WordList& b) {
  auto other = b.begin();
  for (const std::string_view word : a) {
    Require(!(other == b.end()) && word == *other);
    ++other;
  }
  Require(other == b.end());
}

void RequireSame(const TextStats& a, const TextStats& b) {
  Require(a.firstPartNewTokens == b.firstPartNewTokens);
  Require(a.maxSpecialDensity == b.maxSpecialDensity);
  Require(a.rndMacroCount == b.rndMacroCount);
  Require(a.exeLinkCount == b.exeLinkCount);
  Require(a.mismatchedLinkCount == b.mismatchedLinkCount);
}

void RequireSame(KsMailTokenizer* a, KsMailTokenizer* b) {
  RequireSame(a->Tokens(), b->Tokens());
  RequireSame(a->SubjectTokens(), b->SubjectTokens());
  RequireSame(a->FromNameTokens(), b->FromNameTokens());
  RequireSame(a->HtmlUrls(), b->HtmlUrls());
  RequireSame(a->HtmlAddresses(), b->HtmlAddresses());
  RequireSame(a->TextUrls(), b->TextUrls());
  RequireSame(a->TextAddresses(), b->TextAddresses());
  RequireSame(a->BodyWords(), b->BodyWords());
  RequireSame(a->SubjectWords(), b->SubjectWords());
  RequireSame(a->FromNameWords(), b->FromNameWords());
  RequireSame(a->Stats(), b->Stats());
  Require(a->GetHeaders() == b->GetHeaders());
  Require(a->GetHops().CountHops() == b->GetHops().CountHops());
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
