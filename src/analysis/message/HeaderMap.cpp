#include "analysis/message/HeaderMap.h"

#include <algorithm>
#include <cstring>

#include "analysis/message/PackedLength.h"
#include "support/TextHash.h"
#include "support/TextSort.h"

namespace postmarker {
namespace {

constexpr uint32_t kFewRecords = 12;  // up to so many are found by walking them
constexpr size_t kFirstPlaces = 64;
constexpr uint32_t kSpareDead = 64;  // replaced records that are kept before the map is rebuilt

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
  const size_t place = index->Find(TextHash(key).Bits(), [&](uint32_t offset) {
    const Record record = At(offset);
    return !record.dead && record.key == key;
  });
  return index->IsFree(place) ? std::nullopt : std::optional(index->At(place));
}

void HeaderMap::Storage::Add(std::string_view key, std::string_view value) {
  const size_t records = size_t{live} + dead + 1;
  if (index == nullptr ? records > kFewRecords : !index->HasRoomFor(records)) {
    Reindex(index == nullptr ? kFirstPlaces : index->Places() * 3 / 2);
  }
  const size_t size = PackedLengthSize(key.size() << 1) + PackedLengthSize(value.size()) +
                      key.size() + value.size();
  const uint32_t offset = pool.Allocate(size);
  char* out = PutPackedLength(PutPackedLength(pool.At(offset), key.size() << 1), value.size());
  out = std::copy(key.begin(), key.end(), out);
  std::copy(value.begin(), value.end(), out);
  ++live;
  if (index != nullptr) {
    index->Add(TextHash(key).Bits(), offset);
  }
}

void HeaderMap::Storage::Reindex(size_t places) {
  if (index == nullptr) {
    index = std::make_unique<HashIndex>();
  }
  index->Reset(places);
  for (uint32_t offset = 0, end = pool.End(); offset < end;) {
    const Record record = At(offset);
    if (!record.dead) {
      index->Add(TextHash(record.key).Bits(), offset);
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
  SortByText(&offsets, [this](uint32_t offset) { return m_storage->At(offset).key; });
  return offsets;
}

std::vector<HeaderMap::Item> HeaderMap::Sorted() const {
  std::vector<Item> items;
  items.reserve(m_count);
  ForEachSorted(
      [&](std::string_view key, std::string_view value) { items.emplace_back(key, value); });
  return items;
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
