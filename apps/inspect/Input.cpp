#include "Input.h"

#include <cstdio>
#include <deque>

#include "support/Text.h"

namespace postmarker::inspect {
namespace {

// In blocks, which are put together and given up one by one: a text that grew would be there twice
// and more.
std::string ReadStandardInput() {
  constexpr size_t kBlock = 65536;
  std::deque<std::string> blocks;
  size_t total = 0;
  for (;;) {
    std::string& block = blocks.emplace_back(kBlock, '\0');
    const size_t count = std::fread(block.data(), 1, kBlock, stdin);
    block.resize(count);
    total += count;
    if (count == 0) {
      break;
    }
  }
  std::string bytes;
  bytes.reserve(total);
  for (; !blocks.empty(); blocks.pop_front()) {
    bytes.append(blocks.front());
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
