// Turns a message into the features on which a statistical filter works.
#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "analysis/FeatureLimit.h"
#include "analysis/HeaderLog.h"
#include "analysis/KsMailHeaderParser.h"
#include "analysis/Md5.h"
#include "analysis/TextPool.h"
#include "analysis/TokenCountMap.h"
#include "analysis/WordList.h"

namespace postmarker {

// One body as it decodes.
struct PartFingerprint {
  std::string digest;  // MD5, 32 lower-case hexadecimal digits
  int32_t length;      // decoded bytes
  std::string contentType;
};

// Counters that tell of tricks in the text.
struct TextStats {
  int32_t helperCountA = 0;  // the HTML helper's counts, summed over parts
  int32_t helperCountB = 0;
  int32_t firstPartNewTokens = 0;  // tokens that the first text part added
  int32_t maxSpecialDensity = 0;   // the largest of any part
  int32_t rndMacroCount = 0;       // header values and text parts that hold "%rnd"
  int32_t exeLinkCount = 0;        // HTML tags with a link that ends in ".exe"
  int32_t mismatchedLinkCount =
      0;  // HTML tags whose following text names another domain than their link
};

// Turns HTML of *length bytes, NUL-terminated, into text, and may set the two counts.
using HtmlToText = void (*)(const char* html, const int32_t* length, std::string* text,
                            int32_t* countB, int32_t* countA);

// Turns PDF documents into text with a library that several tokenizers may share. Without either
// function it is not ready, and PDF parts are skipped.
struct PdfHelper {
  std::mutex lock;  // held while the functions are called
  // A text that `release` frees, or null; `*textLength` is its length.
  const char* (*extract)(const char* pdf, uint32_t length, int32_t* textLength) = nullptr;
  void (*release)(const char* text) = nullptr;
};

// A bag of tokens, word sequences, links, addresses, fingerprints and counters of one message.
// Names, limits and order are those that stored training data was made with.
//
// The walk itself only decodes, fingerprints and keeps what is needed; tokens are counted when
// somebody first asks for a feature (at the end of the walk already where a helper is given, since
// helpers live for one parse). Who reads headers alone pays for headers alone.
//
// What the walk keeps stays in proportion to the message. All features together stay below one limit (FeatureLimit):
// if a message that was made for it reaches it, gathering ends, and what was gathered stays.
//
// One message at a time, one thread per object; results stay until the next Parse. All text is
// bytes.
class KsMailTokenizer : public KsMailHeaderParser {
 public:
  KsMailTokenizer();
  ~KsMailTokenizer() override;

  // Empties all results.
  void Clear();

  // Reads a message, or the message in a file (UTF-16 path). The helpers may be null. 0, or
  // 0x80004005 for no bytes or an unreadable file.
  ResultCode Parse(const wchar_t* path, HtmlToText htmlToText, PdfHelper* pdfHelper);
  ResultCode Parse(const char* data, uint32_t size, HtmlToText htmlToText, PdfHelper* pdfHelper);

  // All tokens: the words of the text as they are; header tokens as "from*", "subject*" and so on;
  // pairs and triples of neighbouring words.
  const TokenCountMap& Tokens() { return Complete(m_tokens); }
  // Words of the subject, and of the display names of senders, with their pairs and triples.
  const TokenCountMap& SubjectTokens() { return Complete(m_subjectTokens); }
  const TokenCountMap& FromNameTokens() { return Complete(m_fromNameTokens); }
  // Words in their order: headers, then text.
  const WordList& BodyWords() { return Complete(m_bodyWords); }
  const WordList& SubjectWords() { return Complete(m_subjectWords); }
  const WordList& FromNameWords() { return Complete(m_fromNameWords); }
  // Link hosts and links of HTML tags; addresses of mailto links.
  const TokenCountMap& HtmlUrls() { return Complete(m_htmlUrls); }
  const TokenCountMap& HtmlAddresses() { return Complete(m_htmlAddresses); }
  // Words that look like URLs; words with an "@".
  const TokenCountMap& TextUrls() { return Complete(m_textUrls); }
  const TokenCountMap& TextAddresses() { return Complete(m_textAddresses); }
  const TextStats& Stats() { return Complete(m_stats); }
  // False if the message has more features than were gathered.
  bool HasAllFeatures() { return Complete(m_hasAllFeatures); }

