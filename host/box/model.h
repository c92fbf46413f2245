// The server models, a row each.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "host/box/place.h"
#include "include/lmainte.h"

namespace box {

struct Model {
  std::uint32_t code;  // LMAINTE_MODEL_...
  std::string_view name;
  std::uint32_t boards;  // system boards in the records, pairs of a CPU/memory and an I/O unit each
  std::uint32_t xsbs;    // extended system boards, four to a board where the model has any
  std::uint32_t domains;
  const lmainte_unit_code *locations;
  const lmainte_fan_count *fans;  // of each fan tray

  std::string marker() const { return "." + std::string(name); }  // its marker file in the box's tmp folder
};

// In the order in which the library looks for the markers.
std::span<const Model> models();

// A model by its code or its name; null where there is none.
const Model *find_model(std::uint32_t code);
const Model *find_model(std::string_view name);

// The model whose marker file lies in the box's tmp folder; LMAINTE_MODEL_NONE without one.
std::uint32_t model_in(const Place &place);

// From now on this is the only marker; null: there is none. Throws.
void set_model(const Place &place, const Model *model);

// "qa, qb1, ... qe2 or qe3"
std::string model_names();

// "qe1" for a model code, empty where there is no such model.
std::string_view model_name(std::uint32_t code);
std::uint32_t boards_of(std::uint32_t code);

constexpr bool is_high_end(std::uint32_t code) {
  return code >= LMAINTE_MODEL_QE1 && code <= LMAINTE_MODEL_QE3;
}

}  // namespace box
