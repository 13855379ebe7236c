#include "analysis/SequenceEstimate.h"

#include <cmath>
#include <cstdint>
#include <vector>

#include "analysis/TextHash.h"

namespace postmarker {
namespace {

constexpr size_t kMostPlaces = size_t{1} << 18;

// Linear counting: how many places of a bitmap stay free tells how many different hashes were seen.
// Of very many, those are left out that do not end in some zero bits.
class DistinctCounter {
 public:
  explicit DistinctCounter(size_t most) {
    while ((most >> m_sampleBits) >= kMostPlaces) {
      ++m_sampleBits;
    }
    m_seen.resize((most >> m_sampleBits) + 1);
    m_free = m_seen.size();
  }

  void See(TextHash hash) {
    const uint32_t bits = hash.Bits();
    if ((bits & ((1U << m_sampleBits) - 1)) == 0) {
      const auto place = static_cast<size_t>((uint64_t{bits} * m_seen.size()) >> 32);
      m_free -= m_seen[place] ? 0 : 1;
      m_seen[place] = true;
    }
  }

  [[nodiscard]] size_t Estimate() const {
    const auto places = static_cast<double>(m_seen.size());
    const auto free = static_cast<double>(m_free > 0 ? m_free : 1);
    return static_cast<size_t>(std::llround(places * std::log(places / free))) << m_sampleBits;
  }

 private:
  std::vector<bool> m_seen;
  size_t m_free = 0;
  unsigned m_sampleBits = 0;
};

}  // namespace

size_t EstimateSequences(const WordList& words) {
  DistinctCounter counter(3 * words.Size());
  TextHash first;
  TextHash second;
  size_t secondLength = 0;
  size_t number = 0;
  for (const std::string_view word : words) {
    const TextHash third(word);
    const TextHash pair = second.Joined(third, word.size());
    if (number > 0) {
      counter.See(pair);
    }
    if (number > 1) {
      counter.See(first.Joined(third, word.size()));
      counter.See(first.Joined(second, secondLength).Joined(third, word.size()));
    }
    first = second;
    second = third;
    secondLength = word.size();
    ++number;
  }
  return counter.Estimate();
}

}  // namespace postmarker
