#include "Tool.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string_view>

#include "Commands.h"
#include "NumberArgument.h"

namespace postmarker::inspect {
namespace {

constexpr int kWrongUsage = 2;
constexpr std::string_view kQuiet = "--quiet";
constexpr std::string_view kRepeat = "--repeat";

struct Invocation {
  const Command* command = nullptr;
  Arguments arguments;
  uint32_t repeat = 1;
  bool quiet = false;
};

std::string UsageLine(const Command* command) {
  std::string line = "usage: postmarker-inspect ";
  if (command != nullptr) {
    line.append(command->name).append(" ").append(command->usage);
  } else {
    const char* separator = "";
    for (const Command& known : AllCommands()) {
      line.append(separator).append(known.name);
      separator = "|";
    }
    line.append(" ARGUMENTS");
  }
  return line + " [--repeat N] [--quiet]\n";
}

bool IsOption(std::string_view text) {
  return text.size() > 2 && text.starts_with("--");
}

const Command* FindCommand(std::string_view name) {
  const auto commands = AllCommands();
  const auto command = std::find_if(commands.begin(), commands.end(),
                                    [name](const Command& known) { return known.name == name; });
  return command == commands.end() ? nullptr : &*command;
}

// Texts of a person may begin as an option does.
bool IsText(const std::string& argument, const std::vector<std::string>& texts) {
  if (!IsOption(argument)) {
    return true;
  }
  const Command* const command = texts.empty() ? nullptr : FindCommand(texts.front());
  return command != nullptr && command->takesAnyText && argument != kQuiet && argument != kRepeat;
}

// The value that follows the option at arguments[*i]; nothing at the end.
std::optional<std::string> NextValue(const std::vector<std::string>& arguments, size_t* i) {
  return *i + 1 < arguments.size() ? std::optional(arguments[++*i]) : std::nullopt;
}

bool ReadOption(const std::vector<std::string>& arguments, size_t* i, Invocation* invocation) {
  const std::string& name = arguments[*i];
  if (name == kQuiet) {
    invocation->quiet = true;
    return true;
  }
  if (name == kRepeat) {
    const std::optional<std::string> value = NextValue(arguments, i);
    return value && ReadNumber(*value, &invocation->repeat) && invocation->repeat > 0;
  }
  // A command's own options are checked once it is known.
  const auto takesValue = [&](const Command& command) {
    return std::any_of(command.options.begin(), command.options.end(), [&](const Option& option) {
      return option.name == name && option.takesValue;
    });
  };
  const auto commands = AllCommands();
  std::optional<std::string> value = std::string();
  if (std::any_of(commands.begin(), commands.end(), takesValue)) {
    value = NextValue(arguments, i);
  }
  if (value) {
    invocation->arguments.options.emplace_back(name, *value);
  }
  return value.has_value();
}

bool OptionsBelong(const Invocation& invocation) {
  const std::span<const Option> known = invocation.command->options;
  return std::all_of(invocation.arguments.options.begin(), invocation.arguments.options.end(),
                     [&](const auto& given) {
                       return std::any_of(known.begin(), known.end(), [&](const Option& option) {
                         return option.name == given.first;
                       });
                     });
}

bool ReadArguments(const std::vector<std::string>& arguments, Invocation* invocation) {
  std::vector<std::string>& texts = invocation->arguments.texts;
  bool valid = true;
  for (size_t i = 0; i < arguments.size(); ++i) {
    if (IsText(arguments[i], texts)) {
      texts.push_back(arguments[i]);
    } else {
      valid = ReadOption(arguments, &i, invocation) && valid;
    }
  }
  const Command* const command = texts.empty() ? nullptr : FindCommand(texts.front());
  if (command == nullptr) {
    return false;
  }
  invocation->command = command;
  texts.erase(texts.begin());
  return valid && texts.size() >= command->fewest && texts.size() <= command->most &&
         OptionsBelong(*invocation);
}

// Does the work as often as asked for, and prints the last document.
bool RunOnce(const Invocation& invocation, const Arguments& arguments, const Print& print) {
  JsonWriter json(print);
  for (uint32_t i = 0; i < invocation.repeat; ++i) {
    const bool last = !invocation.quiet && i + 1 == invocation.repeat;
    if (!invocation.command->run(arguments, last ? &json : nullptr)) {
      return false;
    }
  }
  if (!invocation.quiet) {
    json.EndDocument();
  }
  return true;
}

bool RunCommand(const Invocation& invocation, const Print& print) {
  if (!invocation.command->eachFile) {
    return RunOnce(invocation, invocation.arguments, print);
  }
  const std::vector<std::string>& files = invocation.arguments.texts;
  return std::all_of(files.begin(), files.end(), [&](const std::string& file) {
    return RunOnce(invocation, {{file}, invocation.arguments.options}, print);
  });
}

void WriteTo(std::FILE* stream, std::string_view text) {
  std::fwrite(text.data(), 1, text.size(), stream);
}

}  // namespace

int RunTool(const std::vector<std::string>& arguments, const Print& print, const Print& complain) {
  Invocation invocation;
  if (ReadArguments(arguments, &invocation) && RunCommand(invocation, print)) {
    return 0;
  }
  complain(UsageLine(invocation.command));
  return kWrongUsage;
}

int RunTool(const std::vector<std::string>& arguments) {
  return RunTool(
      arguments, [](std::string_view text) { WriteTo(stdout, text); },
      [](std::string_view text) { WriteTo(stderr, text); });
}

}  // namespace postmarker::inspect
