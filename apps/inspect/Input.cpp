#include "Input.h"

#include <array>
#include <cstdio>

#include "support/Text.h"

namespace postmarker::inspect {
namespace {

std::string ReadStandardInput() {
  std::string bytes;
  std::array<char, 65536> buffer;
  while (const size_t count = std::fread(buffer.data(), 1, buffer.size(), stdin)) {
    bytes.append(buffer.data(), count);
  }
  return bytes;
}

void WriteHost(JsonWriter* json, std::string_view key, const KsHostInfo& host) {
  json->Key(key).BeginObject();
  json->Key("name").Narrow(host.name);
  json->Key("address").Narrow(host.address);
  json->Key("helo").Narrow(host.helo);
  json->Key("private").Bool(host.IsPrivateAddress());
  json->Key("consistent").Bool(host.IsConsistent());
  json->EndObject();
}

}  // namespace

std::string_view StandardInput() {
  static const std::string bytes = ReadStandardInput();
  return bytes;
}

Input::Input(const std::string& name) {
  if (name == kStandardInput) {
    m_bytes = StandardInput();
  } else {
    m_file.emplace(WidenUtf8(name), uint8_t{1});
    m_bytes = m_file->Bytes();
  }
}

std::vector<std::string_view> Lines(std::string_view text) {
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    const size_t end = text.find('\n');
    lines.push_back(text.substr(0, end));
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  }
  return lines;
}

void WriteCounts(JsonWriter* json, std::string_view key, const TokenCountMap& counts) {
  json->Key(key).BeginObject();
  for (const TokenCountMap::Item& item : counts) {
    json->Key(item.key).Number(item.count);
  }
  json->EndObject();
}

void WriteWords(JsonWriter* json, std::string_view key, const WordList& words) {
  json->Key(key).BeginArray();
  for (const std::string_view word : words) {
    json->Narrow(word);
  }
  json->EndArray();
}

void WriteHop(JsonWriter* json, const ReceivedHop& hop) {
  json->BeginObject();
  WriteHost(json, "from", hop.first);
  WriteHost(json, "by", hop.second);
  json->EndObject();
}

}  // namespace postmarker::inspect
