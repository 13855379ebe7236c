// KsMailTokenizer: features of messages that have too many of them to be held.
#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>

#include "analysis/KsMailTokenizer.h"
#include "analysis/SequenceSink.h"
#include "support/UniqueHandle.h"

namespace postmarker {
namespace {

// What an object and its features take at most, with something to spare for what single steps need:
// with the message itself that makes 6 times its size and 2 MiB.
constexpr uint64_t kMessageFactor = 5;
constexpr size_t kFixedMemory = (size_t{2} << 20) - (size_t{96} << 10);
constexpr size_t kLeastMemory = size_t{1} << 19;

// A walk through features that are not held leaves an eighth of that free: what was given back
// before it begins does not all go back to the system.
constexpr size_t kWindowEighths = 7;

size_t MemoryOf(const std::vector<std::string>& parts) {
  size_t memory = parts.capacity() * sizeof(std::string);
  for (const std::string& part : parts) {
    memory += part.capacity();
  }
  return memory;
}

}  // namespace

std::array<TokenCountMap*, 7> KsMailTokenizer::AllMaps() {
  return {&m_tokens,        &m_subjectTokens, &m_fromNameTokens, &m_htmlUrls,
          &m_htmlAddresses, &m_textUrls,      &m_textAddresses};
}

std::array<WordList*, 3> KsMailTokenizer::AllLists() {
  return {&m_bodyWords, &m_subjectWords, &m_fromNameWords};
}

// What is left for features besides what the walk has kept.
size_t KsMailTokenizer::FeatureMemory() const {
  size_t held = sizeof(*this) + GetHeaders().Memory() + m_headerSources.Memory() +
                m_fingerprints.size() * sizeof(FingerprintRecord) + m_fingerprintTypes.Reserved();
  for (const auto* const parts : {&PlainParts(), &HtmlParts(), &PdfBlobs(), &ImageBlobs()}) {
    held += MemoryOf(*parts);
  }
  const uint64_t most = kMessageFactor * m_messageSize + kFixedMemory;
  return static_cast<size_t>(
      std::clamp<uint64_t>(most - std::min<uint64_t>(most, held), kLeastMemory, SIZE_MAX));
}

size_t KsMailTokenizer::WindowMemory() const {
  return FeatureMemory() / 8 * kWindowEighths;
}

void KsMailTokenizer::ReadFeaturesThrough() {
  const size_t memory = WindowMemory();
  for (TokenCountMap* const map : AllMaps()) {
    const bool once = map == &m_tokens || map == &m_subjectTokens || map == &m_fromNameTokens;
    map->ReadThrough([this, map](KeyWindow* window) { RunPass(map, window); },
                     once ? KeyWindow::Rule::kOnce : KeyWindow::Rule::kSum, memory);
  }
  for (WordList* const list : AllLists()) {
    list->ReadThrough([this, list](WordSink* sink) { RunWordPass(list, sink); }, memory);
  }
}

// What need not be read for a map or list is left out.
KsMailTokenizer::Sources KsMailTokenizer::SourcesOf(const void* feature) const {
  Sources sources;
  if (feature == &m_subjectTokens || feature == &m_subjectWords) {
    sources.senders = sources.parts = false;
  } else if (feature == &m_fromNameTokens || feature == &m_fromNameWords) {
    sources.subjects = sources.parts = false;
  } else if (feature == &m_htmlUrls || feature == &m_htmlAddresses) {
    sources.subjects = sources.senders = false;
  }
  return sources;
}

void KsMailTokenizer::RunPass(const TokenCountMap* target, KeyWindow* window) {
  SequenceSink body(window, {});
  SequenceSink subject(window, target == &m_tokens ? "subject*" : "");
  SequenceSink fromName(window, target == &m_tokens ? "fromname*" : "");
  for (TokenCountMap* const map : AllMaps()) {
    map->DivertTo(map == target ? window : nullptr);
  }
  m_bodyWords.DivertTo(target == &m_tokens ? &body : nullptr);
  const bool subjects = target == &m_tokens || target == &m_subjectTokens;
  m_subjectWords.DivertTo(subjects ? &subject : nullptr);
  const bool names = target == &m_tokens || target == &m_fromNameTokens;
  m_fromNameWords.DivertTo(names ? &fromName : nullptr);
  const ScopeExit end([this] { DropAll(); });
  CountEverything(SourcesOf(target), nullptr);
}

void KsMailTokenizer::RunWordPass(const WordList* target, WordSink* sink) {
  for (WordList* const list : AllLists()) {
    list->DivertTo(list == target ? sink : nullptr);
  }
  const ScopeExit end([this] { DropAll(); });
  CountEverything(SourcesOf(target), nullptr);
}

// What is counted from now on goes nowhere.
void KsMailTokenizer::DropAll() {
  for (TokenCountMap* const map : AllMaps()) {
    map->DivertTo(nullptr);
  }
  for (WordList* const list : AllLists()) {
    list->DivertTo(nullptr);
  }
}

const TextStats& KsMailTokenizer::Stats() {
  CollectFeatures();
  if (std::exchange(m_firstPartPending, false)) {
    m_stats.firstPartNewTokens = FirstPartNewTokens();
  }
  return m_stats;
}

// The keys that come first in the first part, and not in a header already.
int32_t KsMailTokenizer::FirstPartNewTokens() {
  const bool isHtml = !HtmlParts().empty();
  const std::vector<std::string>& parts = isHtml ? HtmlParts() : PlainParts();
  const HelperText* const helper = isHtml && !m_htmlTexts.empty() ? &m_htmlTexts.front() : nullptr;
  if (parts.empty() || (helper != nullptr && helper->failed)) {
    return 0;
  }
  size_t found = 0;
  KeyWindow window(KeyWindow::Rule::kOnce, WindowMemory());
  window.BeginBehind({});
  for (;;) {
    m_tokens.DivertTo(&window);
    const ScopeExit end([this] { DropAll(); });
    CountHeaders(Sources());
    window.BeginNew();
    ProcessTextPart(parts.front(), helper, isHtml, nullptr);
    found += window.NewKeys();
    if (!window.BeginNext()) {
      return static_cast<int32_t>(found);
    }
  }
}

}  // namespace postmarker
