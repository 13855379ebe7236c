#include "analysis/headers/Received.h"

#include <algorithm>

#include "analysis/words/DomainTable.h"
#include "support/Bytes.h"

namespace postmarker {
namespace {

bool IsSeparator(char c) {
  return c == ';' || Is(c, kSpaceByte);
}

bool StandsAtStart(std::string_view address, std::string_view text) {
  const size_t position = address.find(text);
  return position == 0 || position == 1;  // after a "["
}

bool StartsWithHelo(std::string_view text) {
  return text.starts_with("helo") || text.starts_with("ehlo");
}

// Reads a line from left to right.
class LineReader {
 public:
  explicit LineReader(std::string_view line) : m_line(line) {}

  [[nodiscard]] std::string_view Rest() const { return m_line.substr(m_position); }
  [[nodiscard]] bool AtEnd() const { return m_position >= m_line.size(); }
  [[nodiscard]] bool NextIs(char c) const { return !AtEnd() && m_line[m_position] == c; }

  void SkipSpace() {
    SkipWhere([](char c) { return Is(c, kSpaceByte); });
  }
  void SkipSeparators() { SkipWhere(IsSeparator); }

  // Moves past a word that is here; false if there is another text.
  bool SkipWord(std::string_view word) {
    if (!Rest().starts_with(word)) {
      return false;
    }
    m_position += word.size();
    return true;
  }

  // Bytes up to a separator or, after the first one, up to an opening bracket.
  std::string ReadToken() {
    const size_t start = m_position;
    while (!AtEnd() && !IsSeparator(m_line[m_position]) &&
           (m_position == start || (m_line[m_position] != '[' && m_line[m_position] != '('))) {
      ++m_position;
    }
    return std::string(m_line.substr(start, m_position - start));
  }

  std::string ReadToSeparator() {
    const size_t start = m_position;
    SkipWhere([](char c) { return !IsSeparator(c); });
    return std::string(m_line.substr(start, m_position - start));
  }

  // Bytes up to white space; the white space after them is skipped.
  std::string_view ReadWord() {
    const size_t start = m_position;
    SkipWhere([](char c) { return !Is(c, kSpaceByte); });
    const std::string_view word = m_line.substr(start, m_position - start);
    SkipSpace();
    return word;
  }

  std::string ReadGroups() { return ReadBracketed(m_line, &m_position); }

 private:
  template <class Predicate>
  void SkipWhere(Predicate skip) {
    while (!AtEnd() && skip(m_line[m_position])) {
      ++m_position;
    }
  }

