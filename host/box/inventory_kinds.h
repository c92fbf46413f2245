// Kinds of units, a row each: where a kind's units lie in the databases, and which locations they have on which model.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/box/unit_name.h"

namespace box {

inline constexpr std::size_t kNowhere = static_cast<std::size_t>(-1);

// The identity record of a unit, in the FRU database. The name's length is in the low six bits of a byte and the name
// follows it; a record without such a byte holds four characters and no length.
struct FruLayout {
  std::string_view record;  // pattern of its name; empty: the kind has no identity record
  std::size_t size = 0;
  std::size_t length_at = kNowhere;
  std::size_t name_at = 0;
  std::uint32_t first = 0;   // number of the first unit's record
  bool leaves_with = false;  // the record goes when the unit is pulled, and comes back with the next one
};

// One place where a unit is written down. Some units are written down in more than one.
struct UnitEntry {
  std::int32_t type;  // unit type code of the records
  std::string record;
  std::size_t size;       // of the record
  std::size_t at;         // where the unit's entry begins: two words of unit id ...
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
};

// Every unit that a full server of this model has, each followed by the units that it carries.
std::vector<UnitPlace> places_of(std::uint32_t model);

// System boards in the records of the model. A board is a pair of a CPU/memory unit and an I/O unit.
std::uint32_t boards_of(std::uint32_t model);

// "qe1" for a model code and back; empty and LMAINTE_MODEL_NONE where there is no such model.
std::string_view model_name(std::uint32_t model);
std::uint32_t model_code(std::string_view name);
inline constexpr std::array<std::string_view, 6> kModelNames{"qa", "qb1", "qb2", "qe1", "qe2", "qe3"};

std::string numbered(std::string_view pattern, std::uint32_t number);  // the record's name with its number filled in

}  // namespace box
