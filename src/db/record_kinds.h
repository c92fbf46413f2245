// The records that a unit has in the configuration database, by database and unit type.
#pragma once

#include <cstdint>

#include "include/lmainte.h"
#include "src/db/record_shape.h"

namespace lmainte {

struct RecordKind {
  uint32_t db_id;
  int32_t unit_type;
  RecordShape shape;
  uint32_t first_number = 0;  // of this kind among records that share the name
};

// The identity of an I/O unit has one name on the entry and mid-range models (kSmallIou), and the name in this table on all
// others. Only the names of memory modules count with three digits.
inline constexpr RecordKind kRecordKinds[] = {
    {LMAINTE_DB_SETUP, LMAINTE_TYPE_CMU, {"setup_cmu_info_%02d", 256}},
    {LMAINTE_DB_CURRENT, LMAINTE_TYPE_OPNL, {"current_panel_info", 64}},
    {LMAINTE_DB_CURRENT, LMAINTE_TYPE_CMU, {"current_cmu_info_%02d", 1760}},
    {LMAINTE_DB_CURRENT, LMAINTE_TYPE_CPUM, {"current_cpu_module_info_%02d", 2976}},
    {LMAINTE_DB_CURRENT, LMAINTE_TYPE_DIMM, {"current_dimm_info_%02d", 1792}},
    {LMAINTE_DB_CURRENT, LMAINTE_TYPE_IOU, {"current_iou_info_%02d", 2016}},
    {LMAINTE_DB_CURRENT, LMAINTE_TYPE_EMGBU, {"current_mgb_info", 160}},
    {LMAINTE_DB_CURRENT, LMAINTE_TYPE_EMGBR, {"current_mgbr_info", 48}},
    {LMAINTE_DB_CURRENT, LMAINTE_TYPE_PSU, kPsuRecord},
    {LMAINTE_DB_CURRENT, LMAINTE_TYPE_FANTRAY, kFantrayRecord},
    {LMAINTE_DB_CURRENT, LMAINTE_TYPE_DDC, kBp32Record},
    {LMAINTE_DB_LOCAL, LMAINTE_TYPE_EMGBU, {"local_mgb_info", 280}},
    {LMAINTE_DB_LOCAL, LMAINTE_TYPE_EMGBR, {"local_mgb_info", 280}},
    {LMAINTE_DB_FRU, LMAINTE_TYPE_CMU, {"fru_cmu_info_%02d", kIdentitySize}},
    {LMAINTE_DB_FRU, LMAINTE_TYPE_CPUM, {"fru_cpu_info_%02d", kIdentitySize}},
    {LMAINTE_DB_FRU, LMAINTE_TYPE_DIMM, {"fru_dimm_info_%03d", 256}},
    {LMAINTE_DB_FRU, LMAINTE_TYPE_IOU, {"fru_iou_qe_info_%02d", kIdentitySize}},
    {LMAINTE_DB_FRU, LMAINTE_TYPE_EMGBU, {"fru_emgbu_info_%02d", kIdentitySize}},
    {LMAINTE_DB_FRU, LMAINTE_TYPE_EMGBR, {"fru_emgbu_info_%02d", kIdentitySize}, 2},
};

inline constexpr RecordKind kSmallIou = {LMAINTE_DB_FRU, LMAINTE_TYPE_IOU, {"fru_iou_qb_info_%02d", kIdentitySize}};

// Which record a caller means.
struct Coordinates {
  uint32_t db_id;
  uint32_t model;
  int32_t unit_type;
  uint32_t unit_no;
};

constexpr const RecordKind *kind_of(const Coordinates &at) {
  const bool is_small = at.model == LMAINTE_MODEL_QB1 || at.model == LMAINTE_MODEL_QB2 || at.model == LMAINTE_MODEL_QA;
  if (is_small && at.db_id == kSmallIou.db_id && at.unit_type == kSmallIou.unit_type) return &kSmallIou;
  for (const RecordKind &kind : kRecordKinds)
    if (kind.db_id == at.db_id && kind.unit_type == at.unit_type) return &kind;
  return nullptr;
}

}  // namespace lmainte
