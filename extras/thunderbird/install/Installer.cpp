#include "Installer.h"

#include <algorithm>
#include <map>
#include <utility>

namespace postmarker::install {
namespace {

// The innermost parent first, as a parent with another one in it stays.
void RemoveParents(const std::vector<std::string>& parents, Place* place) {
  for (size_t i = parents.size(); i-- > 0;) {
    place->RemoveParent(parents[i]);
  }
}

void AddMissing(const std::vector<std::string>& names, std::vector<std::string>* all) {
  for (const std::string& name : names) {
    if (std::find(all->begin(), all->end(), name) == all->end()) {
      all->push_back(name);
    }
  }
}

}  // namespace

bool Installer::IsInstalled() const {
  Content bytes;
  return !m_record->Read(&bytes) || bytes;
}

bool Installer::Install(const std::string& target) {
  Content old;
  std::optional<Record> record;
  if (!ReadRecord(&old, &record)) {
    return false;
  }
  if (record && record->target != target) {
    m_say("It is installed in " + record->target + ". Use --remove first.");
    return false;
  }
  if (!record) {
    record = Record{target, m_record->MissingParents(), {}};
  }
  const Fillings fillings = m_fillings(target);
  // What was there is on record before anything changes.
  Plan plan = {{{m_record, old, std::nullopt}}, {}};
  if (!PlanToFill(fillings, &*record, &plan)) {
    return false;
  }
  plan.changes.front().to = RecordText(*record);
  return Apply(plan);
}

bool Installer::Remove(const std::optional<std::string>& target) {
  Content old;
  std::optional<Record> record;
  if (!ReadRecord(&old, &record)) {
    return false;
  }
  if (!record) {
    m_say("Nothing is installed.");
    return true;
  }
  if (target && *target != record->target) {
    m_say("It is installed in " + record->target + ", not in " + *target + ".");
    return false;
  }
  const Fillings fillings = m_fillings(record->target);
  Plan plan;
  if (!PlanToRestore(fillings, &*record, &plan)) {
    return false;
  }
  plan.changes.push_back({m_record, old, std::nullopt});
  if (!Apply(plan)) {
    return false;
  }
  for (size_t i = fillings.size(); i-- > 0;) {
    Place* const place = fillings[i].place.get();
    RemoveParents(record->entries[place->Name()].made, place);
  }
  RemoveParents(record->made, m_record);
  return true;
}

// False if there is a record that can't be understood. *record is empty without one.
bool Installer::ReadRecord(Content* bytes, std::optional<Record>* record) const {
  if (!m_record->Read(bytes)) {
    return Refuse(*m_record, "can't be read.");
  }
  *record = *bytes ? ParseRecord(**bytes) : std::nullopt;
  return !*bytes || *record || Refuse(*m_record, "is damaged: it tells what was there before.");
}

// Adds to *record what is there now.
bool Installer::PlanToFill(const Fillings& fillings, Record* record, Plan* plan) const {
  for (const Filling& filling : fillings) {
    const std::string name = filling.place->Name();
    Content now;
    if (!filling.place->Read(&now)) {
      return Refuse(*filling.place, "can't be read.");
    }
    const Content filled = filling.fill(now);
    if (!filled) {
      return Refuse(*filling.place, filling.refusal);
    }
    const auto [found, isNew] = record->entries.try_emplace(name);
    Entry& entry = found->second;
    // What an earlier installation found there stays on record.
    if (isNew || now != entry.after) {
      entry.before = now;
      if (now && now != filled) {
        plan->notes.push_back(name + " held something else, which --remove puts back.");
      }
    }
    entry.after = filled;
    AddMissing(filling.place->MissingParents(), &entry.made);
    plan->changes.push_back({filling.place.get(), now, filled});
  }
  return true;
}

bool Installer::PlanToRestore(const Fillings& fillings, Record* record, Plan* plan) const {
  for (size_t i = fillings.size(); i-- > 0;) {
    Place* const place = fillings[i].place.get();
    const Entry& entry = record->entries[place->Name()];
    Content now;
    if (!place->Read(&now)) {
      return Refuse(*place, "can't be read.");
    }
    if (now == entry.after) {
      plan->changes.push_back({place, now, entry.before});
    } else if (now != entry.before) {
      plan->notes.push_back(place->Name() + " has changed since and stays as it is.");
    }
  }
  return true;
}

// All changes in their order, or none.
bool Installer::Apply(const Plan& plan) const {
  const std::vector<Change>& changes = plan.changes;
  std::vector<std::vector<std::string>> missing;
  missing.reserve(changes.size());
  for (const Change& change : changes) {
    missing.push_back(change.place->MissingParents());
  }
  size_t made = 0;
  while (made < changes.size() &&
         (changes[made].from == changes[made].to || changes[made].place->Write(changes[made].to))) {
    ++made;
  }
  if (made < changes.size()) {
    const bool isUndone = Undo(changes, made);
    for (size_t i = changes.size(); i-- > 0;) {
      RemoveParents(missing[i], changes[i].place);
    }
    m_say(changes[made].place->Name() + " can't be changed. " +
          (isUndone ? "Everything is as it was before."
                    : "What was done could not be undone: try --remove."));
    return false;
  }
  for (const std::string& note : plan.notes) {
    m_say(note);
  }
  return true;
}

// Takes the first `count` changes back. The record stays as long as it is needed.
bool Installer::Undo(const std::vector<Change>& changes, size_t count) const {
  bool isUndone = true;
  for (size_t i = count; i-- > 0;) {
    const Change& change = changes[i];
    if (change.from != change.to && (isUndone || change.place != m_record)) {
      isUndone = change.place->Write(change.from) && isUndone;
    }
  }
  return isUndone;
}

bool Installer::Refuse(const Place& place, const std::string& reason) const {
  m_say(place.Name() + " " + reason + " Nothing is changed.");
  return false;
}

}  // namespace postmarker::install
