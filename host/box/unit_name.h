// Location names and unit ids: two spellings of one position, mapped by the library's own location tables.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace box {

using UnitId = std::array<std::uint32_t, 2>;

// The model whose marker file lies in the box's tmp folder: LMAINTE_MODEL_..., LMAINTE_MODEL_NONE without one.
std::uint32_t model_in(const class Place &place);

// "/CMU#0/MEM#03A" for a unit id of the model, and back. Nothing for an id or a name that the model does not have.
std::optional<std::string> unit_name(std::uint32_t model, const UnitId &id);
std::optional<UnitId> unit_id(std::uint32_t model, std::string_view name);

}  // namespace box
