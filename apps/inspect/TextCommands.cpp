// words, html, addresses, domain, received and decode: pieces of text.
#include <string>
#include <string_view>

#include "Commands.h"
#include "Input.h"
#include "analysis/headers/AddressList.h"
#include "analysis/message/Decoders.h"
#include "analysis/words/DomainTable.h"
#include "analysis/words/HtmlTokens.h"
#include "analysis/words/TextTokens.h"

namespace postmarker::inspect {
namespace {

struct TextFeatures {
  TokenCountMap tokens;
  WordList words;
  TokenCountMap urls;
  TokenCountMap addresses;
};

void WriteFeatures(JsonWriter* json, const TextFeatures& features) {
  WriteCounts(json, "tokens", features.tokens);
  WriteWords(json, "words", features.words);
  WriteCounts(json, "urls", features.urls);
  WriteCounts(json, "addresses", features.addresses);
}

// Calls write(line) for each line of a text, for the items of an array. Lines end at LF; a last one
// without it counts if it is not empty.
template <class Write>
void WriteLines(std::string_view text, JsonWriter* json, Write write) {
  if (json != nullptr) {
    json->BeginArray();
  }
  while (!text.empty()) {
    const size_t end = text.find('\n');
    write(text.substr(0, end));
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  }
  if (json != nullptr) {
    json->EndArray();
  }
}

}  // namespace

bool RunWords(const Arguments& arguments, JsonWriter* json) {
  const Input input(arguments.texts.front());
  TextFeatures features;
  Tokenize(input.Bytes(), &features.tokens, &features.words, &features.urls, &features.addresses);
  const int32_t density = MaxSpecialDensity(input.Bytes());
  if (json != nullptr) {
    json->BeginObject();
    WriteFeatures(json, features);
    json->Key("maxSpecialDensity").Number(density);
    json->EndObject();
  }
  return true;
}

bool RunHtml(const Arguments& arguments, JsonWriter* json) {
  const Input input(arguments.texts.front());
  TextFeatures features;
  HtmlStats stats;
  ScanHtml(input.Bytes(), &features.tokens, &features.words, &features.urls, &features.addresses,
           &stats);
  if (json != nullptr) {
    json->BeginObject();
    WriteFeatures(json, features);
    json->Key("exeLinkCount").Number(stats.exeLinkCount);
    json->Key("mismatchedLinkCount").Number(stats.mismatchedLinkCount);
    json->EndObject();
  }
  return true;
}

bool RunAddresses(const Arguments& arguments, JsonWriter* json) {
  const Input input(arguments.texts.front());
  AddressMap addresses;
  ParseAddressList(input.Bytes(), &addresses);
  if (json != nullptr) {
    json->BeginObject();
    for (const auto& [address, displayName] : addresses) {
      json->Key(address).Narrow(displayName);
    }
    json->EndObject();
  }
  return true;
}

bool RunDomain(const Arguments& arguments, JsonWriter* json) {
  const Input input(arguments.texts.front());
  WriteLines(input.Bytes(), json, [json](std::string_view line) {
    const std::string_view domain = GetRegisteredDomain(line);
    if (json != nullptr) {
      json->Narrow(domain);
    }
  });
  return true;
}

bool RunReceived(const Arguments& arguments, JsonWriter* json) {
  const Input input(arguments.texts.front());
  WriteLines(input.Bytes(), json, [json](std::string_view line) {
    ReceivedHop hop;
    ParseReceivedLine(line, &hop.first, &hop.second);
    if (json != nullptr) {
      WriteHop(json, hop);
    }
  });
  return true;
}

bool RunDecode(const Arguments& arguments, JsonWriter* json) {
  const std::string& kind = arguments.texts.front();
  const Input input(arguments.texts.back());
  const std::string_view in = input.Bytes();
  std::string out(in.size() + 1, '\0');
  size_t written = 0;
  size_t consumed = 0;
  if (kind == "words") {
    consumed = DecodeEncodedWords(in, out.data(), &written);
  } else if (kind == "quoted-printable") {
    written = consumed = DecodeQuotedPrintable(in, out.data(), in.size(), false);
  } else if (kind == "base64") {
    written = consumed = DecodeBase64(in, out.data(), in.size(), false);
  } else {
    return false;
  }
  if (json != nullptr) {
    json->BeginObject();
    json->Key("bytes").Narrow(std::string_view(out).substr(0, written));
    json->Key("consumed").Number(static_cast<int64_t>(consumed));
    json->EndObject();
  }
  return true;
}

}  // namespace postmarker::inspect
