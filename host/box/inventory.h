// The units of a box: what state they are in, and what a technician can do to them.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/box/inventory_kinds.h"
#include "host/box/place.h"

namespace box {

// What people are told: its text names the box, the unit, the reason and the way out.
class InventoryError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

enum class Change {
  kPull,     // taken out, with the units that it carries; its identity record goes where it goes with the unit
  kInsert,   // put in, with the units that it carries, all healthy
  kFault,    // faulted, no longer degraded
  kDegrade,  // degraded, no longer faulted
  kRepair    // neither
};

struct Unit {
  UnitPlace place;
  std::uint32_t status;  // status word with the flag byte merged in
  std::string fru_name;  // empty where there is none
};

std::string_view state_word(std::uint32_t status);  // "Normal", "Degraded", "Faulted", "Not installed"

class Inventory {
 public:
  // The box at this place. Throws InventoryError when it is no box.
  explicit Inventory(const Place &place);

  std::uint32_t model() const { return model_; }
  const std::vector<UnitPlace> &places() const { return places_; }

  // Reads every unit; each carried unit follows the one that carries it. Throws.
  std::vector<Unit> units() const;

  // The full name of a unit that may be given without its leading "/". Throws InventoryError when the box has none.
  std::string resolve(std::string_view name) const;

  // Changes all of these units or, when one of them cannot be changed so, none. A running command sees whole changes.
  void change(Change change, const std::vector<std::string> &names) const;

 private:
  std::size_t find(std::string_view name) const;

  Place place_;
  std::uint32_t model_;
  std::vector<UnitPlace> places_;
};

// Makes a box: a folder with everything that a healthy server of this model, full of units, has. Throws.
void create_box(const Place &place, std::uint32_t model);

// Removes what create_box made, and what commands left in the box's tmp folder. Throws.
void remove_box(const Place &place);

bool is_box(const Place &place);

}  // namespace box
