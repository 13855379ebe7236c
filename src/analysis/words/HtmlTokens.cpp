#include "analysis/words/HtmlTokens.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "analysis/words/DomainTable.h"
#include "analysis/words/TagAttributes.h"
#include "analysis/words/TextTokens.h"
#include "support/Bytes.h"

namespace postmarker {
namespace {

constexpr size_t kNone = std::string_view::npos;
constexpr std::string_view kBackground = "background=";
constexpr std::string_view kHttp = "http://";

// A host without its query, port and path.
std::string_view StripUrlTail(std::string_view url) {
  url = url.substr(0, url.find('?'));
  url = url.substr(0, url.find(':'));
  return url.substr(0, url.find('/'));
}

// A tag's name decides which attribute is its link.
struct LinkRule {
  std::string_view tag;
  std::string_view attribute;  // empty: none of its own
};

// Deliberate: "area" passes for a tag with links but has no attribute of its own; client-side image
// maps only repeat the links of the page.
constexpr std::array<LinkRule, 5> kLinkRules = {{
    {"a", "href"},
    {"img", "src"},
    {"form", "action"},
    {"base", "href"},
    {"area", ""},
}};

const LinkRule* FindRule(std::string_view name) {
  const auto* const rule = std::find_if(kLinkRules.begin(), kLinkRules.end(), [&](const auto& row) {
    return EqualNoCase(row.tag, name);
  });
  return rule == kLinkRules.end() ? nullptr : rule;
}

// True if `name` stands before the "=" at `equals`, case ignored.
bool StandsBefore(std::string_view tag, size_t equals, std::string_view name) {
  return equals >= name.size() && EqualNoCase(tag.substr(equals - name.size(), name.size()), name);
}

// The value after the "=" at `equals`: in double quotes, or word characters. Nothing at the tag's
// end.
std::optional<std::string_view> ReadValue(std::string_view tag, size_t equals) {
  const size_t start = tag.find_first_not_of(' ', equals + 1);
  if (start == kNone) {
    return std::nullopt;
  }
  if (tag[start] == '"') {
    const size_t close = tag.find('"', start + 1);
    return tag.substr(start + 1, (close == kNone ? tag.size() : close) - start - 1);
  }
  size_t end = start;
  while (end < tag.size() && Is(tag[end], kWordByte)) {
    ++end;
  }
  return tag.substr(start, end - start);
}

// What is asked of the links of one tag. Views live as long as the tag's URL.
struct LinkFacts {
  bool any = false;
  bool exe = false;  // one ends in ".exe"
  std::vector<std::string_view>
      domains;  // registered ones, in order; the empty one is a member like any other
};

// False where the text that a reader sees names a domain that none of the links has.
bool LinksMatchText(const LinkFacts& links, const TokenCountMap& visibleUrls) {
  bool matches = true;
  visibleUrls.ForEach([&](std::string_view url, int32_t) {
    if (IsUrlLike(&url) && !std::binary_search(links.domains.begin(), links.domains.end(),
                                               LowerText(GetRegisteredDomain(url)))) {
      matches = false;
    }
  });
  return matches;
}

class HtmlScanner {
 public:
  HtmlScanner(std::string_view text, TokenCountMap* tokens, WordList* words, TokenCountMap* urls,
              TokenCountMap* addresses, HtmlStats* stats)
      : m_text(text),
        m_tokens(tokens),
        m_words(words),
        m_urls(urls),
        m_addresses(addresses),
        m_stats(stats) {}

  void Run() {
    for (size_t open = m_text.find('<'); open != kNone;) {
      size_t mark = open + 1;
      while (mark < m_text.size() && m_text[mark] != '<' && m_text[mark] != '>') {
        ++mark;
      }
      if (mark == m_text.size()) {
        break;
      }
      if (m_text[mark] == '<') {
        open = mark;
        continue;
      }
      const std::string_view tag = m_text.substr(open, mark - open);
      const size_t next = m_text.find('<', mark + 1);
      const std::optional<Link> link = ScanTag(open, tag);
      if (link) {
        const std::string_view visible =
            m_text.substr(mark + 1, (next == kNone ? m_text.size() : next) - mark - 1);
        TakeLink(*link, visible);
      }
      CollectTagAttributes(tag, m_tokens);
      open = next;
    }
  }

