// Whom an identity has written to, from its sent mail.
#pragma once

#include <cstddef>
#include <memory>
#include <memory_resource>
#include <string>
#include <string_view>
#include <vector>

#include "clients/PacedStop.h"
#include "postmarker/WizardRequest.h"
#include "support/Results.h"

namespace postmarker {

// Takes lists of recipients as they stand in headers and gives the single addresses in them. Most
// people write to few others often, so a list that came a short while ago is not split again. The
// memory grows with the different addresses, not with the lists. From one thread at a time.
class ImAddressCollector {
 public:
  ImAddressCollector();

  // Takes a list, UTF-16.
  void Add(std::wstring_view recipients);

  // The same, in lower case first.
  void AddInLowerCase(std::wstring_view recipients);

  // The same of a list in ASCII.
  void AddAsciiInLowerCase(std::string_view recipients);

  // Adds all addresses to *addresses.
  void AddTo(AddressSet* addresses);

 private:
  void AddList(std::string_view recipients);
  bool IsRecent(std::string_view recipients);
  void DropRepeats();

  std::vector<std::string> m_recentLists;  // each at the place that its hash says
  std::unique_ptr<std::pmr::monotonic_buffer_resource> m_texts;
  std::vector<std::string_view> m_addresses;  // in m_texts
  size_t m_bytes = 0;                         // of the texts and their views
  size_t m_bytesToSort;                       // where the repeats are dropped next
};

// Collects the recipients of an identity's sent mail from its folder database or, without one, from
// the older store. A store that can't be read adds nothing. `stop` ends the reading; what was read
// before it stays.
void CollectSentOf(const std::wstring& identityDirectory, PacedStop* stop,
                   ImAddressCollector* collector);

// Adds the recipients of the older store's sent mail, lists as they stand in headers: those of the
// list of headers, and the copies that each message itself names. For these the beginning of the
// message is rebuilt, without attachments, since the copies stand in its header block; it is
// written to a temporary file and read from it once. Many records may name one stretch of the file:
// together no more than four times the file's size and 16 MiB is rebuilt in one call. The messages
// after that give their recipients alone. The result is that of the last message; a list of headers
// that can't be read fails. `stop` is asked between two messages too, and ends the reading; what
// was read before it stays. Deliberate: the temporary file of a message that can't be rebuilt or
// written stays behind, empty, as who looks for the reason wants to see.
ResultCode GatherOlderSentAddresses(const std::wstring& identityDirectory, PacedStop* stop,
                                    AddressSet* addresses);

}  // namespace postmarker
