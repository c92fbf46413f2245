#include "host/programs/machine.h"

#include "include/lmainte.h"

namespace programs {
namespace {

std::string detached_key(std::string_view name) {
  return "detached " + std::string(name);
}

bool is_faulted(const box::Unit &unit) {
  return (unit.status & LMAINTE_STATUS_INSTALLED) != 0 && (unit.status & LMAINTE_STATUS_FAULTED) != 0;
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
  if (!name.starts_with("/IOX@")) return false;
  return hardware.get("power " + std::string(name.substr(0, name.find('/', 1)))).has_value();
}

UnitState Machine::unit(std::string_view name) const {
  for (const box::UnitPlace &at : inventory.places()) {
    if (at.name != name) continue;
    return {inventory.unit(name).status, at.entries.front().type, at.carried ? at.carrier() : ""};
  }
  return {LMAINTE_STATUS_INSTALLED, 0, ""};
}

bool Machine::another_works(std::string_view name) const {
  const std::int32_t type = unit(name).type;
  const auto units = inventory.units();
  return std::any_of(units.begin(), units.end(), [&](const box::Unit &other) {
    return !other.place.carried && other.place.name != name && other.place.entries.front().type == type &&
           (other.status & LMAINTE_STATUS_INSTALLED) != 0 && !is_faulted(other) && !is_detached(other.place.name);
  });
}

bool Machine::has_fault(std::string_view name) const {
  const auto units = inventory.units();
  return std::any_of(units.begin(), units.end(), [&](const box::Unit &unit) {
    const bool belongs = unit.place.name == name || (unit.place.carried && unit.place.carrier() == name);
    return belongs && is_faulted(unit);
  });
}

bool Machine::is_detached(std::string_view name) const {
  return hardware.get(detached_key(name)).has_value();
}

void Machine::set_detached(std::string_view name, bool detached) const {
  if (detached) {
    hardware.set(detached_key(name), "yes");
  } else {
    hardware.clear(detached_key(name));
  }
}

}  // namespace programs
