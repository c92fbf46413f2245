// What the list of marked units knows about units: how each type is read, where it sorts, and the kinds that a model has.
#pragma once

#include <cstddef>
#include <cstdint>

#include "include/lmainte.h"

namespace lmainte {

// What the list takes from a unit's record.
struct SwapUnit {
  uint32_t number;
  uint32_t status;
  const uint32_t *ident;
};

template <class Unit>
SwapUnit swap_unit(const Unit &unit) {
  return {static_cast<uint32_t>(unit.number), static_cast<uint32_t>(unit.status), unit.unit_id};
}

template <class Record>
SwapUnit swap_unit_at(const void *records, int32_t i) {
  return swap_unit(static_cast<const Record *>(records)[i]);
}
inline SwapUnit swap_cmu_at(const void *records, int32_t i) {
  return swap_unit(static_cast<const SbData *>(records)[i].cmu);
}
inline SwapUnit swap_iou_at(const void *records, int32_t i) {
  return swap_unit(static_cast<const SbData *>(records)[i].iou);
}

template <class Record, int32_t (*Get)(int32_t, int32_t, int32_t, Record *)>
int32_t read_swap_units(int32_t number, int32_t count, int32_t model, void *records) {
  return Get(number, count, model, static_cast<Record *>(records));
}

// A type of unit: its class in the list's order, and how its records are read and looked at.
struct SwapType {
  uint32_t type;
  uint32_t order;
  size_t record_size;
  int32_t (*read)(int32_t number, int32_t count, int32_t model, void *records);
  SwapUnit (*at)(const void *records, int32_t i);
};

template <class Record, int32_t (*Get)(int32_t, int32_t, int32_t, Record *)>
constexpr SwapType swap_type(uint32_t type, uint32_t order,
                             SwapUnit (*at)(const void *, int32_t) = swap_unit_at<Record>) {
  return {type, order, sizeof(Record), read_swap_units<Record, Get>, at};
}

// Service processor units have a place in the order and no reader here.
inline constexpr SwapType kSwapTypes[] = {
    swap_type<SbData, lmainte_get_sb_data>(LMAINTE_TYPE_CMU, 1, swap_cmu_at),
    swap_type<SbData, lmainte_get_sb_data>(LMAINTE_TYPE_IOU, 2, swap_iou_at),
    swap_type<FantrayData, lmainte_get_fantray_data>(LMAINTE_TYPE_FANTRAY_2, 3),
    swap_type<FantrayData, lmainte_get_fantray_data>(LMAINTE_TYPE_FANTRAY_3, 3),
    swap_type<FantrayData, lmainte_get_fantray_data>(LMAINTE_TYPE_FANTRAY, 3),
    swap_type<PsuData, lmainte_get_psu_data>(LMAINTE_TYPE_PSU, 4),
    swap_type<PsuData, lmainte_get_psu_data>(LMAINTE_TYPE_PSU_2, 4),
    {LMAINTE_TYPE_EMGBU, 5, 0, nullptr, nullptr},
    {LMAINTE_TYPE_EMGBR, 5, 0, nullptr, nullptr},
    swap_type<BpUnitData, lmainte_get_ddca_data>(LMAINTE_TYPE_DDC, 6),
};
inline constexpr uint32_t kOrderOfOtherTypes = 15;

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

constexpr const SwapType *swap_type_of(uint32_t type) {
  for (const SwapType &row : kSwapTypes)
    if (row.type == type) return &row;
  return nullptr;
}

}  // namespace lmainte
