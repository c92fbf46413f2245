// Location names and unit ids: two spellings of one position.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "host/box/location.h"

namespace box {

// "/CMU#0/MEM#03A" for a unit id of the model, and back. Nothing for an id or a name that the model does not have.
std::optional<std::string> unit_name(std::uint32_t model, const UnitId &id);
std::optional<UnitId> unit_id(std::uint32_t model, std::string_view name);

// The location that a person means by a name: the first slash may be left out.
std::string location_of(std::string_view name);

// Throws std::invalid_argument where a server of this model lacks one of these units.
void check_units(std::string_view model, std::span<const std::string> names);

}  // namespace box
