// The families of server models, and tables with a row for each model or, where a family's models are alike, each family.
#pragma once

#include <cstddef>
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

// The row for a model: found by the column `family`, or by the column `model` in a table without families. Null for a model
// without a row.
template <class Row, size_t N>
constexpr const Row *row_of(const Row (&table)[N], uint32_t model) {
  for (const Row &row : table) {
    if constexpr (requires { row.family; }) {
      if (row.family == family_of(model)) return &row;
    } else {
      if (row.model == model) return &row;
    }
  }
  return nullptr;
}
template <class Row, size_t N>
constexpr const Row *row_of(const Row (&table)[N], int32_t model) {
  return row_of(table, static_cast<uint32_t>(model));
}

}  // namespace lmainte
