// The headers of one entity of a message: an ordered map from lower-case header name to value, both
// bytes.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "support/HashIndex.h"
#include "support/TextPool.h"

namespace postmarker {

// A map made for reading many headers fast and holding them tightly: one pool of bytes, and an
// index once there are more than a handful. 200,000 different headers take 1.3 to 1.9 times the
// bytes of their message, and 6 to 15 times in std::map, where what is kept of a whole message may
// take 6 times. The headers of real messages are set, looked up and copied in two thirds of the
// time. Copies share what they have in common: copying costs
// nothing, adding keys neither; only a change of what is there makes a copy of its own. Keys and
// values are counted bytes: a NUL is a byte like others. Views that come out of it live until the
// map is changed or destroyed. One thread at a time, also for copies of one map.
class HeaderMap {
 public:
  // A value that is read or written through the index operator.
  class Reference {
   public:
    Reference(HeaderMap* map, std::string_view key) : m_map(map), m_key(key) {}
    operator std::string() const { return std::string(m_map->Get(m_key)); }
    Reference& operator=(std::string_view value) {
      m_map->Set(m_key, value);
      return *this;
    }

   private:
    HeaderMap* m_map;
    std::string_view m_key;
  };

  using Item = std::pair<std::string_view, std::string_view>;

  // The value of a key: an empty one where the key is missing.
  [[nodiscard]] std::string_view Get(std::string_view key) const;

  // The value of a key, or nothing where it is missing.
  [[nodiscard]] std::optional<std::string_view> Find(std::string_view key) const;

  [[nodiscard]] bool Contains(std::string_view key) const { return Find(key).has_value(); }

  // Sets a value; a missing key is added. REQUIRES: neither is a view into this map.
  void Set(std::string_view key, std::string_view value);

  // Adds the key with an empty value where it is missing, and gives its value: what reading through
  // the index operator does.
  std::string_view Touch(std::string_view key);

  // Touches the key. The reference holds a view of `key`.
  Reference operator[](std::string_view key) {
    Touch(key);
    return {this, key};
  }

  // True if the key was there.
  bool Erase(std::string_view key);

  void Clear();
  [[nodiscard]] size_t Size() const { return m_count; }
  [[nodiscard]] bool IsEmpty() const { return m_count == 0; }

  // All headers in the order of the bytes of their keys.
  [[nodiscard]] std::vector<Item> Sorted() const;

  // Calls visit(key, value) for each header in that order.
  template <class Visit>
  void ForEachSorted(Visit visit) const {
    for (const uint32_t offset : SortedOffsets()) {
      const Record record = m_storage->At(offset);
      visit(record.key, record.value);
    }
  }

  // Calls visit(key, value) for each header, in no particular order.
  template <class Visit>
  void ForEach(Visit visit) const {
    if (m_storage != nullptr) {
      for (uint32_t offset = 0; offset < m_end;) {
        const Record record = m_storage->At(offset);
        if (!record.dead) {
          visit(record.key, record.value);
        }
        offset = m_storage->pool.After(offset, record.size);
      }
    }
  }

  // Gives back spare memory of a map that is kept and no longer grows.
  void Shrink();

  friend bool operator==(const HeaderMap& a, const HeaderMap& b);

 private:
  struct Record {
    std::string_view key;
    std::string_view value;
    size_t size;  // of the whole record
    bool dead;    // replaced by a later one
  };

  struct Storage {
    TextPool pool;
    std::unique_ptr<HashIndex> index;  // of the records' offsets; none for few
    uint32_t live = 0;
    uint32_t dead = 0;

    [[nodiscard]] Record At(uint32_t offset) const;
    [[nodiscard]] std::optional<uint32_t> Find(std::string_view key) const;
    void Add(std::string_view key, std::string_view value);
    void Reindex(size_t places);
    void Kill(uint32_t offset);
  };

  void Detach(std::string_view without, bool hasWithout);
  void MakeWritable();
  [[nodiscard]] std::vector<uint32_t> SortedOffsets() const;
  [[nodiscard]] std::optional<uint32_t> FindVisible(std::string_view key) const;

  std::shared_ptr<Storage> m_storage;
  uint32_t m_end = 0;  // records at and beyond it were added by a copy that shares the storage
  uint32_t m_count = 0;
};

}  // namespace postmarker
