// The files that commands read.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "JsonWriter.h"
#include "analysis/headers/Received.h"
#include "analysis/words/TokenCountMap.h"
#include "analysis/words/WordList.h"
#include "support/MappedFile.h"

namespace postmarker::inspect {

// The name that stands for standard input.
inline constexpr std::string_view kStandardInput = "-";

// Standard input, read whole at first use and kept.
std::string_view StandardInput();

// The bytes of a file or of standard input, empty where it can't be read.
class Input {
 public:
  explicit Input(const std::string& name);
  [[nodiscard]] std::string_view Bytes() const { return m_bytes; }

 private:
  std::optional<MappedFile> m_file;
  std::string_view m_bytes;
};

// Parts of documents that several commands share.
void WriteCounts(JsonWriter* json, std::string_view key, const TokenCountMap& counts);
void WriteWords(JsonWriter* json, std::string_view key, const WordList& words);
void WriteHop(JsonWriter* json, const ReceivedHop& hop);

}  // namespace postmarker::inspect
