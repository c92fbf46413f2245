// What the list of marked units knows about units: where each type sorts, and the kinds that a model has.
#pragma once

#include <cstddef>
#include <cstdint>

#include "include/lmainte.h"

namespace lmainte {

// The class of each type in the order of the list; those of other types come last.
struct SwapOrder {
  uint32_t type;
  uint32_t order;
};

inline constexpr SwapOrder kSwapOrders[] = {
    {LMAINTE_TYPE_CMU, 1},     {LMAINTE_TYPE_IOU, 2}, {LMAINTE_TYPE_FANTRAY_2, 3}, {LMAINTE_TYPE_FANTRAY_3, 3},
    {LMAINTE_TYPE_FANTRAY, 3}, {LMAINTE_TYPE_PSU, 4}, {LMAINTE_TYPE_PSU_2, 4},     {LMAINTE_TYPE_EMGBU, 5},
    {LMAINTE_TYPE_EMGBR, 5},   {LMAINTE_TYPE_DDC, 6},
};
inline constexpr uint32_t kOrderOfOtherTypes = 15;

constexpr uint32_t swap_order_of(uint32_t type) {
  for (const SwapOrder &row : kSwapOrders)
    if (row.type == type) return row.order;
  return kOrderOfOtherTypes;
}

// The kinds of unit that are collected on a model, a bit each. Bits 0x10 and 0x40 collect nothing.
struct SwapModel {
  uint32_t model;
  uint32_t kinds;
};

inline constexpr SwapModel kSwapModels[] = {
    {LMAINTE_MODEL_QA, 0x0C},  {LMAINTE_MODEL_QB1, 0x0C}, {LMAINTE_MODEL_QB2, 0x0C},
    {LMAINTE_MODEL_QE1, 0x3F}, {LMAINTE_MODEL_QE2, 0x1F}, {LMAINTE_MODEL_QE3, 0x5F},
};

// A kind of unit, and the slot of the model's data that counts it.
struct SwapKind {
  uint32_t bit;
  uint32_t type;
  size_t slot;
};

inline constexpr SwapKind kSwapKinds[] = {
    {0x01, LMAINTE_TYPE_CMU, LMAINTE_SLOT_CMU},     {0x02, LMAINTE_TYPE_IOU, LMAINTE_SLOT_IOU},
    {0x04, LMAINTE_TYPE_FANTRAY, LMAINTE_SLOT_FAN}, {0x08, LMAINTE_TYPE_PSU, LMAINTE_SLOT_PSU},
    {0x20, LMAINTE_TYPE_DDC, LMAINTE_SLOT_BP32},
};

}  // namespace lmainte
