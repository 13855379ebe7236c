#include "controls/LinkOpener.h"

#include <algorithm>

#include "support/Text.h"

namespace postmarker {
namespace {

constexpr std::wstring_view kAppScheme = L"APP:";
constexpr std::wstring_view kPlaceholder = L"%1";
constexpr std::wstring_view kQuotedPlaceholder = L"\"%1\"";
constexpr wchar_t kOpenCommand[] = L"\\shell\\open\\command";

std::wstring WithoutQuotes(std::wstring_view text) {
  std::wstring free(text);
  std::erase(free, L'"');
  return std::wstring(TrimWhiteSpace(free));
}

// Does a place of a command line lie inside of quotes?
bool IsQuoted(const std::wstring& command, size_t place) {
  return std::count(command.begin(), command.begin() + static_cast<ptrdiff_t>(place), L'"') % 2 !=
         0;
}

// The target as a part of one argument of a command line, at its place there: in quotes if it has
// blanks, unless there are quotes around the place already. It must have no quotes, with which a
// text could smuggle in more arguments.
std::wstring Argument(const std::wstring& target, const std::wstring& command, size_t place) {
  const bool isQuoted = IsQuoted(command, place);
  if (!isQuoted && target.find_first_of(L" \t") == std::wstring::npos) {
    return target;
  }
  // Backslashes before a closing quote count double.
  const size_t last = target.find_last_not_of(L'\\');
  const std::wstring text = target + std::wstring(target.size() - last - 1, L'\\');
  return isQuoted ? text : L'"' + text + L'"';
}

// Where the command takes its argument, with the quotes around it: length 0 and the end if nowhere.
struct Placeholder {
  size_t begin;
  size_t length;
};

Placeholder FindPlaceholder(const std::wstring& command) {
  const size_t quoted = command.find(kQuotedPlaceholder);
  if (quoted != std::wstring::npos) {
    return {quoted, kQuotedPlaceholder.size()};
  }
  const size_t plain = command.find(kPlaceholder);
  return plain != std::wstring::npos ? Placeholder{plain, kPlaceholder.size()}
                                     : Placeholder{command.size(), 0};
}

// The command with the target in the place of its argument, or at its end.
std::wstring BrowserCommand(std::wstring command, const std::wstring& target) {
  const Placeholder place = FindPlaceholder(command);
  const std::wstring argument = Argument(target, command, place.begin);
  return command.replace(place.begin, place.length, place.length != 0 ? argument : L' ' + argument);
}

// The command up to its argument, a blank and the target.
std::wstring CutCommand(const std::wstring& command, const std::wstring& target) {
  const size_t end = FindPlaceholder(command).begin;
  return command.substr(0, end) + L' ' + Argument(target, command, end);
}

}  // namespace

std::optional<std::wstring> AppCommandName(std::wstring_view target) {
  if (target.starts_with(L'"')) {
    target.remove_prefix(1);
  }
  if (!EqualNoCase(target.substr(0, kAppScheme.size()), kAppScheme)) {
    return std::nullopt;
  }
  return WithoutQuotes(target.substr(kAppScheme.size()));
}

bool OpenTarget(std::wstring_view target, LinkShell* shell) {
  const std::wstring address = WithoutQuotes(target);
  if (address.empty()) {
    return false;
  }
  const std::optional<std::wstring> browser =
      shell->ReadClass(std::wstring(L"http") + kOpenCommand);
  if (browser && !browser->empty() && shell->StartProcess(BrowserCommand(*browser, address))) {
    return true;
  }
  if (shell->RunVerb(L"open", address)) {
    return true;
  }
  const std::optional<std::wstring> pages = shell->ReadClass(L".htm");
  if (!pages || pages->empty()) {
    return false;
  }
  const std::optional<std::wstring> command = shell->ReadClass(*pages + kOpenCommand);
  return command && !command->empty() && shell->StartProcess(CutCommand(*command, address));
}

}  // namespace postmarker
