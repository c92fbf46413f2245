#include "host/programs/machine.h"

#include <algorithm>

#include "include/lmainte.h"

namespace programs {
namespace {

// A record that cannot be read says nothing of its unit, neither that it is missing nor that it works.
const box::Unit &readable(const box::Unit &unit) {
  if (!unit.unreadable.empty()) throw box::BoxError(unit.place.name + ": " + unit.unreadable);
  return unit;
}

// Whether a unit of the box is so. Looks at each: one that cannot be read stops the question in any order.
template <typename Predicate>
bool has_unit_that(const box::Inventory &inventory, const Predicate &is_so) {
  const auto units = inventory.units();
  return std::count_if(units.begin(), units.end(), is_so) > 0;
}

}  // namespace

bool Machine::has_unit(std::string_view name) const {
  return box::unit_id(model, name).has_value();
}

bool Machine::has_expansion(std::string_view name) const {
  return hardware.has_expansion(name);
}

box::Unit Machine::unit(std::string_view name) const {
  if (inventory.has(name)) return readable(inventory.unit(name));
  box::Unit unrecorded{};
  unrecorded.place.name = name;
  unrecorded.status = LMAINTE_STATUS_INSTALLED;
  return unrecorded;
}

bool Machine::another_works(std::string_view name) const {
  const std::int32_t type = unit(name).place.type();
  return has_unit_that(inventory, [&](const box::Unit &other) {
    return !other.place.carried && other.place.name != name && other.place.type() == type &&
           readable(other).installed() && !other.faulted() && !is_detached(other.place.name);
  });
}

bool Machine::has_fault(std::string_view name) const {
  return has_unit_that(inventory, [&](const box::Unit &unit) {
    const bool belongs = unit.place.name == name || (unit.place.carried && unit.place.carrier() == name);
    return belongs && readable(unit).faulted();
  });
}

bool Machine::is_detached(std::string_view name) const {
  return hardware.detached(std::string(name));
}

void Machine::set_detached(std::string_view name, bool detached) const {
  hardware.set_detached(std::string(name), detached);
}

}  // namespace programs
