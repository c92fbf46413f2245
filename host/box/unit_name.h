// Location names and unit ids: two spellings of one position.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "host/box/location.h"

namespace box {

// "/CMU#0/MEM#03A" for a unit id of the model, and back. Nothing for an id or a name that the model does not have.
std::optional<std::string> unit_name(std::uint32_t model, const UnitId &id);
std::optional<UnitId> unit_id(std::uint32_t model, std::string_view name);

}  // namespace box
