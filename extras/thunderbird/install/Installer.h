// Fills places and restores them, all or none. Knows no operating system.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Place.h"
#include "Record.h"

namespace postmarker::install {

// A place, and what an installation makes of its content. `fill` returns nothing if that can't be
// made; `refusal` then says why, in words that go after the place's name.
struct Filling {
  std::unique_ptr<Place> place;
  std::function<Content(const Content& before)> fill;
  std::string refusal;
};
using Fillings = std::vector<Filling>;

// The places of an installation into `target`.
using FillingsOf = std::function<Fillings(const std::string& target)>;

// One installation at a time is on record. What a person must know is passed to `say`, in whole
// sentences, also why something failed. For one thread.
class Installer {
 public:
  Installer(Place* record, FillingsOf fillings, std::function<void(const std::string&)> say)
      : m_record(record), m_fillings(std::move(fillings)), m_say(std::move(say)) {}

  // Fills the places for `target`. What was in them is on record before the first one changes; a
  // second time, what was there before the first. False, with all places as they were, if one can't
  // be read or filled, or if there is an installation into another target.
  bool Install(const std::string& target);

  // Restores what was there before Install, also after one that was interrupted. A place that no
  // longer holds what was put there keeps what it holds, and people are told. True as well if
  // nothing is installed. False, with all places as they were, if one can't be restored, or if
  // `target` is given and not the one on record.
  bool Remove(const std::optional<std::string>& target);

  // Is an installation on record, or something that can't be read.
  [[nodiscard]] bool IsInstalled() const;

 private:
  struct Change {
    Place* place;
    Content from;
    Content to;
  };
  struct Plan {
    std::vector<Change> changes;
    std::vector<std::string> notes;  // said once all changes are made
  };

  bool ReadRecord(Content* bytes, std::optional<Record>* record) const;
  bool PlanToFill(const Fillings& fillings, Record* record, Plan* plan) const;
  bool PlanToRestore(const Fillings& fillings, Record* record, Plan* plan) const;
  bool Apply(const Plan& plan) const;
  bool Undo(const std::vector<Change>& changes, size_t count) const;
  bool Refuse(const Place& place, const std::string& reason) const;

  Place* m_record;
  FillingsOf m_fillings;
  std::function<void(const std::string&)> m_say;
};

}  // namespace postmarker::install
