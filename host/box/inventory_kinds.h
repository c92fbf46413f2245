// The units of a full server, and where each is written down.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "host/box/unit_name.h"
#include "host/box/unit_records.h"

namespace box {

// One place where a unit is written down. Some units are written down in more than one.
struct UnitEntry {
  std::int32_t type;     // unit type code of the records
  std::uint32_t number;  // among all units of its kind
  std::string record;
  std::size_t size;  // of the record
  std::size_t at;    // where the unit's entry begins, two words of unit id (kNowhere for a fan, which has none) ...
  std::size_t status_at;  // ... and its status word
  std::size_t flag_at;    // its flag byte, kNowhere where the kind has none
  std::string fru_record;
  FruLayout fru;
};

struct UnitPlace {
  std::string name;
  std::string label;  // the name below the unit that carries this one
  UnitId id;          // zeros for a fan of a tray: the server's own tables do not name it
  bool carried;       // sits on the unit that comes before it in the list and is not carried itself
  std::vector<UnitEntry> entries;

  std::int32_t type() const { return entries.empty() ? 0 : entries.front().type; }  // unit type code of the records
  std::string carrier() const { return name.substr(0, name.find('/', 1)); }
};

// Every unit that a full server of this model has, each followed by the units that it carries.
std::vector<UnitPlace> places_of(std::uint32_t model);

}  // namespace box
