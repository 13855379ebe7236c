// The domains that people register, told from the host names below them.
#pragma once

#include <span>
#include <string_view>
#include <utility>

namespace postmarker {

// The part of a host name or mail address that a person registered: "example.co.uk" for
// "mail.example.co.uk". Empty where the name has no dot or its last label is no top-level domain;
// upper-case letters match nothing. The result is a view into `host`. Any thread.
std::string_view GetRegisteredDomain(std::string_view host);

// The top-level domains with their countries or descriptions, in the order of their bytes.
std::span<const std::pair<std::string_view, std::string_view>> TopLevelDomains();

// Labels that commonly stand directly below a country's domain, in the order of their bytes.
std::span<const std::string_view> SecondLevelLabels();

}  // namespace postmarker
