// Writes out all locations of a model from the patterns in the library's tables. Nothing in the box parses a path:
// unit_name looks it up among these.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "host/box/model.h"

namespace box {

using UnitId = std::array<std::uint32_t, 2>;

struct Location {
  std::string name;  // "/CMU#0/MEM#03A"
  UnitId id;
  const lmainte_unit_code *row;    // which stands for it
  std::vector<std::uint8_t> path;  // the numbers of its components in the unit id
  std::uint8_t number;             // of the last component in the records
};

// Every location, in the order of the table's rows.
std::vector<Location> locations_of(const Model &model);

}  // namespace box
