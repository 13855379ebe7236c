// TokenCountMap: its index, and the memory that it charges to its budget.
#include <algorithm>
#include <utility>

#include "analysis/SequenceEstimate.h"
#include "analysis/TokenCountMap.h"

namespace postmarker {
namespace {

constexpr size_t kFirstSlots = 64;

// A tight index stays quick while an eighth of it is free.
size_t TightPlaces(size_t entries) {
  return entries + entries / 7 + 1;
}

}  // namespace

// Few entries have no index, so the first one is made from their keys.
void TokenCountMap::Rehash(size_t slotCount) {
  const size_t memory = slotCount * sizeof(Slot);
  if (m_budget != nullptr && !m_budget->HasRoom(memory)) {
    m_budget->Relieve();
    if (m_isTight) {
      return;
    }
  }
  Charge(memory);  // the old ones are still there
  std::vector<Slot> slots(slotCount);
  const size_t mask = slotCount - 1;
  const auto put = [&](const Slot& old) {
    size_t slot = old.hash & mask;
    while (slots[slot].number != 0) {
      slot = (slot + 1) & mask;
    }
    slots[slot] = old;
  };
  if (m_slots.empty()) {
    char buffer[kLongestGapped];
    for (size_t i = 0; i < m_entries.Size(); ++i) {
      const uint32_t hash = TextHash(KeyOf(m_entries[i], buffer)).Bits();
      put({static_cast<uint32_t>(i + 1), hash});
    }
  }
  for (const Slot& old : m_slots) {
    if (old.number != 0) {
      put(old);
    }
  }
  m_slots = std::move(slots);
  ChargeHeld();
}

// Makes the index large enough for so many entries.
void TokenCountMap::Reserve(size_t entries) {
  if (m_isTight) {
    return;
  }
  size_t slots = std::max(kFirstSlots, m_slots.size());
  while (entries * 4 > slots * 3) {
    slots *= slots < kMostKeptSlots ? 4 : 2;
  }
  if (entries > kFewEntries && slots != m_slots.size()) {
    Rehash(slots);
  }
}

// The index is full: it is made anew, with the last entry in it.
void TokenCountMap::InsertAndGrow(uint32_t hash) {
  const auto number = static_cast<uint32_t>(m_entries.Size());
  const bool fromKeys = m_slots.empty();
  Reserve(number);
  if (fromKeys || m_isTight) {
    return;
  }
  const size_t mask = m_slots.size() - 1;
  size_t slot = hash & mask;
  while (m_slots[slot].number != 0) {
    slot = (slot + 1) & mask;
  }
  m_slots[slot] = {number, hash};
}

void TokenCountMap::Tighten() {
  const size_t entries = m_entries.Size();
  if (m_slots.size() > kMostKeptSlots) {
    Tighten(entries * 2);
  } else if (m_tight.Places() > TightPlaces(entries + entries / 8 + kFewEntries)) {
    MakeTightIndex(entries);
  }
}

void TokenCountMap::Tighten(size_t entries) {
  m_isTight = true;
  m_slots = std::vector<Slot>();
  MakeTightIndex(entries);
}

// Makes the index anew from the keys, for so many entries if there is room for them. The old one is
// given back before.
void TokenCountMap::MakeTightIndex(size_t entries) {
  m_tight.Reset(0);
  ChargeHeld();
  const size_t places = TightPlaces(std::clamp(entries, m_entries.Size() + 1, MostEntries()));
  Charge(places * TagIndex::kBytesPerPlace);
  m_tight.Reset(places);
  char buffer[kLongestGapped];
  for (size_t i = 0; i < m_entries.Size(); ++i) {
    const uint32_t hash = TextHash(KeyOf(m_entries[i], buffer)).Bits();
    m_tight.Set(m_tight.FindFree(hash), hash, static_cast<uint32_t>(i));
  }
}

// How many entries there may be when what is left of the budget is spent on entries without texts
// of their own, and an index of just the right size.
size_t TokenCountMap::MostEntries() const {
  const size_t entries = m_entries.Size();
  if (m_budget == nullptr) {
    return SIZE_MAX;
  }
  const size_t indexed = TightPlaces(entries) * TagIndex::kBytesPerPlace;
  const size_t room = m_budget->Room();
  const size_t least = entries + entries / 16 + kFewEntries;
  return room < indexed ? least : std::max(least, entries + (room - indexed) / kTightEntry);
}

// Puts the last entry into the index.
void TokenCountMap::PutTight(uint32_t hash) {
  const size_t entries = m_entries.Size();
  if (TightPlaces(entries) > m_tight.Places()) {
    MakeTightIndex(entries * 2);
  } else {
    m_tight.Set(m_tight.FindFree(hash), hash, static_cast<uint32_t>(entries - 1));
  }
}

// Counting that would be given up in the end is not begun.
void TokenCountMap::CheckSequencesFit(const WordList& words) const {
  const size_t most = 3 * words.Size();
  if (m_budget == nullptr || most <= m_budget->Room() / kTightEntry) {
    return;
  }
  const size_t index = HeldMemory() - m_pool.Reserved();
  const size_t tight = std::min(index, m_entries.Size() * kTightEntry);
  const size_t room = (m_budget->Room() + index - tight) / kTightEntry;
  if (EstimateSequences(words) > room + room / 16) {
    throw MemoryBudget::Exceeded();
  }
}

void TokenCountMap::Charge(size_t bytes) {
  if (m_budget != nullptr) {
    m_budget->Charge(bytes);
    m_charged += bytes;
  }
}

void TokenCountMap::ChargeHeld() {
  const size_t held = HeldMemory();
  if (held > m_charged) {
    Charge(held - m_charged);
  } else if (m_budget != nullptr) {
    m_budget->Refund(std::exchange(m_charged, held) - held);
  }
}

// Walking the map takes memory too; it is charged with the entries.
size_t TokenCountMap::BlocksMemory(size_t blocks) const {
  const size_t entries = blocks * EntryList::kBlock;
  const size_t places = m_isTight ? 0 : std::min(entries, kMostPlaces);
  return entries * (sizeof(Entry) + sizeof(uint32_t)) +
         places * (sizeof(Iterator::Place) - sizeof(uint32_t));
}

size_t TokenCountMap::HeldMemory() const {
  return BlocksMemory(m_entries.Blocks()) + m_slots.capacity() * sizeof(Slot) +
         m_tight.Places() * TagIndex::kBytesPerPlace + m_pool.Reserved();
}

}  // namespace postmarker
