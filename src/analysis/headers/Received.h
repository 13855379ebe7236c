// What a "Received:" line says about one hop of a message.
#pragma once

#include <string>
#include <string_view>
#include <utility>

namespace postmarker {

// One side of a hop. All texts are bytes, as they stand in the line.
struct KsHostInfo {
  std::string name;     // the host token of the clause
  std::string address;  // a dotted IPv4 text, with or without its square brackets
  std::string helo;  // the name that the peer announced, or a host name out of the clause's comment

  // True for addresses of private networks.
  // Deliberate: all of 192.x counts, and only one block of 172.x: what mail servers behind a
  // firewall had when the rule was made, and what a filter's stored judgements rest on.
  [[nodiscard]] bool IsPrivateAddress() const;

  // False where `address` or `name` is missing, or where announced and given name lie in different
  // registered domains and the address is not private.
  [[nodiscard]] bool IsConsistent() const;
};

// The "from" side and the "by" side.
using ReceivedHop = std::pair<KsHostInfo, KsHostInfo>;

// Reads one lower-case "Received:" value. What is missing stays empty.
void ParseReceivedLine(std::string_view line, KsHostInfo* from, KsHostInfo* by);

// Reads groups in "()" or "[]" from *position on, for as long as one follows another, into one text
// with a blank after each but the last; square brackets stay. *position moves past them and
// their white space.
std::string ReadBracketed(std::string_view text, size_t* position);

// Fills the fields of a clause from its host token's comment.
void ParseHostInfo(std::string_view text, KsHostInfo* info);

// Cuts at the first ":"; a "]" at the end stays.
std::string StripPort(std::string_view text);

// True for four groups of digits and dots, in square brackets or not, up to a ":" or the end. The
// ranges of the numbers are not looked at.
bool IsDottedAddress(std::string_view text);

// True for a text of lower-case letters, digits, dots, "-" and "_" with a dot in it.
bool IsHostName(std::string_view text);

// True for a text that begins with "[" and ends with "]".
bool IsBracketed(std::string_view text);

}  // namespace postmarker
