// The reader of each type of unit, and where in its records the unit's head is.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "include/lmainte.h"

namespace lmainte {

// The words with which a unit begins, whatever record it is in.
struct UnitHead {
  int32_t type;
  uint32_t number;
  uint32_t unit_id[2];
  uint32_t status;
};

struct UnitReader {
  int32_t type;
  int32_t (*read)(int32_t number, int32_t count, int32_t model, void *records);
  size_t record_size;
  size_t head_offset;

  // The head of the unit in the record of an index.
  UnitHead head(const void *records, size_t index) const {
    UnitHead head;
    memcpy(&head, static_cast<const char *>(records) + index * record_size + head_offset, sizeof head);
    return head;
  }
};

template <class Unit, int32_t (*Read)(int32_t, int32_t, int32_t, Unit *)>
constexpr UnitReader reader(int32_t type, size_t head_offset = 0) {
  constexpr auto read = [](int32_t number, int32_t count, int32_t model, void *records) {
    return Read(number, count, model, static_cast<Unit *>(records));
  };
  return {type, read, sizeof(Unit), head_offset};
}

// Both kinds of power supply, and all three of fan trays, are read alike.
inline constexpr UnitReader kUnitReaders[] = {
    reader<SbData, lmainte_get_sb_data>(LMAINTE_TYPE_CMU, offsetof(SbData, cmu)),
    reader<SbData, lmainte_get_sb_data>(LMAINTE_TYPE_IOU, offsetof(SbData, iou)),
    reader<PsuData, lmainte_get_psu_data>(LMAINTE_TYPE_PSU),
    reader<PsuData, lmainte_get_psu_data>(LMAINTE_TYPE_PSU_2),
    reader<FantrayData, lmainte_get_fantray_data>(LMAINTE_TYPE_FANTRAY_2),
    reader<FantrayData, lmainte_get_fantray_data>(LMAINTE_TYPE_FANTRAY_3),
    reader<FantrayData, lmainte_get_fantray_data>(LMAINTE_TYPE_FANTRAY),
    reader<BpUnitData, lmainte_get_ddca_data>(LMAINTE_TYPE_DDC),
};

// The reader of a type. Null for the service processor units, whose records begin in another way, and for other types.
constexpr const UnitReader *reader_of(int32_t type) {
  for (const UnitReader &row : kUnitReaders)
    if (row.type == type) return &row;
  return nullptr;
}

template <class Unit>
inline constexpr bool kHasHead = offsetof(Unit, type) == offsetof(UnitHead, type) &&
                                 offsetof(Unit, number) == offsetof(UnitHead, number) &&
                                 offsetof(Unit, unit_id) == offsetof(UnitHead, unit_id) &&
                                 offsetof(Unit, status) == offsetof(UnitHead, status);
static_assert(kHasHead<CmuData> && kHasHead<IouData> && kHasHead<PsuData> && kHasHead<FantrayData> &&
              kHasHead<BpUnitData>);

}  // namespace lmainte
