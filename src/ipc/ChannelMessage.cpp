#include "ipc/ChannelMessage.h"

#include <algorithm>
#include <bit>

#include "ipc/ChannelNames.h"

namespace postmarker {
namespace {

constexpr uint32_t kTextType = 1;
constexpr uint32_t kNumberType = 2;
constexpr size_t kUnitSize = 2;
constexpr size_t kNameOffset = 4;
constexpr size_t kPrivateNameRoom = 2046;
constexpr size_t kMaxPrivateNameChars = 243;

void Put32(std::span<std::byte> at, uint32_t value) {
  for (size_t i = 0; i < sizeof(value); ++i) {
    at[i] = static_cast<std::byte>(value >> (8 * i));
  }
}

// Volatile and in one piece: a value that was checked must not be fetched from the shared memory
// again, nor be half of one value and half of the next.
uint32_t Take32(std::span<const std::byte> at) {
  static_assert(std::endian::native == std::endian::little);
  return *reinterpret_cast<const volatile uint32_t*>(at.data());
}

void PutUnits(std::span<std::byte> at, std::wstring_view units) {
  for (size_t i = 0; i < units.size(); ++i) {
    at[kUnitSize * i] = static_cast<std::byte>(units[i]);
    at[kUnitSize * i + 1] = static_cast<std::byte>(static_cast<uint32_t>(units[i]) >> 8);
  }
}

std::wstring TakeUnits(std::span<const std::byte> bytes) {
  std::wstring units(bytes.size() / kUnitSize, L'\0');
  for (size_t i = 0; i < units.size(); ++i) {
    units[i] = static_cast<wchar_t>(static_cast<uint32_t>(bytes[kUnitSize * i]) |
                                    static_cast<uint32_t>(bytes[kUnitSize * i + 1]) << 8);
  }
  return units;
}

// The payload of a message of this type, by a header that is read once.
std::optional<std::span<const std::byte>> Payload(std::span<const std::byte> region,
                                                  uint32_t wantedType) {
  if (region.size() < kMessageHeaderSize) {
    return std::nullopt;
  }
  const uint32_t length = Take32(region);
  const uint32_t type = Take32(region.subspan(4));
  if (length > region.size() - kMessageHeaderSize || type != wantedType) {
    return std::nullopt;
  }
  return region.subspan(kMessageHeaderSize, length);
}

}  // namespace

bool TextFits(size_t length, size_t regionSize) {
  return regionSize >= kMessageHeaderSize && length <= UINT32_MAX / kUnitSize &&
         length <= (regionSize - kMessageHeaderSize) / kUnitSize;
}

bool PutText(std::span<std::byte> region, std::wstring_view text) {
  if (!TextFits(text.size(), region.size())) {
    return false;
  }
  Put32(region, static_cast<uint32_t>(text.size() * kUnitSize));
  Put32(region.subspan(4), kTextType);
  PutUnits(region.subspan(kMessageHeaderSize), text);
  return true;
}

bool PutNumber(std::span<std::byte> region, uint32_t value) {
  if (region.size() < kMessageHeaderSize + sizeof(value)) {
    return false;
  }
  Put32(region, sizeof(value));
  Put32(region.subspan(4), kNumberType);
  Put32(region.subspan(kMessageHeaderSize), value);
  return true;
}

bool TakeText(std::span<const std::byte> region, std::wstring* text) {
  const auto payload = Payload(region, kTextType);
  if (!payload || payload->size() % kUnitSize != 0) {
    return false;
  }
  *text = TakeUnits(*payload);
  return true;
}

bool TakeNumber(std::span<const std::byte> region, uint32_t* value) {
  const auto payload = Payload(region, kNumberType);
  if (!payload || payload->size() != sizeof(*value)) {
    return false;
  }
  *value = Take32(*payload);
  return true;
}

bool PutPrivateName(std::span<std::byte> region, std::wstring_view name) {
  if (name.size() >= kPrivateNameRoom ||
      region.size() < kNameOffset + (name.size() + 1) * kUnitSize) {
    return false;
  }
  Put32(region, static_cast<uint32_t>(name.size() * kUnitSize));
  PutUnits(region.subspan(kNameOffset), name);
  PutUnits(region.subspan(kNameOffset + name.size() * kUnitSize), std::wstring_view(L"\0", 1));
  return true;
}

std::optional<std::wstring> TakePrivateName(std::span<const std::byte> region,
                                            std::wstring_view rendezvous) {
  constexpr size_t kAround = kNameOffset + kUnitSize;  // the length and the terminator
  if (region.size() < kAround) {
    return std::nullopt;
  }
  const uint32_t bytes = Take32(region);
  const size_t length = bytes / kUnitSize;
  if (bytes % kUnitSize != 0 || bytes > region.size() - kAround ||
      length != rendezvous.size() + kPrivateNameGrowth || length > kMaxPrivateNameChars) {
    return std::nullopt;
  }
  // The name is what stands before the terminator, and must be as long as was said.
  std::wstring name = TakeUnits(region.subspan(kNameOffset, bytes + kUnitSize));
  name.resize(std::min(name.find(L'\0'), name.size()));
  const bool isOurs = name.size() == length && name.starts_with(PrivateName(rendezvous, {}));
  return isOurs ? std::optional(std::move(name)) : std::nullopt;
}

}  // namespace postmarker
