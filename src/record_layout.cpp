// The records of the public header lie in memory as the commands and the service processor's other programs know them.

#include "include/lmainte.h"

#include <cstddef>

namespace {

// A size on the 32-bit target, and where pointers make it larger, on a 64-bit workstation.
constexpr size_t by_width(size_t on_32_bit, size_t on_64_bit) {
  return sizeof(void *) == 4 ? on_32_bit : on_64_bit;
}

}  // namespace

static_assert(sizeof(lmainte_unit_slot) == 12 && offsetof(lmainte_unit_slot, max_count) == 0 &&
              offsetof(lmainte_unit_slot, control_time_1) == 4 && offsetof(lmainte_unit_slot, control_time_2) == 8);
static_assert(sizeof(lmainte_model_data) == 164 && offsetof(lmainte_model_data, model) == 0 &&
              offsetof(lmainte_model_data, system_flags) == 4 && offsetof(lmainte_model_data, unit) == 8);
static_assert(sizeof(lmainte_cmdtime) == 8 && offsetof(lmainte_cmdtime, cmd_id) == 0 &&
              offsetof(lmainte_cmdtime, time) == 4);

static_assert(sizeof(lmainte_unit_name) == 34 && offsetof(lmainte_unit_name, name) == 0 &&
              offsetof(lmainte_unit_name, id_fru) == 32 && offsetof(lmainte_unit_name, id_pos) == 33);
static_assert(sizeof(lmainte_unit_code) == by_width(140, 144) && offsetof(lmainte_unit_code, pattern) == 0 &&
              offsetof(lmainte_unit_code, type_fru) == 128 && offsetof(lmainte_unit_code, type_pos) == 129 &&
              offsetof(lmainte_unit_code, max) == 130 && offsetof(lmainte_unit_code, names) == 136);

static_assert(sizeof(lmainte_access_entry) == by_width(16, 24) && offsetof(lmainte_access_entry, index) == 0 &&
              offsetof(lmainte_access_entry, size) == 4 && offsetof(lmainte_access_entry, name) == 8 &&
              offsetof(lmainte_access_entry, data) == by_width(12, 16));

static_assert(sizeof(PsuData) == 44 && offsetof(PsuData, type) == 0 && offsetof(PsuData, number) == 4 &&
              offsetof(PsuData, unit_id) == 8 && offsetof(PsuData, status) == 16 &&
              offsetof(PsuData, mainte_status) == 20 && offsetof(PsuData, fru_name) == 24 &&
              offsetof(PsuData, info_byte) == 42 && offsetof(PsuData, flags) == 43);

static_assert(sizeof(UnitRecord) == 148 && offsetof(UnitRecord, type) == 0 && offsetof(UnitRecord, number) == 4 &&
              offsetof(UnitRecord, reserved) == 8 && offsetof(UnitRecord, ident) == 12 &&
              offsetof(UnitRecord, name) == 20);

static_assert(sizeof(ListLine) == by_width(52, 104) && offsetof(ListLine, position) == 0 &&
              offsetof(ListLine, format) == by_width(4, 8) && offsetof(ListLine, reserved) == by_width(8, 16) &&
              offsetof(ListLine, args) == by_width(12, 24));