  // Counts what was put off.
  void Finish() { FlushBase(); }

 private:
  struct Link {
    std::string url;
    bool isBase;
  };

  // Judges the links of a tag against the text that follows it.
  void JudgeLinks(const LinkFacts& facts, std::string_view visibleText) {
    if (!facts.any || m_stats == nullptr) {
      return;
    }
    m_visibleUrls.Clear();
    CollectTextUrls(visibleText, &m_visibleUrls);
    m_stats->exeLinkCount += facts.exe ? 1 : 0;
    m_stats->mismatchedLinkCount += LinksMatchText(facts, m_visibleUrls) ? 0 : 1;
    m_visibleUrls.Clear();
  }

  // True if "background=" stands at or after a position, to the end of the text and not of the
  // tag.
  bool HasBackgroundFrom(size_t position) {
    if (!m_lastBackground) {
      m_lastBackground = m_text.rfind(kBackground);
    }
    return *m_lastBackground != kNone && *m_lastBackground >= position;
  }

  // Takes the words of a picture's alternative text, and gives the tag's link if it has one.
  std::optional<Link> ScanTag(size_t open, std::string_view tag) {
    size_t nameStart = 0;
    while (nameStart < tag.size() && !Is(tag[nameStart], kWordByte)) {
      ++nameStart;
    }
    size_t nameEnd = nameStart;
    while (nameEnd < tag.size() && Is(tag[nameEnd], kWordByte)) {
      ++nameEnd;
    }
    const LinkRule* const rule = FindRule(tag.substr(nameStart, nameEnd - nameStart));
    const bool hasBackground = HasBackgroundFrom(open);
    if (rule == nullptr && !hasBackground) {
      return std::nullopt;
    }
    const std::string_view name = rule == nullptr ? std::string_view() : rule->tag;
    if (name == "img") {
      TokenizeAlternativeText(tag, nameEnd);
    }
    const size_t equals = FindLink(tag, nameEnd, rule, hasBackground);
    const std::optional<std::string_view> value =
        equals == kNone ? std::nullopt : ReadValue(tag, equals);
    return value ? std::optional(Link{LowerText(*value), name == "base"}) : std::nullopt;
  }

  void TokenizeAlternativeText(std::string_view tag, size_t from) {
    for (size_t equals = tag.find('=', from); equals != kNone; equals = tag.find('=', equals + 1)) {
      if (StandsBefore(tag, equals, "alt")) {
        if (const std::optional<std::string_view> value = ReadValue(tag, equals)) {
          Tokenize(LowerText(*value), m_tokens, m_words, &m_visibleUrls, &m_visibleUrls);
          m_visibleUrls.Clear();
        }
        return;
      }
    }
  }

  // The "=" of the attribute that is the tag's link.
  static size_t FindLink(std::string_view tag, size_t from, const LinkRule* rule,
                         bool hasBackground) {
    const std::string_view own = rule == nullptr ? std::string_view() : rule->attribute;
    for (size_t equals = tag.find('=', from); equals != kNone; equals = tag.find('=', equals + 1)) {
      if (!own.empty() && equals >= own.size()) {
        if (StandsBefore(tag, equals, own)) {
          return equals;
        }
      } else if (hasBackground && StandsBefore(tag, equals, "background")) {
        return equals;
      }
    }
    return kNone;
  }

  void TakeLink(const Link& link, std::string_view visibleText) {
    if (link.isBase) {
      FlushBase();
      m_base = link.url;
    }
    // Deliberate: a link without a scheme is not joined to the base but replaced by it. The host is
    // what counts.
    if (link.url.find(':') == kNone) {
      TakeBase(visibleText);
      return;
    }
    HandleUrls(link.url, 1);
    JudgeLinks(TakeFacts(), visibleText);
    m_urls->Insert(m_links);
    m_links.Clear();
  }

