// KsMailTokenizer: features of messages that have too many of them to be held.
#include <algorithm>
#include <cstdint>
#include <string>

#include "analysis/KsMailTokenizer.h"
#include "analysis/SequenceSink.h"
#include "support/UniqueHandle.h"

namespace postmarker {
namespace {

// What an object and a walk through its features take at most: 4.5 times the message, and a fixed
// amount. With the message itself, what single steps need and what an allocator wastes, that stays
// below 6 times and 2 MiB.
constexpr uint64_t kMessageHalves = 9;
constexpr size_t kFixedMemory = size_t{5} << 18;
constexpr size_t kLeastMemory = size_t{1} << 19;

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
  const auto most = static_cast<size_t>(
      std::min<uint64_t>(kMessageHalves * m_messageSize / 2 + kFixedMemory, SIZE_MAX));
  return std::max(kLeastMemory, most - std::min(most, held));
}

void KsMailTokenizer::ReadFeaturesThrough() {
  const size_t memory = FeatureMemory();
  for (TokenCountMap* const map : AllMaps()) {
    const bool once = map == &m_tokens || map == &m_subjectTokens || map == &m_fromNameTokens;
    map->ReadThrough([this, map](KeyWindow* window) { RunPass(map, window); },
                     once ? KeyWindow::Rule::kOnce : KeyWindow::Rule::kSum, memory);
  }
  for (WordList* const list : AllLists()) {
    list->ReadThrough([this, list](WordSink* sink) { RunWordPass(list, sink); }, memory);
  }
  CountParts(&m_stats);
  m_stats.firstPartNewTokens = FirstPartNewTokens(memory);
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

// The keys that come first in the first part, and not in a header already.
int32_t KsMailTokenizer::FirstPartNewTokens(size_t memory) {
  const bool isHtml = !HtmlParts().empty();
  const std::vector<std::string>& parts = isHtml ? HtmlParts() : PlainParts();
  const HelperText* const helper = isHtml && !m_htmlTexts.empty() ? &m_htmlTexts.front() : nullptr;
  if (parts.empty() || (helper != nullptr && helper->failed)) {
    return 0;
  }
  size_t found = 0;
  KeyWindow window(KeyWindow::Rule::kOnce, memory);
  window.BeginBehind({});
  for (;;) {
    m_tokens.DivertTo(&window);
    const ScopeExit end([this] { DropAll(); });
    CountHeaders(Sources());
    window.BeginNew();
    ProcessTextPart(parts.front(), helper, isHtml, nullptr);
    window.Sort();
    found += window.NewKeys();
    if (window.IsLast()) {
      return static_cast<int32_t>(found);
    }
    window.BeginBehind(window.At(window.Size() - 1).key);
  }
}

}  // namespace postmarker
