#include "include/lmainte.h"

#include <span>

#include "src/frame/trace.h"
#include "src/model/model_family.h"
#include "trace_events/inventory.h"

namespace {

using trace_events::GetCoolgrpData;

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::block_of<GetCoolgrpData>();

// Units of a type that are cooled together.
struct CoolingGroup {
  int32_t type;
  int32_t number;
  uint32_t mask[2];
};

constexpr CoolingGroup kGroupsQa[] = {
    {LMAINTE_TYPE_PSU, 0, {0, 3}},
    {LMAINTE_TYPE_PSU, 1, {0, 3}},
    {LMAINTE_TYPE_FANTRAY, 0, {0, 3}},
    {LMAINTE_TYPE_FANTRAY, 1, {0, 3}},
};
constexpr CoolingGroup kGroupsQb1[] = {
    {LMAINTE_TYPE_PSU, 0, {0, 3}},     {LMAINTE_TYPE_PSU, 1, {0, 3}},      {LMAINTE_TYPE_FANTRAY, 0, {0, 3}},
    {LMAINTE_TYPE_FANTRAY, 1, {0, 3}}, {LMAINTE_TYPE_FANTRAY, 2, {0, 12}}, {LMAINTE_TYPE_FANTRAY, 3, {0, 12}},
};
constexpr CoolingGroup kGroupsQb2[] = {
    {LMAINTE_TYPE_PSU, 0, {0, 3}},      {LMAINTE_TYPE_PSU, 1, {0, 3}},      {LMAINTE_TYPE_PSU, 2, {0, 12}},
    {LMAINTE_TYPE_PSU, 3, {0, 12}},     {LMAINTE_TYPE_FANTRAY, 0, {0, 3}},  {LMAINTE_TYPE_FANTRAY, 1, {0, 3}},
    {LMAINTE_TYPE_FANTRAY, 2, {0, 12}}, {LMAINTE_TYPE_FANTRAY, 3, {0, 12}},
};

struct ModelRow {
  uint32_t model;
  std::span<const CoolingGroup> groups;
};

constexpr ModelRow kModels[] = {
    {LMAINTE_MODEL_QA, kGroupsQa},
    {LMAINTE_MODEL_QB1, kGroupsQb1},
    {LMAINTE_MODEL_QB2, kGroupsQb2},
};

}  // namespace

int32_t lmainte_get_coolgrp_data(int32_t unit_type, int32_t unit_no, int32_t model, CoolgrpData *out) {
  const lmainte::Call call(trace, kBlock);
  if (out == nullptr) {
    call.error(GetCoolgrpData::kNoResult);
    return LMAINTE_FAILED;
  }
  const ModelRow *row = lmainte::row_of(kModels, model);
  if (row == nullptr) {
    call.error(GetCoolgrpData::kNoModel, model);
    return LMAINTE_FAILED;
  }
  for (const CoolingGroup &group : row->groups) {
    if (group.type != unit_type || group.number != unit_no) continue;
    out->coolgrp_mask[0] = group.mask[0];
    out->coolgrp_mask[1] = group.mask[1];
    return LMAINTE_OK;
  }
  call.error(GetCoolgrpData::kNoGroup, unit_no);
  return LMAINTE_FAILED;
}
