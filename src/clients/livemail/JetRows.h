// The rows of an open table: moving among them, and reading columns.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "clients/livemail/JetHandles.h"
#include "clients/livemail/JetValue.h"

namespace postmarker {

// The engine's code: 0 if there is a row.
jet::Code MoveTo(JetTableRef table, int32_t step);

// To the first row whose columns in the index have the values of `filter`, with the last such row
// as the end. 0 if there is one. `columns` tells how texts are stored.
jet::Code MoveToFiltered(JetTableRef table, const std::wstring& index,
                         const std::vector<std::wstring>& indexColumns, const JetColumns& columns,
                         const JetRow& filter);

// A column of the current row. Nothing if it is null, was cut, or can't be read for another reason.
// Names and numbers are for listings; a number has up to 4 bytes.
std::optional<std::wstring> ReadName(JetTableRef table, jet::ColumnId column);
std::optional<uint32_t> ReadNumber(JetTableRef table, jet::ColumnId column);
std::optional<JetValue> ReadColumn(JetTableRef table, const JetColumnInfo& column);

// False if a column of the current row differs from what is required. One that is not among
// `columns`, or can't be read, does not.
bool HasRequired(JetTableRef table, const JetColumns& columns, const JetRow& required);

}  // namespace postmarker
