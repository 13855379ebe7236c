// headers, message and hooks: whole messages.
#include <string>

#include "Commands.h"
#include "Input.h"
#include "analysis/features/KsMailTokenizer.h"
#include "analysis/headers/KsMailHeaderParser.h"
#include "analysis/message/Md5.h"
#include "support/Text.h"

namespace postmarker::inspect {
namespace {

// Writes the order of calls that a subclass of KsMailParser sees; nothing where `json` is null.
class HookRecorder : public KsMailParser {
 public:
  explicit HookRecorder(JsonWriter* json) : m_json(json) {}

  void FlushBytes() {
    if (m_bytes > 0) {
      Write("bytes " + std::to_string(m_level) + " " + std::to_string(m_bytes));
      m_bytes = 0;
    }
  }

 protected:
  ResultCode OnParseBegin() override {
    Note("OnParseBegin");
    return KsMailParser::OnParseBegin();
  }
  ResultCode OnParseEnd() override {
    Note("OnParseEnd");
    return KsMailParser::OnParseEnd();
  }
  void OnBodyByte(uint8_t byte, bool inHeader, int level) override {
    KsMailParser::OnBodyByte(byte, inHeader, level);
    if (!inHeader) {
      m_level = level;
      ++m_bytes;
    }
  }
  void SelectHeaders(HeaderMap* wanted, int level) override {
    Note("SelectHeaders " + std::to_string(level));
    KsMailParser::SelectHeaders(wanted, level);
  }
  ResultCode OnHeaders(HeaderMap* headers, int level, bool afterChildren) override {
    Note("OnHeaders " + std::to_string(level) + (afterChildren ? " true" : " false"));
    return KsMailParser::OnHeaders(headers, level, afterChildren);
  }
  void OnBodyBegin(int level) override {
    Note("OnBodyBegin " + std::to_string(level));
    KsMailParser::OnBodyBegin(level);
  }
  void OnBodyEnd(int level) override {
    Note("OnBodyEnd " + std::to_string(level));
    KsMailParser::OnBodyEnd(level);
  }
  void OnBodyDone(int level) override {
    Note("OnBodyDone " + std::to_string(level));
    KsMailParser::OnBodyDone(level);
  }

 private:
  void Note(const std::string& call) {
    FlushBytes();
    Write(call);
  }
  void Write(const std::string& call) {
    if (m_json != nullptr) {
      m_json->Narrow(call);
    }
  }

