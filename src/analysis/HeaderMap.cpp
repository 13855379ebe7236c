#include "analysis/HeaderMap.h"

#include <algorithm>
#include <cstring>

#include "analysis/PackedLength.h"
#include "analysis/TextHash.h"

namespace postmarker {
namespace {

constexpr uint32_t kFewRecords = 12;  // up to so many are found by walking them
constexpr size_t kFirstSlots = 64;
constexpr uint32_t kSpareDead =
    64;  // replaced records that are carried before the map is made anew

size_t SlotOf(std::string_view key, size_t slotCount) {
  return static_cast<size_t>((uint64_t{TextHash(key).Bits()} * slotCount) >> 32);
}

}  // namespace

HeaderMap::Record HeaderMap::Storage::At(uint32_t offset) const {
  const char* const start = pool.At(offset);
  size_t keyLength = 0;
  size_t valueLength = 0;
  const char* in = TakePackedLength(start, &keyLength);
  const bool isDead = (keyLength & 1) != 0;
  keyLength >>= 1;
  in = TakePackedLength(in, &valueLength);
  return {{in, keyLength},
          {in + keyLength, valueLength},
          static_cast<size_t>(in - start) + keyLength + valueLength,
          isDead};
}

std::optional<uint32_t> HeaderMap::Storage::Find(std::string_view key) const {
  if (index == nullptr) {
    for (uint32_t offset = 0, end = pool.End(); offset < end;) {
      const Record record = At(offset);
      if (!record.dead && record.key == key) {
        return offset;
      }
      offset = pool.After(offset, record.size);
    }
    return std::nullopt;
  }
  const std::vector<uint32_t>& slots = *index;
  for (size_t slot = SlotOf(key, slots.size()); slots[slot] != 0;
       slot = slot + 1 == slots.size() ? 0 : slot + 1) {
    const Record record = At(slots[slot] - 1);
    if (!record.dead && record.key == key) {
      return slots[slot] - 1;
    }
  }
  return std::nullopt;
}

void HeaderMap::Storage::Add(std::string_view key, std::string_view value) {
  const size_t records = size_t{live} + dead + 1;
  const size_t slotCount = index == nullptr ? 0 : index->size();
  if (slotCount == 0 ? records > kFewRecords : records * 4 > slotCount * 3) {
    Reindex(std::max(kFirstSlots, slotCount * 3 / 2));
  }
  const size_t size = PackedLengthSize(key.size() << 1) + PackedLengthSize(value.size()) +
                      key.size() + value.size();
  const uint32_t offset = pool.Allocate(size);
  char* out = PutPackedLength(PutPackedLength(pool.At(offset), key.size() << 1), value.size());
  out = std::copy(key.begin(), key.end(), out);
  std::copy(value.begin(), value.end(), out);
  ++live;
  if (index != nullptr) {
    Index(offset, key);
  }
}

void HeaderMap::Storage::Index(uint32_t offset, std::string_view key) {
  std::vector<uint32_t>& slots = *index;
  size_t slot = SlotOf(key, slots.size());
  while (slots[slot] != 0) {
    slot = slot + 1 == slots.size() ? 0 : slot + 1;
  }
  slots[slot] = offset + 1;
}

void HeaderMap::Storage::Reindex(size_t slotCount) {
  index.reset();  // the old one goes before the new one comes
  index = std::make_unique<std::vector<uint32_t>>(slotCount);
  for (uint32_t offset = 0, end = pool.End(); offset < end;) {
    const Record record = At(offset);
    if (!record.dead) {
      Index(offset, record.key);
    }
    offset = pool.After(offset, record.size);
  }
}

void HeaderMap::Storage::Kill(uint32_t offset) {
  *pool.At(offset) = static_cast<char>(*pool.At(offset) | 1);
  --live;
  ++dead;
}

std::optional<uint32_t> HeaderMap::FindVisible(std::string_view key) const {
  if (m_count == 0) {
    return std::nullopt;
  }
  const std::optional<uint32_t> offset = m_storage->Find(key);
  return offset && *offset < m_end ? offset : std::nullopt;
}

std::string_view HeaderMap::Get(std::string_view key) const {
  return Find(key).value_or(std::string_view());
}

std::optional<std::string_view> HeaderMap::Find(std::string_view key) const {
  const std::optional<uint32_t> offset = FindVisible(key);
  return offset ? std::optional(m_storage->At(*offset).value) : std::nullopt;
}

void HeaderMap::Detach(std::string_view without, bool hasWithout) {
  auto storage = std::make_shared<Storage>();
  ForEach([&](std::string_view key, std::string_view value) {
    if (!hasWithout || key != without) {
      storage->Add(key, value);
    }
  });
  m_storage = std::move(storage);
  m_end = m_storage->pool.End();
  m_count = m_storage->live;
}

// Adding is possible in shared storage too, as long as no other copy has added anything.
void HeaderMap::MakeWritable() {
  if (m_storage == nullptr) {
    m_storage = std::make_shared<Storage>();
  } else if (m_end != m_storage->pool.End()) {
    Detach({}, false);
  }
}

void HeaderMap::Set(std::string_view key, std::string_view value) {
  const std::optional<uint32_t> old = FindVisible(key);
  if (old && m_storage->At(*old).value == value) {
    return;
  }
  if (old) {
    const bool alone = m_storage.use_count() == 1 && m_end == m_storage->pool.End();
    if (alone && m_storage->dead < m_storage->live + kSpareDead) {
      m_storage->Kill(*old);
    } else {
      Detach(key, true);
    }
  } else {
    MakeWritable();
  }
  m_storage->Add(key, value);
  m_end = m_storage->pool.End();
  m_count = m_storage->live;
}

std::string_view HeaderMap::Touch(std::string_view key) {
  if (const std::optional<std::string_view> value = Find(key)) {
    return *value;
  }
  Set(key, {});
  return {};
}

bool HeaderMap::Erase(std::string_view key) {
  if (!Contains(key)) {
    return false;
  }
  Detach(key, true);
  return true;
}

void HeaderMap::Clear() {
  m_storage.reset();
  m_end = 0;
  m_count = 0;
}

std::vector<uint32_t> HeaderMap::SortedOffsets() const {
  std::vector<uint32_t> offsets;
  offsets.reserve(m_count);
  for (uint32_t offset = 0; offset < m_end;) {
    const Record record = m_storage->At(offset);
    if (!record.dead) {
      offsets.push_back(offset);
    }
    offset = m_storage->pool.After(offset, record.size);
  }
  std::sort(offsets.begin(), offsets.end(),
            [this](uint32_t a, uint32_t b) { return m_storage->At(a).key < m_storage->At(b).key; });
  return offsets;
}

std::vector<HeaderMap::Item> HeaderMap::Sorted() const {
  std::vector<Item> items;
  items.reserve(m_count);
  ForEachSorted(
      [&](std::string_view key, std::string_view value) { items.emplace_back(key, value); });
  return items;
}

size_t HeaderMap::Memory() const {
  if (m_storage == nullptr) {
    return 0;
  }
  const size_t slots = m_storage->index == nullptr ? 0 : m_storage->index->capacity();
  return m_storage->pool.Reserved() + slots * sizeof(uint32_t);
}

void HeaderMap::Shrink() {
  if (m_storage != nullptr && m_storage.use_count() == 1) {
    m_storage->pool.Shrink();
  }
}

bool operator==(const HeaderMap& a, const HeaderMap& b) {
  if (a.m_count != b.m_count) {
    return false;
  }
  bool same = true;
  a.ForEach(
      [&](std::string_view key, std::string_view value) { same = same && b.Find(key) == value; });
  return same;
}

}  // namespace postmarker
