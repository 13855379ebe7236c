// Turns a message into the features on which a statistical filter works.
#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "analysis/features/HeaderLog.h"
#include "analysis/features/MessageFeatures.h"
#include "analysis/headers/KsMailHeaderParser.h"
#include "analysis/message/Md5.h"
#include "analysis/words/TokenCountMap.h"
#include "analysis/words/WordList.h"
#include "support/TextPool.h"

namespace postmarker {

// One body as it decodes.
struct PartFingerprint {
  std::string digest;  // MD5, 32 lower-case hexadecimal digits
  int32_t length;      // decoded bytes
  std::string contentType;
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
// What the walk keeps stays in proportion to the message. All features together stay below one
// limit (FeatureLimit): if a message that was made for it reaches it, gathering ends, and what was
// gathered stays.
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
  // pairs and triples of neighboring words.
  const TokenCountMap& Tokens() { return Features().Tokens(); }
  // Words of the subject, and of the display names of senders, with their pairs and triples.
  const TokenCountMap& SubjectTokens() { return Features().SubjectTokens(); }
  const TokenCountMap& FromNameTokens() { return Features().FromNameTokens(); }
  // Words in their order: headers, then text.
  const WordList& BodyWords() { return Features().BodyWords(); }
  const WordList& SubjectWords() { return Features().SubjectWords(); }
  const WordList& FromNameWords() { return Features().FromNameWords(); }
  // Link hosts and links of HTML tags; addresses of mailto links.
  const TokenCountMap& HtmlUrls() { return Features().HtmlUrls(); }
  const TokenCountMap& HtmlAddresses() { return Features().HtmlAddresses(); }
  // Words that look like URLs; words with an "@".
  const TokenCountMap& TextUrls() { return Features().TextUrls(); }
  const TokenCountMap& TextAddresses() { return Features().TextAddresses(); }
  const TextStats& Stats() { return Features().Stats(); }
  // False if the message has more features than were gathered.
  bool HasAllFeatures() { return Features().AreComplete(); }

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
  // False. A class that derives from this one and overrides OnRawByte or OnBodyByte says true.
  [[nodiscard]] bool WantsSingleBytes() const override;

 private:
  struct FingerprintRecord {
    Md5Digest digest;
    int32_t length;
    uint32_t typeOffset;  // in m_fingerprintTypes
    uint32_t typeLength;
  };

  static constexpr size_t kHashBufferSize = 65536;
  static constexpr size_t kHashBufferFull = 65535;

  const MessageFeatures& Features();
  void AskHelpers();
  void AskHtmlHelper();
  void AskPdfHelper();
  void NoteHeaders(const HeaderMap& headers);
  void AddFingerprint();
  void FlushHashBuffer();

  std::deque<FingerprintRecord> m_fingerprints;
  TextPool m_fingerprintTypes;
  bool m_digestOpen = false;
  Md5 m_digest;
  int32_t m_bodyLength = 0;
  std::array<char, kHashBufferSize> m_hashBuffer;
  int32_t m_hashBufferUsed = 0;
  HtmlToText m_htmlToText = nullptr;
  PdfHelper* m_pdfHelper = nullptr;
  HeaderLog m_headerSources;  // subjects and senders, whose tokens are counted later
  std::vector<HelperText> m_htmlTexts;
  std::vector<std::string> m_pdfTexts;
  MessageFeatures m_features;
  bool m_featuresPending = false;
};

}  // namespace postmarker
