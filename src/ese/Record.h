// The columns of one record.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "ese/Page.h"
#include "ese/Schema.h"

namespace postmarker::ese {

// What a record holds of a column, not yet decompressed or fetched.
struct StoredValue {
  enum class State {
    kNull,
    kPresent,
    kDefault,  // the record says nothing: the catalog's default value holds, else null
    kDamaged,
  };
  State state = State::kNull;
  std::string_view bytes;     // in the record
  bool isCompressed = false;  // the bytes are in compressed form
  bool isSeparated = false;   // the bytes are the id of a long value
};

// A view of a record. One object can be used for record after record, so that reading many
// allocates little.
class Record {
 public:
  // Takes the data of an entry of `leaf`; both must outlive the use. False if the record's header
  // does not fit its size: then no column may be read.
  bool Assign(const Page& leaf, std::string_view data);

  // A column's value. Columns with several values have them numbered from 0; after the last one
  // the state is kNull. REQUIRES: Assign returned true.
  [[nodiscard]] StoredValue Find(const Column& column, size_t number = 0) const;

 private:
  // A column in the tagged part. `order` sorts them: template columns first, then by id.
  struct TaggedColumn {
    uint32_t order;
    std::string_view bytes;
    uint8_t info;
  };

  [[nodiscard]] StoredValue FindFixed(const Column& column) const;
  [[nodiscard]] StoredValue FindVariable(const Column& column) const;
  [[nodiscard]] StoredValue FindTagged(const Column& column, size_t number) const;
  void ReadTagged() const;
  void ReadNewTagged() const;
  void ReadOldTagged() const;
  [[nodiscard]] std::optional<uint16_t> VariableEnd(size_t index) const;

  std::string_view m_data;
  std::string_view m_fixed;     // up to the null bits
  std::string_view m_nullBits;  // of the fixed columns
  std::string_view m_variable;  // the values of variable columns, and the tagged part after them
  size_t m_variableTable = 0;   // place of the table of their ends
  uint32_t m_fixedCount = 0;
  uint32_t m_variableCount = 0;
  bool m_isLarge = false;
  bool m_isNew = true;
  // Found at the first look at a tagged column.
  mutable std::vector<TaggedColumn> m_tagged;
  mutable bool m_hasReadTagged = false;
  mutable bool m_isTaggedDamaged = false;
};

}  // namespace postmarker::ese
