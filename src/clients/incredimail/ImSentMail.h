// Whom an identity has written to, from its sent mail.
#pragma once

#include <string>
#include <string_view>

#include "clients/PacedStop.h"
#include "clients/incredimail/ImTextSet.h"
#include "postmarker/WizardRequest.h"
#include "support/Results.h"

namespace postmarker {

// Takes lists of recipients as they stand in headers and gives the single addresses in them. The
// same list again costs next to nothing: most people write to few others often. Where lists turn
// out not to come again they are no longer kept. From one thread at a time.
class ImAddressCollector {
 public:
  // Takes a list, UTF-16.
  void Add(std::wstring_view recipients);

  // The same, in lower case first.
  void AddInLowerCase(std::wstring_view recipients);

  // The same of a list in ASCII.
  void AddAsciiInLowerCase(std::string_view recipients);

  // Adds all addresses to *addresses.
  void AddTo(AddressSet* addresses) const;

 private:
  void AddAddresses(std::string_view recipients);
  bool IsNewList(std::string_view recipients);

  ImTextSet m_lists;       // in UTF-8
  size_t m_listsSeen = 0;  // each as often as it came
  ImTextSet m_addresses;
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
