// The units of a box: what state they are in, and what a technician can do to them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/box/contents.h"
#include "host/box/inventory_kinds.h"
#include "host/box/place.h"

namespace box {

enum class Change {
  kPull,     // taken out, with the units that it carries; its identity record stays, cleared; its board stops
  kInsert,   // put in, with the units that it carries, all healthy and with identity records of their own
  kFault,    // faulted, no longer degraded
  kDegrade,  // degraded, no longer faulted
  kRepair    // neither
};

struct Unit {
  UnitPlace place;
  std::uint32_t status;        // status word with the flag byte merged in; 0 where it cannot be read
  std::string unreadable;      // why it cannot be read, as RecordSet complains; empty when it can
  std::string fru_name;        // empty where there is none
  std::string fru_unreadable;  // why the identity record of an installed unit cannot be read

  // All false for a unit that cannot be read; the last three for one that is not installed.
  bool installed() const;
  bool faulted() const;
  bool degraded() const;
  bool wants_service() const { return faulted() || degraded(); }
};

std::string_view state_word(const Unit &unit);  // "Normal", "Degraded", "Faulted", "Not installed", "Unreadable"

class Inventory {
 public:
  // The box at this place. Throws BoxError when it is no box.
  explicit Inventory(const Place &place);

  std::uint32_t model() const { return model_; }
  const std::vector<UnitPlace> &places() const { return places_; }

  // Names may come without their leading "/".
  bool has(std::string_view name) const;

  // These units, each with those that it carries. Throws BoxError when the box has no such unit.
  std::vector<std::string> with_carried(const std::vector<std::string> &names) const;

  // Reads every unit; each carried unit follows the one that carries it. A record that cannot be read spoils the units
  // that are written down in it and no other. Throws where a database cannot be read.
  std::vector<Unit> units() const;

  // Reads these units, in this order. Throws BoxError when the box has no such unit.
  std::vector<Unit> units(const std::vector<std::string> &names) const;
  Unit unit(std::string_view name) const;

  // Changes all of these units or, when one of them cannot be changed so, none. A running command sees whole changes.
  // Returns the units with their new states, in this order, without their names in the identity records.
  std::vector<Unit> change(Change change, const std::vector<std::string> &names) const;

  // Puts a unit, or a location that has no record, under maintenance, or takes it out. Returns whether it was so before:
  // then nothing is changed, as where a record that would have to follow cannot be changed, which throws.
  bool set_flag(std::string_view name, bool start) const;

 private:
  std::vector<UnitPlace>::const_iterator place_named(std::string_view name) const;
  std::size_t find(std::string_view name) const;

  Place place_;
  std::uint32_t model_;
  std::vector<UnitPlace> places_;
};

// Puts units under maintenance where their records say so: a server tells by these alone.
void flag_marked_units(Contents &contents);

}  // namespace box
