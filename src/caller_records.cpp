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

static_assert(sizeof(lmainte_unit_position) == 8 && offsetof(lmainte_unit_position, id) == 2);
static_assert(sizeof(lmainte_fru_type) == 32 && offsetof(lmainte_fru_type, id) == 8);
static_assert(sizeof(lmainte_path_component) == 64 && offsetof(lmainte_path_component, number) == 16 &&
              offsetof(lmainte_path_component, whole) == 32);

static_assert(sizeof(UnitData) == 48 && offsetof(UnitData, fru_name) == 24 && offsetof(UnitData, xsb) == 44);
static_assert(sizeof(CmuData) == 1816 && offsetof(CmuData, parts_status) == 24 && offsetof(CmuData, xsb_mode) == 44 &&
              offsetof(CmuData, cpum) == 52 && offsetof(CmuData, dimm) == 244 && offsetof(CmuData, fru_name) == 1780 &&
              offsetof(CmuData, xsb) == 1800);
static_assert(sizeof(IouData) == 384 && offsetof(IouData, parts_status) == 24 && offsetof(IouData, fru_name) == 28 &&
              offsetof(IouData, reserved) == 48 && offsetof(IouData, xsb) == 368);
static_assert(sizeof(SbData) == 2200 && offsetof(SbData, iou) == 1816);
static_assert(sizeof(XsbData) == 24 && offsetof(XsbData, setup_domain) == 16 && offsetof(XsbData, active) == 20);
static_assert(sizeof(FanData) == 8 && offsetof(FanData, flags) == 4);
static_assert(sizeof(FantrayData) == 72 && offsetof(FantrayData, fan_count) == 24 && offsetof(FantrayData, fan) == 28 &&
              offsetof(FantrayData, fru_name) == 52 && offsetof(FantrayData, flags) == 70);
static_assert(sizeof(CoolgrpData) == 8 && sizeof(lmainte_fan_count) == 2);
static_assert(sizeof(DomainData) == 12 && offsetof(DomainData, dom_byte_44) == 8);
static_assert(sizeof(SystemStatus) == 8 && offsetof(SystemStatus, system_info_8) == 4);
static_assert(sizeof(BpUnitData) == 44 && offsetof(BpUnitData, fru_name) == 24);
static_assert(sizeof(Bp32Data) == 132 && offsetof(Bp32Data, ddc) == 44);
static_assert(sizeof(EmgbUnitData) == 56 && offsetof(EmgbUnitData, status) == 24 && offsetof(EmgbUnitData, name) == 36);

static_assert(sizeof(lmainte_signal_entry) == by_width(8, 16) &&
              offsetof(lmainte_signal_entry, handler) == by_width(4, 8));
static_assert(sizeof(lmainte_mask_entry) == 8);
static_assert(sizeof(IoxBoatData) == 324 && offsetof(IoxBoatData, word) == 24);
static_assert(sizeof(IoxListData) == 780 && offsetof(IoxListData, boat) == 132);
static_assert(sizeof(DotParam) == by_width(12, 24) && offsetof(DotParam, message) == by_width(4, 8) &&
              offsetof(DotParam, seconds) == by_width(8, 16));
static_assert(sizeof(ClearRequest) == 1044 && offsetof(ClearRequest, arguments) == 20);
static_assert(sizeof(EventUnit) == 40 && offsetof(EventUnit, ident) == 12 && offsetof(EventUnit, detail) == 20 &&
              offsetof(EventUnit, detail_value) == 36);
static_assert(sizeof(lmainte_swap_fru) == by_width(28, 40) && offsetof(lmainte_swap_fru, ident) == 12 &&
              offsetof(lmainte_swap_fru, prev) == by_width(20, 24));