  JsonWriter* m_json;
  uint64_t m_bytes = 0;
  int m_level = 0;
};

template <class Parser, class... Helpers>
ResultCode ParseInput(Parser* parser, const std::string& file, Helpers... helpers) {
  if (file == kStandardInput) {
    const std::string_view bytes = StandardInput();
    return parser->Parse(bytes.data(), static_cast<uint32_t>(bytes.size()), helpers...);
  }
  return parser->Parse(WidenUtf8(file).c_str(), helpers...);
}

void WriteHeadersAndHops(JsonWriter* json, ResultCode result, KsMailHeaderParser* parser) {
  json->Key("result").Number(result);
  json->Key("headers").BeginObject();
  const HeaderMap headers = parser->GetHeaders();
  headers.ForEachSorted(
      [json](std::string_view name, std::string_view value) { json->Key(name).Narrow(value); });
  json->EndObject();
  json->Key("hops").BeginArray();
  for (const ReceivedHop& hop : parser->GetHops()) {
    WriteHop(json, hop);
  }
  json->EndArray();
}

void WriteStats(JsonWriter* json, const TextStats& stats) {
  json->Key("stats").BeginObject();
  json->Key("helperCountA").Number(stats.helperCountA);
  json->Key("helperCountB").Number(stats.helperCountB);
  json->Key("firstPartNewTokens").Number(stats.firstPartNewTokens);
  json->Key("maxSpecialDensity").Number(stats.maxSpecialDensity);
  json->Key("rndMacroCount").Number(stats.rndMacroCount);
  json->Key("exeLinkCount").Number(stats.exeLinkCount);
  json->Key("mismatchedLinkCount").Number(stats.mismatchedLinkCount);
  json->EndObject();
}

void WriteFingerprints(JsonWriter* json, const KsMailTokenizer& tokenizer) {
  json->Key("fingerprints").BeginArray();
  for (size_t i = 0; i < tokenizer.FingerprintCount(); ++i) {
    const PartFingerprint fingerprint = tokenizer.Fingerprint(i);
    json->BeginObject();
    json->Key("digest").Narrow(fingerprint.digest);
    json->Key("length").Number(fingerprint.length);
    json->Key("contentType").Narrow(fingerprint.contentType);
    json->EndObject();
  }
  json->EndArray();
}

// The text of a part ends at its first NUL; a blob has all its bytes.
void WriteParts(JsonWriter* json, std::string_view key, const std::vector<std::string>& parts,
                bool isText) {
  json->Key(key).BeginArray();
  for (const std::string& part : parts) {
    const std::string_view bytes = isText ? std::string_view(part.c_str()) : std::string_view(part);
    json->BeginObject();
    json->Key("length").Number(static_cast<int64_t>(bytes.size()));
    json->Key("md5").Narrow(Md5Text(bytes));
    json->EndObject();
  }
  json->EndArray();
}

void WriteMessage(JsonWriter* json, ResultCode result, KsMailTokenizer* tokenizer) {
  json->BeginObject();
  WriteHeadersAndHops(json, result, tokenizer);
  WriteCounts(json, "tokens", tokenizer->Tokens());
  WriteCounts(json, "subjectTokens", tokenizer->SubjectTokens());
  WriteCounts(json, "fromNameTokens", tokenizer->FromNameTokens());
  WriteWords(json, "bodyWords", tokenizer->BodyWords());
  WriteWords(json, "subjectWords", tokenizer->SubjectWords());
  WriteWords(json, "fromNameWords", tokenizer->FromNameWords());
  WriteCounts(json, "htmlUrls", tokenizer->HtmlUrls());
  WriteCounts(json, "htmlAddresses", tokenizer->HtmlAddresses());
  WriteCounts(json, "textUrls", tokenizer->TextUrls());
  WriteCounts(json, "textAddresses", tokenizer->TextAddresses());
  WriteFingerprints(json, *tokenizer);
  WriteStats(json, tokenizer->Stats());
  WriteParts(json, "plainParts", tokenizer->PlainParts(), true);
  WriteParts(json, "htmlParts", tokenizer->HtmlParts(), true);
  WriteParts(json, "pdfParts", tokenizer->PdfBlobs(), false);
  WriteParts(json, "imageParts", tokenizer->ImageBlobs(), false);
  json->EndObject();
}

// Without a document the work is done all the same.
void WalkHops(const KsMailHeaderParser& parser) {
  for ([[maybe_unused]] const ReceivedHop& hop : parser.GetHops()) {
  }
}

}  // namespace

bool RunHeaders(const Arguments& arguments, JsonWriter* json) {
  KsMailHeaderParser parser;
  const ResultCode result = ParseInput(&parser, arguments.texts.front());
  if (json != nullptr) {
    json->BeginObject();
    WriteHeadersAndHops(json, result, &parser);
    json->EndObject();
  } else {
    WalkHops(parser);
  }
  return true;
}

bool RunMessage(const Arguments& arguments, JsonWriter* json) {
  // One object for all messages, as in a program that reads many.
  static KsMailTokenizer tokenizer;
  const ResultCode result =
      ParseInput(&tokenizer, arguments.texts.front(), static_cast<HtmlToText>(nullptr),
                 static_cast<PdfHelper*>(nullptr));
  tokenizer.Tokens();
  if (json != nullptr) {
    WriteMessage(json, result, &tokenizer);
  } else {
    WalkHops(tokenizer);
  }
  return true;
}

bool RunHooks(const Arguments& arguments, JsonWriter* json) {
  const Input input(arguments.texts.front());
  HookRecorder recorder(json);
  if (json != nullptr) {
    json->BeginArray();
  }
  recorder.ParseBuffer(input.Bytes().data(), static_cast<uint32_t>(input.Bytes().size()));
  if (json != nullptr) {
    json->EndArray();
  }
  return true;
}

}  // namespace postmarker::inspect
