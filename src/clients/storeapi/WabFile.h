// The Windows address book: a file whose table of mail addresses is read by hand.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "clients/MachineView.h"
#include "postmarker/WizardRequest.h"

namespace postmarker::storeapi {

// The addresses in the table of an address book, in its order, one for each entry that begins
// within the file: an empty entry gives an empty text. The low bytes of at most 68 UTF-16 units
// each, up to the first zero; a text that runs into the end of the file is cut there. Bytes that
// are no address book give no or odd texts; nothing outside of `bytes` is read.
std::vector<std::string> ParseWabFile(std::string_view bytes);

// Adds these addresses, widened by the code page.
void AddWabAddresses(std::string_view bytes, AddressSet* addresses);

// The same with the person's address book. A file that can't be read adds nothing.
void ReadWabFile(const MachineView& machine, AddressSet* addresses);

}  // namespace postmarker::storeapi
