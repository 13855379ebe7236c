#include "CallGate_win.h"
#include "MapiObjects_win.h"

#include <map>
#include <memory>

namespace postmarker::peer {
namespace {

// What one piece of memory consists of. The pieces live in a table by their first address.
using Parts = std::vector<std::unique_ptr<char[]>>;

std::mutex g_lock;
std::map<void*, Parts>& Memory() {
  static std::map<void*, Parts> memory;
  return memory;
}

template <class Type>
Type* Allocate(size_t size, Parts* parts) {
  parts->push_back(std::make_unique<char[]>(size));
  return reinterpret_cast<Type*>(parts->back().get());
}

template <class Type>
Type* HandOut(Type* memory, Parts parts) {
  const std::lock_guard lock(g_lock);
  Memory().emplace(memory, std::move(parts));
  ++CallGate::Instance().live;
  return memory;
}

SPropValue* Fill(const std::vector<Property>& properties, Parts* parts) {
  auto* const values = Allocate<SPropValue>(sizeof(SPropValue) * (properties.size() + 1), parts);
  for (size_t i = 0; i < properties.size(); ++i) {
    const Property& property = properties[i];
    char* const bytes = Allocate<char>(property.bytes.size() + 1, parts);
    property.bytes.copy(bytes, property.bytes.size());
    values[i].ulPropTag = property.tag;
    if (PROP_TYPE(property.tag) == PT_BINARY) {
      values[i].Value.bin.cb = static_cast<ULONG>(property.bytes.size());
      values[i].Value.bin.lpb = reinterpret_cast<BYTE*>(bytes);
    } else if (PROP_TYPE(property.tag) == PT_STRING8) {
      values[i].Value.lpszA = bytes;
    } else if (PROP_TYPE(property.tag) == PT_BOOLEAN) {
      values[i].Value.b = property.flag ? 1 : 0;
    } else {
      values[i].Value.err = static_cast<SCODE>(0x8004010F);
    }
  }
  return values;
}

}  // namespace

SPropValue* MakeProperties(const std::vector<Property>& properties) {
  Parts parts;
  SPropValue* const values = Fill(properties, &parts);
  return HandOut(values, std::move(parts));
}

SRowSet* MakeRows(const std::vector<std::vector<Property>>& rows) {
  Parts parts;
  auto* const set = Allocate<SRowSet>(sizeof(SRowSet) + sizeof(SRow) * rows.size(), &parts);
  set->cRows = static_cast<ULONG>(rows.size());
  for (size_t i = 0; i < rows.size(); ++i) {
    set->aRow[i].cValues = static_cast<ULONG>(rows[i].size());
    set->aRow[i].lpProps = MakeProperties(rows[i]);
  }
  return HandOut(set, std::move(parts));
}

SPropTagArray* MakeTags(const std::vector<ULONG>& tags) {
  Parts parts;
  auto* const array =
      Allocate<SPropTagArray>(sizeof(SPropTagArray) + sizeof(ULONG) * tags.size(), &parts);
  array->cValues = static_cast<ULONG>(tags.size());
  for (size_t i = 0; i < tags.size(); ++i) {
    array->aulPropTag[i] = tags[i];
  }
  return HandOut(array, std::move(parts));
}

void FreeRows(SRowSet* rows) {
  for (ULONG i = 0; i < rows->cRows; ++i) {
    FreeMemory(rows->aRow[i].lpProps);
  }
  FreeMemory(rows);
}

void FreeMemory(void* memory) {
  const std::lock_guard lock(g_lock);
  if (Memory().erase(memory) == 1) {
    --CallGate::Instance().live;
  } else {
    ++CallGate::Instance().falseReleases;
  }
}

}  // namespace postmarker::peer
