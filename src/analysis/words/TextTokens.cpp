#include "analysis/words/TextTokens.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "analysis/words/DomainTable.h"
#include "support/Bytes.h"
#include "support/TextHash.h"

namespace postmarker {
namespace {

// What is longer is cut there, and its rest belongs to no word.
constexpr size_t kMaxWordBytes = 64;
constexpr size_t kWindow = 100;
constexpr size_t kMinCapitals = 2;

struct Word {
  std::string_view text;      // at most kMaxWordBytes bytes
  std::string_view previous;  // the word before it, empty for the first one
  uint8_t anyOf;              // classes that any of its bytes has
  uint8_t allOf;              // classes that all of its bytes have
};

// What a word holds so far of the bytes that join words.
struct Joints {
  int dots = 0;
  int commas = 0;
  int ats = 0;
};

// True if the joining byte at `position` parts words there; otherwise it belongs to the word.
bool JointSplits(std::string_view text, size_t position, Joints* joints) {
  if (position == 0 || !Is(text[position - 1], kAlnumByte)) {
    return true;
  }
  if (position + 1 < text.size() && !Is(text[position + 1], kAlnumByte)) {
    return true;
  }
  switch (text[position]) {
    case '@':
      ++joints->ats;
      return false;
    case '.':
      ++joints->dots;
      return false;
    case ',':
      if (joints->dots > 0) {
        return true;
      }
      ++joints->commas;
      return false;
    default:
      return joints->dots + joints->commas + joints->ats > 0;
  }
}

// Calls emit(Word) for each word of the text.
template <class Emit>
void WalkWords(std::string_view text, Emit emit) {
  std::string_view previous;
  const char* const bytes = text.data();
  const size_t size = text.size();
  for (size_t i = 0; i < size; ++i) {
    const size_t start = i;
    Joints joints;
    Word word = {{}, previous, 0, 0xFF};
    for (; i < size; ++i) {
      const uint8_t classes = ClassesOf(bytes[i]);
      if ((classes & (kWordByte | kJointByte)) != kWordByte &&
          ((classes & kWordByte) == 0 || JointSplits(text, i, &joints))) {
        break;
      }
      word.anyOf |= classes;
      word.allOf &= classes;
    }
    if (i > start) {
      word.text = text.substr(start, std::min(i - start, kMaxWordBytes));
      emit(word);
      previous = word.text;
    }
  }
}

size_t CopyCapitals(std::string_view word, char* out) {
  size_t count = 0;
  for (const char c : word) {
    if (Is(c, kUpperByte)) {
      out[count++] = c;
    }
  }
  return count;
}

// What the dotted words of a text add to the URL and address maps.
class DottedWords {
 public:
  explicit DottedWords(TokenCountMap* urls, TokenCountMap* addresses)
      : m_urls(urls), m_addresses(addresses) {}

  static bool IsDotted(const Word& word) {
    return (word.anyOf & kJointByte) != 0 && (word.allOf & kNumberByte) == 0 &&
           word.text.find('.') != std::string_view::npos;
  }

  void Collect(const Word& word) {
    std::transform(word.text.begin(), word.text.end(), m_lower.begin(), LowerByte);
    std::string_view lower(m_lower.data(), word.text.size());
    if (const size_t at = lower.find('@'); at != std::string_view::npos) {
      if (m_addresses != nullptr) {
        m_addresses->Add(lower, 1);
      }
      lower.remove_prefix(at + 1);
    }
    if (EqualNoCase(word.previous, "http")) {
      m_urls->Add("http://", lower, 1);
    } else if (EqualNoCase(word.previous, "ftp")) {
      m_urls->Add("ftp://", lower, 1);
    } else if (IsUrlLike(&lower)) {
      m_urls->Add(lower, 1);
    }
  }

 private:
  TokenCountMap* m_urls;
  TokenCountMap* m_addresses;
  std::array<char, kMaxWordBytes> m_lower = {};
};

// Counts the words and the pieces of dotted words.
class WordCounter {
 public:
  WordCounter(TokenCountMap* tokens, WordList* words) : m_tokens(tokens), m_words(words) {}

  void CountToken(std::string_view text) {
    m_tokens->Add(text, 1);
    std::array<char, kMaxWordBytes> capitals;
    const size_t count = CopyCapitals(text, capitals.data());
    if (count >= kMinCapitals) {
      m_tokens->Add({capitals.data(), count}, 1);
    }
  }

  void CountWord(const Word& word) {
    if ((word.anyOf & kUpperByte) != 0) {
      CountToken(word.text);
    } else {
      m_tokens->Add(word.text, TextHash(word.text), 1);
    }
    m_words->Append(word.text);
  }

  void CountPieces(std::string_view text) {
    if (const size_t at = text.find('@'); at != std::string_view::npos) {
      m_tokens->Add(text.substr(0, at), 1);
      m_words->Append(text.substr(0, at));
      text.remove_prefix(at + 1);
    }
    while (!text.empty()) {
      const std::string_view piece = text.substr(0, text.find('.'));
      CountToken(piece);
      m_words->Append(piece);
      text.remove_prefix(std::min(text.size(), piece.size() + 1));
    }
  }

 private:
  TokenCountMap* m_tokens;
  WordList* m_words;
};

}  // namespace

void Tokenize(std::string_view text, TokenCountMap* tokens, WordList* words, TokenCountMap* urls,
              TokenCountMap* addresses) {
  WordCounter counter(tokens, words);
  DottedWords dotted(urls, addresses);
  WalkWords(text, [&](const Word& word) {
    if (!DottedWords::IsDotted(word)) {
      counter.CountWord(word);
      return;
    }
    counter.CountToken(word.text);
    dotted.Collect(word);
    counter.CountPieces(word.text);
  });
}

void CollectTextUrls(std::string_view text, TokenCountMap* urls) {
  DottedWords dotted(urls, nullptr);
  WalkWords(text, [&](const Word& word) {
    if (DottedWords::IsDotted(word)) {
      dotted.Collect(word);
    }
  });
}

int32_t MaxSpecialDensity(std::string_view text) {
  int32_t inWindow = 0;
  int32_t most = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    inWindow += Is(text[i], kSpecialByte) ? 1 : 0;
    if (i >= kWindow) {
      inWindow -= Is(text[i - kWindow], kSpecialByte) ? 1 : 0;
    }
    most = std::max(most, inWindow);
  }
  return most;
}

bool IsUrlLike(std::string_view* text) {
  if (const size_t scheme = text->find("://"); scheme != std::string_view::npos) {
    text->remove_prefix(scheme + 3);
    return true;
  }
  return text->find("www.") != std::string_view::npos || !GetRegisteredDomain(*text).empty();
}

std::string UpperLettersOf(std::string_view word, size_t minimum) {
  std::string capitals(word.size(), '\0');
  capitals.resize(CopyCapitals(word, capitals.data()));
  return capitals.size() >= minimum ? capitals : std::string();
}

bool HoldsRndMacro(std::string_view text) {
  constexpr std::string_view kMacro = "%rnd";
  for (size_t at = text.find('%'); at != std::string_view::npos; at = text.find('%', at + 1)) {
    if (EqualNoCase(text.substr(at, kMacro.size()), kMacro)) {
      return true;
    }
  }
  return false;
}

}  // namespace postmarker