  std::string_view m_line;
  size_t m_position = 0;
};

// False where the line ends inside the clause.
bool ReadFromClause(LineReader* line, KsHostInfo* from) {
  line->SkipSpace();
  if (line->NextIs('(')) {
    line->ReadGroups();
    return true;
  }
  if (!line->SkipWord("from")) {
    return true;
  }
  line->SkipSpace();
  if (!line->NextIs('(')) {
    from->name = line->ReadToken();
    if (from->name.empty()) {
      return false;
    }
  }
  line->SkipSeparators();
  ParseHostInfo(line->ReadGroups(), from);
  return true;
}

bool EndsLook(std::string_view word) {
  return word.empty() || word.front() == '(' || word.front() == '[' || word.back() == ';' ||
         EqualNoCase(word, "with") || EqualNoCase(word, "id") || EqualNoCase(word, "for");
}

// The word "on" brings another name for the host. Only then the line is read on; other words are
// looked at.
void LookForOn(LineReader* line, std::string* name) {
  LineReader look = *line;
  for (;;) {
    const std::string_view word = look.ReadWord();
    if (EndsLook(word)) {
      return;
    }
    if (EqualNoCase(word, "on")) {
      *name = look.ReadToSeparator();
      look.SkipSeparators();
      *line = look;
      return;
    }
  }
}

struct Clause {
  std::string first;
  std::string second;
  bool sawHelo = false;
};

// A comment with an address in square brackets: the address, and what stands around it.
bool SplitAtBrackets(std::string_view text, Clause* clause) {
  const size_t open = text.find('[');
  const size_t close = text.find(']');
  if (open == std::string_view::npos || close == std::string_view::npos || close < open) {
    return false;
  }
  clause->second = text.substr(open, close + 1 - open);
  clause->first = TrimSpace(text.substr(0, open));
  const std::string_view rest = TrimSpace(text.substr(close + 1));
  if (!clause->first.empty() && !rest.empty()) {
    clause->first.append(" ");
  }
  clause->first.append(rest);
  if (clause->first.size() >= 5 && StartsWithHelo(clause->first)) {
    clause->sawHelo = true;
    clause->first.erase(0, 5);
  }
  return true;
}

void SplitAtSpace(std::string_view text, Clause* clause) {
  if (StartsWithHelo(text)) {
    text.remove_prefix(4);
    clause->sawHelo = true;
  }
  while (!text.empty() && (text.front() == '=' || Is(text.front(), kSpaceByte))) {
    text.remove_prefix(1);
  }
  size_t end = 0;
  while (end < text.size() && !Is(text[end], kSpaceByte) &&
         (end == 0 || (text[end] != '[' && text[end] != '('))) {
    ++end;
  }
  clause->first = text.substr(0, end);
  LineReader rest(text.substr(end));
  rest.SkipSpace();
  clause->second = rest.ReadWord();
}

void AssignClause(const Clause& clause, KsHostInfo* info) {
  const std::string first = StripPort(clause.first);
  const std::string second = StripPort(clause.second);
  const bool firstDotted = IsDottedAddress(first);
  if (clause.sawHelo) {
    info->helo = first;
  }
  if (second.empty()) {
    if (firstDotted) {
      info->address = first;
    } else if (IsHostName(first)) {
      info->helo = first;
    }
  } else if (IsDottedAddress(second)) {
    info->address = firstDotted ? first : second;
    if (!firstDotted && IsHostName(first)) {
      info->helo = first;
    }
  } else if (firstDotted) {
    info->address = first;
    if (IsHostName(second)) {
      info->helo = second;
    }
  } else if (IsHostName(first)) {
    info->helo = first;
  } else if (IsHostName(second)) {
    info->helo = second;
  }
}

bool Contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

}  // namespace

bool KsHostInfo::IsPrivateAddress() const {
  return StandsAtStart(address, "127.0.0.1") || StandsAtStart(address, "172.16.") ||
         StandsAtStart(address, "192.") || address.starts_with("10.") ||
         address.starts_with("[10.");
}

bool KsHostInfo::IsConsistent() const {
  if (address.empty() || name.empty()) {
    return false;
  }
  return IsPrivateAddress() || helo.empty() ||
         EqualNoCase(GetRegisteredDomain(helo), GetRegisteredDomain(name));
}

void ParseReceivedLine(std::string_view text, KsHostInfo* from, KsHostInfo* by) {
  LineReader line(text);
  if (!ReadFromClause(&line, from)) {
    return;
  }
  line.SkipSpace();
  if (!line.SkipWord("by")) {
    return;
  }
  line.SkipSpace();
  by->name = line.ReadToken();
  if (by->name.empty()) {
    return;
  }
  line.SkipSeparators();
  LookForOn(&line, &by->name);
  if (!by->name.empty()) {
    ParseHostInfo(line.ReadGroups(), by);
  }
}

std::string ReadBracketed(std::string_view text, size_t* position) {
  std::string groups;
  size_t i = *position;
  const auto skipSpace = [&] {
    while (i < text.size() && Is(text[i], kSpaceByte)) {
      ++i;
    }
  };
  for (bool another = false; i < text.size() && (text[i] == '(' || text[i] == '[');
       another = true) {
    groups.append(another ? " " : "").append(text[i] == '[' ? "[" : "");
    ++i;
    skipSpace();
    for (int depth = 1; depth > 0 && i < text.size(); ++i) {
      const char c = text[i];
      depth += c == '(' || c == '[' ? 1 : c == ')' || c == ']' ? -1 : 0;
      if (depth > 0 || c == ']') {
        groups.push_back(c);
      }
    }
    skipSpace();
  }
  *position = i;
  return groups;
}

void ParseHostInfo(std::string_view text, KsHostInfo* info) {
  Clause clause;
  if (!SplitAtBrackets(text, &clause)) {
    SplitAtSpace(text, &clause);
  }
  if (!clause.first.empty() || !clause.second.empty()) {
    AssignClause(clause, info);
  }
  if (!IsDottedAddress(info->name)) {
    return;
  }
  if (info->address.empty()) {
    info->address = info->name;
  } else if (!Contains(info->address, info->name) && !Contains(info->name, info->address)) {
    info->address.clear();
  }
  if (!info->helo.empty()) {
    info->name = info->helo;
  }
}

std::string StripPort(std::string_view text) {
  const size_t colon = text.find(':');
  std::string stripped(text.substr(0, colon));
  if (colon != std::string_view::npos && text.back() == ']') {
    stripped.push_back(']');
  }
  return stripped;
}

bool IsDottedAddress(std::string_view text) {
  int dots = 0;
  for (size_t i = 0; i < text.size() && text[i] != ':'; ++i) {
    const char c = text[i];
    const bool bracket = (i == 0 && c == '[') || (i + 1 == text.size() && c == ']');
    if (c == '.') {
      ++dots;
    } else if (!bracket && (c < '0' || c > '9')) {
      return false;
    }
  }
  return dots == 3;
}

bool IsHostName(std::string_view text) {
  const auto belongs = [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '.' || c == '-' || c == '_';
  };
  return std::all_of(text.begin(), text.end(), belongs) && Contains(text, ".");
}

bool IsBracketed(std::string_view text) {
  return text.size() >= 2 && text.front() == '[' && text.back() == ']';
}

}  // namespace postmarker
