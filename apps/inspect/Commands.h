// The commands of the tool.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "JsonWriter.h"

namespace postmarker::inspect {

// What follows the command's name, in UTF-8.
struct Arguments {
  std::vector<std::string> texts;                            // in their order, options apart
  std::vector<std::pair<std::string, std::string>> options;  // name with its dashes, value

  [[nodiscard]] bool Has(std::string_view option) const { return Value(option).has_value(); }
  // The value of an option; of one that stands twice, the first.
  [[nodiscard]] std::optional<std::string> Value(std::string_view option) const;
};

// An option of one command, besides those that all have.
struct Option {
  std::string_view name;  // with its dashes
  bool takesValue;
};

// One row of the table of commands.
struct Command {
  std::string_view name;
  std::string_view usage;  // what follows the name
  size_t fewest;           // texts
  size_t most;
  bool eachFile;  // texts are files; the command runs for each by itself
  // An argument after the name that looks like an option, and is none that all commands have, is a
  // text. Such a command has no options of its own.
  bool takesAnyText;
  std::span<const Option> options;
  // Does the work and, where `json` is not null, writes its document. False for arguments that make
  // no sense.
  bool (*run)(const Arguments& arguments, JsonWriter* json);
};

std::span<const Command> AllCommands();

bool RunHeaders(const Arguments& arguments, JsonWriter* json);
bool RunMessage(const Arguments& arguments, JsonWriter* json);
bool RunHooks(const Arguments& arguments, JsonWriter* json);
bool RunWords(const Arguments& arguments, JsonWriter* json);
bool RunHtml(const Arguments& arguments, JsonWriter* json);
bool RunAddresses(const Arguments& arguments, JsonWriter* json);
bool RunDomain(const Arguments& arguments, JsonWriter* json);
bool RunReceived(const Arguments& arguments, JsonWriter* json);
bool RunDecode(const Arguments& arguments, JsonWriter* json);
bool RunFolderText(const Arguments& arguments, JsonWriter* json);
bool RunColumnState(const Arguments& arguments, JsonWriter* json);
bool RunPipeFolder(const Arguments& arguments, JsonWriter* json);
bool RunImmFolders(const Arguments& arguments, JsonWriter* json);
bool RunImh(const Arguments& arguments, JsonWriter* json);
bool RunImmMessage(const Arguments& arguments, JsonWriter* json);
bool RunImb(const Arguments& arguments, JsonWriter* json);
bool RunWab(const Arguments& arguments, JsonWriter* json);
bool RunJet(const Arguments& arguments, JsonWriter* json);
bool RunLiveFolders(const Arguments& arguments, JsonWriter* json);
bool RunStoreId(const Arguments& arguments, JsonWriter* json);
bool RunIncrediMail(const Arguments& arguments, JsonWriter* json);

}  // namespace postmarker::inspect
