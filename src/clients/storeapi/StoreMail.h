// What is read of the store's messages: the recipients in their headers, and what the filter asks
// about them. All text is bytes.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "analysis/message/HeaderMap.h"
#include "postmarker/WizardRequest.h"

namespace postmarker::storeapi {

// The mark that the filter puts into the subject of what it takes for spam.
inline constexpr std::string_view kSubjectMark = "[KSSpam]";

// How much of a message is read: only the headers matter.
inline constexpr uint32_t kMessageBytesRead = 65'535;

// The headers of a message, of which `bytes` are the beginning. A message whose header block does
// not end within them gives false, and leaves *headers alone.
bool ReadHeaders(std::string_view bytes, HeaderMap* headers);

// Adds the addresses of "To" and "Cc", in lower case and widened by the code page. A message
// without an end of its header block adds nothing.
void AddRecipients(std::string_view bytes, AddressSet* addresses);

// Are these the headers of one and the same mail: each of the six that tell mails apart is in
// neither of them, or in both with the same value, case ignored.
bool HaveSameIdentity(const HeaderMap& a, const HeaderMap& b);

// The value of the header in which the filter notes its verdict; empty if there is none.
std::string GetSpamHeader(const char* message, uint32_t size);

// The subject without the filter's mark, also where taking out one makes up another.
std::string WithoutSubjectMarks(std::string_view subject);

}  // namespace postmarker::storeapi
