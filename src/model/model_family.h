// The families of server models: what is alike on the models of one family.
#pragma once

#include <cstdint>

#include "include/lmainte.h"

namespace lmainte {

enum class Family : uint8_t { kNone, kQa, kQb, kQe };

constexpr Family family_of(uint32_t model) {
  switch (model) {
    case LMAINTE_MODEL_QB1:
    case LMAINTE_MODEL_QB2:
      return Family::kQb;
    case LMAINTE_MODEL_QE1:
    case LMAINTE_MODEL_QE2:
    case LMAINTE_MODEL_QE3:
      return Family::kQe;
    case LMAINTE_MODEL_QA:
      return Family::kQa;
    default:
      return Family::kNone;
  }
}

constexpr bool is_model(int32_t model) {
  return family_of(static_cast<uint32_t>(model)) != Family::kNone;
}
constexpr bool is_high_end(int32_t model) {
  return family_of(static_cast<uint32_t>(model)) == Family::kQe;
}

}  // namespace lmainte