  // Many links may fall back to one long base: what follows from it is worked out once, and its
  // further uses are only counted.
  void TakeBase(std::string_view visibleText) {
    if (m_base.find(':') == kNone) {
      return;
    }
    if (m_baseUses++ == 0) {
      HandleUrls(m_base, 1);
      m_baseFacts = TakeFacts();
      m_urls->Insert(m_links);
      m_links.Clear();
    }
    JudgeLinks(m_baseFacts, visibleText);
  }

  // What the links that were handled since the last time give.
  LinkFacts TakeFacts() {
    std::sort(m_facts.domains.begin(), m_facts.domains.end());
    return std::exchange(m_facts, LinkFacts());
  }

  void FlushBase() {
    if (m_baseUses > 1) {
      HandleUrls(m_base, m_baseUses - 1);
      m_facts = LinkFacts();
      m_links.Clear();
    }
    m_baseUses = 0;
  }

  // Each address in a redirecting link counts by itself.
  void HandleUrls(std::string_view url, int32_t count) {
    size_t at = url.find(kHttp);
    while (at != kNone) {
      at = at == 0 ? url.find(kHttp, 1) : at;
      HandleUrl(url.substr(0, at), count);
      url.remove_prefix(at == kNone ? url.size() : at);
      at = url.empty() ? kNone : 0;
    }
    if (!url.empty()) {
      HandleUrl(url, count);
    }
  }

  void HandleUrl(std::string_view url, int32_t count) {
    const size_t colon = url.find(':');
    if (colon == kNone) {
      return;
    }
    const std::string_view scheme = url.substr(0, colon);
    const size_t start = url.find_first_not_of('/', colon + 1);
    std::string_view rest = start == kNone ? std::string_view() : url.substr(start);
    const bool isHttp = scheme.starts_with("http");
    if (isHttp) {
      m_tokens->Add(rest, count);
      m_links.Add(rest, count);
    }
    const std::string_view link = rest;
    rest = StripUrlTail(rest);
    if (isHttp && !link.empty()) {
      m_facts.any = true;
      m_facts.exe = m_facts.exe || link.ends_with(".exe");
      m_facts.domains.push_back(GetRegisteredDomain(rest));
    }
    if (EqualNoCase(scheme, "mailto")) {
      HandleMailAddress(rest, count);
    } else if (EqualNoCase(scheme, "cid")) {
      m_tokens->Add("cid", count);
      if (const size_t at = rest.find('@'); at != kNone) {
        m_tokens->Add(rest.substr(at + 1), count);
      }
    } else if (isHttp) {
      m_tokens->Add(rest, count);
      m_urls->Add(rest, count);
      ForEachLabel(rest, [&](std::string_view label) { m_tokens->Add(label, count); });
    }
  }

  void HandleMailAddress(std::string_view address, int32_t count) {
    m_addresses->Add(address, count);
    if (const size_t at = address.find('@'); at != kNone) {
      m_tokens->Add(address.substr(0, at), count);
      m_tokens->Add(address.substr(at + 1), count);
      m_urls->Add(address.substr(at + 1), count);
    }
  }

  std::string_view m_text;
  TokenCountMap* m_tokens;
  WordList* m_words;
  TokenCountMap* m_urls;
  TokenCountMap* m_addresses;
  HtmlStats* m_stats;
  std::optional<size_t> m_lastBackground;
  std::string m_base;  // of the last "base" tag; it holds for all tags after it
  int32_t m_baseUses = 0;
  LinkFacts m_baseFacts;
  LinkFacts m_facts;
  TokenCountMap m_links;
  TokenCountMap m_visibleUrls;
};

}  // namespace

void ScanHtml(std::string_view text, TokenCountMap* tokens, WordList* words, TokenCountMap* urls,
              TokenCountMap* addresses, HtmlStats* stats) {
  HtmlScanner scanner(text, tokens, words, urls, addresses, stats);
  scanner.Run();
  scanner.Finish();
}

}  // namespace postmarker
