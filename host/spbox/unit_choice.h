// Which units a list has: by location, kind, state and domain.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/box/hardware.h"
#include "host/box/inventory.h"
#include "host/box/partitions.h"

namespace spbox {

struct UnitChoice {
  std::vector<std::string> units;       // locations, or patterns as a shell has them; none: all
  std::string kind;                     // "psu", in any case: what stands before the number of a location's last part
  std::string state;                    // one of state_names()
  std::optional<std::uint32_t> domain;  // on a board of it

  bool is_all() const { return units.empty() && kind.empty() && state.empty() && !domain; }
};

// normal, degraded, faulted, out, unreadable; unusual is all that `spbox status` shows.
std::vector<std::string> state_names();

// In the order of the server. A location that is named brings what sits on it. Throws box::BoxError where the server has no such unit or
// kind.
std::vector<box::Unit> chosen_units(const UnitChoice &choice, const box::Inventory &inventory,
                                    const box::Hardware &hardware, const std::vector<box::Xsb> &xsbs);

}  // namespace spbox
