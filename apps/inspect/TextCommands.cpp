// words, html, addresses, domain, received and decode: pieces of text.
#include <string>
#include <vector>

#include "Commands.h"
#include "Input.h"
#include "analysis/AddressList.h"
#include "analysis/Decoders.h"
#include "analysis/DomainTable.h"
#include "analysis/HtmlTokens.h"
#include "analysis/TextTokens.h"

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
  std::vector<std::string_view> domains = Lines(input.Bytes());
  for (std::string_view& line : domains) {
    line = GetRegisteredDomain(line);
  }
  if (json != nullptr) {
    json->BeginArray();
    for (const std::string_view domain : domains) {
      json->Narrow(domain);
    }
    json->EndArray();
  }
  return true;
}

bool RunReceived(const Arguments& arguments, JsonWriter* json) {
  const Input input(arguments.texts.front());
  std::vector<ReceivedHop> hops;
  for (const std::string_view line : Lines(input.Bytes())) {
    ReceivedHop& hop = hops.emplace_back();
    ParseReceivedLine(line, &hop.first, &hop.second);
  }
  if (json != nullptr) {
    json->BeginArray();
    for (const ReceivedHop& hop : hops) {
      WriteHop(json, hop);
    }
    json->EndArray();
  }
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
