#include "host/programs/machine.h"

#include <algorithm>

#include "include/lmainte.h"

namespace programs {
namespace {

// A record that cannot be read says nothing of its unit, neither that it is missing nor that it works.
std::uint32_t status_of(const box::Unit &unit) {
  if (!unit.unreadable.empty()) throw box::InventoryError(unit.place.name + ": " + unit.unreadable);
  return unit.status;
}

bool is_faulted(const box::Unit &unit) {
  constexpr std::uint32_t kBoth = LMAINTE_STATUS_INSTALLED | LMAINTE_STATUS_FAULTED;
  return (status_of(unit) & kBoth) == kBoth;
}

// Whether a unit of the box is so. Looks at each: one that cannot be read stops the question in any order.
template <typename Predicate>
bool has_unit_that(const box::Inventory &inventory, const Predicate &is_so) {
  const auto units = inventory.units();
  return std::count_if(units.begin(), units.end(), is_so) > 0;
}

}  // namespace

bool UnitState::installed() const {
  return (status & LMAINTE_STATUS_INSTALLED) != 0;
}
bool UnitState::faulted() const {
  return (status & LMAINTE_STATUS_FAULTED) != 0;
}
bool UnitState::wants_service() const {
  return (status & (LMAINTE_STATUS_FAULTED | LMAINTE_STATUS_DEGRADED)) != 0;
}

bool Machine::has_unit(std::string_view name) const {
  return box::unit_id(model, name).has_value();
}

bool Machine::has_expansion(std::string_view name) const {
  return hardware.has_expansion(name);
}

UnitState Machine::unit(std::string_view name) const {
  for (const box::UnitPlace &at : inventory.places()) {
    if (at.name != name) continue;
    return {status_of(inventory.unit(name)), at.entries.front().type, at.carried ? at.carrier() : ""};
  }
  return {LMAINTE_STATUS_INSTALLED, 0, ""};
}

bool Machine::another_works(std::string_view name) const {
  const std::int32_t type = unit(name).type;
  return has_unit_that(inventory, [&](const box::Unit &other) {
    return !other.place.carried && other.place.name != name && other.place.entries.front().type == type &&
           (status_of(other) & LMAINTE_STATUS_INSTALLED) != 0 && !is_faulted(other) && !is_detached(other.place.name);
  });
}

bool Machine::has_fault(std::string_view name) const {
  return has_unit_that(inventory, [&](const box::Unit &unit) {
    const bool belongs = unit.place.name == name || (unit.place.carried && unit.place.carrier() == name);
    return belongs && is_faulted(unit);
  });
}

bool Machine::is_detached(std::string_view name) const {
  return hardware.detached(std::string(name));
}

void Machine::set_detached(std::string_view name, bool detached) const {
  hardware.set_detached(std::string(name), detached);
}

}  // namespace programs
