#include "analysis/headers/AddressList.h"

#include "support/Bytes.h"

namespace postmarker {
namespace {

constexpr size_t kNone = std::string_view::npos;

// The next place of a byte at or after a position that only moves on: every byte is looked at
// once.
class ForwardFinder {
 public:
  ForwardFinder(std::string_view text, char byte) : m_text(text), m_byte(byte) {}

  size_t From(size_t position) {
    if (!m_valid || (m_found != kNone && m_found < position)) {
      m_found = m_text.find(m_byte, position);
      m_valid = true;
    }
    return m_found;
  }

 private:
  std::string_view m_text;
  char m_byte;
  size_t m_found = kNone;
  bool m_valid = false;
};

std::string CleanAddress(std::string_view piece) {
  if (const size_t colon = piece.find(':'); colon != kNone) {
    piece.remove_prefix(colon + 1);
  }
  std::string address;
  address.reserve(piece.size());
  for (const char c : piece) {
    if (c != '\t' && c != ' ' && c != '\r' && c != '\n') {
      address.push_back(LowerByte(c));
    }
  }
  return address;
}

std::string_view CleanDisplay(std::string_view display) {
  return TrimSpace(TrimByte(TrimSpace(display), '"'));
}

// Calls `use` with each of the addresses between one pair of angle brackets and what stands in
// front of it. A comma in the first place parts nothing.
template <class Use>
void WalkBrackets(std::string_view addresses, std::string_view display, const Use& use) {
  for (size_t start = 0; start <= addresses.size();) {
    size_t comma = addresses.find(',', start == 0 ? 1 : start);
    comma = comma == kNone ? addresses.size() : comma;
    std::string address = CleanAddress(addresses.substr(start, comma - start));
    if (!address.empty()) {
      use(std::move(address), display);
    }
    start = comma + 1;
  }
}

// Calls `use` with each address of a list and its display name, which is not cleaned yet.
template <class Use>
void WalkList(std::string_view text, const Use& use) {
  ForwardFinder opens(text, '<');
  ForwardFinder closes(text, '>');
  ForwardFinder commas(text, ',');
  for (size_t start = 0; start < text.size();) {
    const size_t open = opens.From(start);
    const size_t close = open == kNone ? kNone : closes.From(open);
    size_t end = commas.From(close == kNone ? start : close);
    end = end == kNone ? text.size() : end;
    if (open >= end) {
      use(LowerText(TrimSpace(text.substr(start, end - start))), std::string_view());
    } else {
      const size_t last = close < end ? close : end;
      WalkBrackets(text.substr(open + 1, last - open - 1), text.substr(start, open - start), use);
    }
    start = end + 1;
  }
}

}  // namespace

void ParseAddressList(std::string_view text, AddressMap* map) {
  WalkList(text, [map](std::string address, std::string_view display) {
    map->insert_or_assign(std::move(address), std::string(CleanDisplay(display)));
  });
}

void ForEachAddress(std::string_view text, const std::function<void(std::string_view)>& use) {
  WalkList(text,
           [&use](const std::string& address, std::string_view /*display*/) { use(address); });
}

}  // namespace postmarker