  [[nodiscard]] size_t FingerprintCount() const { return m_fingerprints.size(); }
  // REQUIRES: `index` is below FingerprintCount().
  [[nodiscard]] PartFingerprint Fingerprint(size_t index) const;

 protected:
  ResultCode OnParseBegin() override;
  ResultCode OnParseEnd() override;
  void OnBodyByte(uint8_t byte, bool inHeader, int level) override;
  void OnBodyRun(std::string_view bytes, int level) override;
  void SelectHeaders(HeaderMap* wanted, int level) override;
  ResultCode OnHeaders(HeaderMap* headers, int level, bool afterChildren) override;
  bool WantsBody() override;
  void OnBodyBegin(int level) override;
  void OnBodyEnd(int level) override;
  void OnBodyDone(int level) override;
  [[nodiscard]] bool WantsSingleBytes() const override;

 private:
  struct FingerprintRecord {
    Md5Digest digest;
    int32_t length;
    uint32_t typeOffset;  // in m_fingerprintTypes
    uint32_t typeLength;
  };

  // What a helper made of a part.
  struct HelperText {
    std::string text;
    int32_t countA = 0;
    int32_t countB = 0;
    bool failed = false;
  };

  static constexpr size_t kHashBufferSize = 65536;
  static constexpr size_t kHashBufferFull = 65535;

  template <class Feature>
  const Feature& Complete(const Feature& feature) {
    CollectFeatures();
    return feature;
  }

  void CollectFeatures();
  void AskHelpers();
  void AskHtmlHelper();
  void AskPdfHelper();
  void CountHeaders();
  void CountParts();
  void CountSequences();
  void ForgetHelperTexts();
  std::array<TokenCountMap*, 7> AllMaps();
  std::array<WordList*, 3> AllLists();
  void NoteHeaders(const HeaderMap& headers);
  void CollectSubjectTokens(std::string_view key, std::string_view value);
  void CollectSenderTokens(std::string_view key, std::string_view label, std::string_view value);
  void CollectAddressTokens(std::string_view label, std::string_view address);
  void CollectWords(std::string_view text, const std::string& prefix, TokenCountMap* ownTokens,
                    WordList* ownWords);
  void CollectNameTokens(std::string_view key, std::string_view displayName);
  void ProcessTextPart(const std::string& part, const HelperText* helper, bool isHtml,
                       TextStats* stats);
  void TokenizeText(std::string_view text);
  void AddFingerprint();
  void FlushHashBuffer();

  FeatureLimit m_limit;  // of the maps and lists that follow
  TokenCountMap m_tokens;
  TokenCountMap m_subjectTokens;
  TokenCountMap m_fromNameTokens;
  WordList m_bodyWords;
  WordList m_subjectWords;
  WordList m_fromNameWords;
  TokenCountMap m_htmlUrls;
  TokenCountMap m_htmlAddresses;
  TokenCountMap m_textUrls;
  TokenCountMap m_textAddresses;
  std::deque<FingerprintRecord> m_fingerprints;
  TextPool m_fingerprintTypes;
  TextStats m_stats;
  bool m_digestOpen = false;
  Md5 m_digest;
  int32_t m_bodyLength = 0;
  std::array<char, kHashBufferSize> m_hashBuffer;
  int32_t m_hashBufferUsed = 0;
  HtmlToText m_htmlToText = nullptr;
  PdfHelper* m_pdfHelper = nullptr;
  HeaderLog m_headerSources;  // headers whose tokens are counted later
  std::vector<HelperText> m_htmlTexts;
  std::vector<std::string> m_pdfTexts;
  bool m_pdfFailed = false;
  bool m_featuresPending = false;
  bool m_hasAllFeatures = true;
  TokenCountMap m_localTokens;
  WordList m_localWords;
};

}  // namespace postmarker
