// What stands in the shared memory of a channel: one message in a private region, a name in a
// rendezvous region. The other side may change the bytes at any time, so each is read once, and
// each number in one piece: regions begin at a multiple of 4 bytes, as views of shared memory do.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace postmarker {

// A message is its payload's length in bytes, its type (4 bytes each) and the payload: the UTF-16
// units of a text without a terminator, or a number of 4 bytes. Byte order is little-endian.
inline constexpr size_t kMessageHeaderSize = 8;

// The least size of a private region, and the size of a rendezvous region.
inline constexpr size_t kMinRegionBytes = 4096;
inline constexpr size_t kRendezvousSize = 4096;

// Does a text of `length` units fit into a region of this size.
bool TextFits(size_t length, size_t regionSize);

// Writes a message. False, with nothing written, if it does not fit.
bool PutText(std::span<std::byte> region, std::wstring_view text);
bool PutNumber(std::span<std::byte> region, uint32_t value);

// Reads a message. False, with the out value as it was, if the type is another, the length goes
// beyond the region, a text's length is odd or a number's is not 4.
bool TakeText(std::span<const std::byte> region, std::wstring* text);
bool TakeNumber(std::span<const std::byte> region, uint32_t* value);

// Writes the name of a private region: its byte length, then its units and a terminator. False if
// the name is longer than 2,045 units or than the region.
bool PutPrivateName(std::span<std::byte> region, std::wstring_view name);

// Reads the name of a private region: the rendezvous' own name, a period and 32 units. What has
// another length, or none that the region can hold, or begins otherwise, is something else under
// that name and gives nothing.
std::optional<std::wstring> TakePrivateName(std::span<const std::byte> region,
                                            std::wstring_view rendezvous);

}  // namespace postmarker
