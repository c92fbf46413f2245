#include "include/lmainte.h"

#include <cerrno>
#include <cstdlib>

#include "src/frame/trace.h"

// The swap list's functions share its head, its count and its model, and so one file.

namespace {

using lmainte::Block;
using lmainte::Call;

lmainte::Trace trace;
constexpr Block kInit = lmainte::plain_block(0x060);
constexpr Block kAdd = lmainte::plain_block(0x061);
constexpr Block kDelete = lmainte::plain_block(0x062);
constexpr Block kGet = lmainte::plain_block(0x063);
constexpr Block kCheck = lmainte::plain_block(0x064);
constexpr Block kFree = lmainte::plain_block(0x065);
constexpr Block kCollect = lmainte::plain_block(0x066);
constexpr Block kInsert = lmainte::plain_block(0x067);
constexpr Block kFindOrder = lmainte::plain_block(0x068);

lmainte_swap_fru *lmainte_swap_fru_head = nullptr;
int32_t lmainte_swap_fru_count = 0;
uint32_t lmainte_swap_fru_model = LMAINTE_MODEL_NONE;

constexpr int32_t kFailed = -1;
constexpr uint32_t kMarked = 0x8000;
constexpr int32_t kAllUnits = -1;

// What the list takes from a unit's record.
struct Found {
  uint32_t number;
  uint32_t status;
  const uint32_t *ident;
};

template <class Unit>
Found found(const Unit &unit) {
  return {static_cast<uint32_t>(unit.number), static_cast<uint32_t>(unit.status), unit.unit_id};
}

Found cmu_at(const void *records, int32_t i) {
  return found(static_cast<const SbData *>(records)[i].cmu);
}
Found iou_at(const void *records, int32_t i) {
  return found(static_cast<const SbData *>(records)[i].iou);
}
template <class Unit>
Found unit_at(const void *records, int32_t i) {
  return found(static_cast<const Unit *>(records)[i]);
}

template <class Unit, int32_t (*Get)(int32_t, int32_t, int32_t, Unit *)>
int32_t get(int32_t number, int32_t count, int32_t model, void *records) {
  return Get(number, count, model, static_cast<Unit *>(records));
}

// What the list does with one type of unit: where it sorts, and how units of the type are read and looked at.
struct TypeRow {
  uint32_t type;
  uint32_t order;
  size_t record_size;
  int32_t (*get)(int32_t number, int32_t count, int32_t model, void *records);
  Found (*at)(const void *records, int32_t i);
};

constexpr auto kGetBoards = get<SbData, lmainte_get_sb_data>;
constexpr auto kGetPsus = get<PsuData, lmainte_get_psu_data>;
constexpr auto kGetTrays = get<FantrayData, lmainte_get_fantray_data>;
constexpr auto kGetDdcs = get<BpUnitData, lmainte_get_ddca_data>;

// Service processor units have a place in the order and no reader here.
constexpr TypeRow kTypes[] = {
    {LMAINTE_TYPE_CMU, 1, sizeof(SbData), kGetBoards, cmu_at},
    {LMAINTE_TYPE_IOU, 2, sizeof(SbData), kGetBoards, iou_at},
    {LMAINTE_TYPE_FANTRAY_2, 3, sizeof(FantrayData), kGetTrays, unit_at<FantrayData>},
    {LMAINTE_TYPE_FANTRAY_3, 3, sizeof(FantrayData), kGetTrays, unit_at<FantrayData>},
    {LMAINTE_TYPE_FANTRAY, 3, sizeof(FantrayData), kGetTrays, unit_at<FantrayData>},
    {LMAINTE_TYPE_PSU, 4, sizeof(PsuData), kGetPsus, unit_at<PsuData>},
    {LMAINTE_TYPE_PSU_2, 4, sizeof(PsuData), kGetPsus, unit_at<PsuData>},
    {LMAINTE_TYPE_EMGBU, 5, 0, nullptr, nullptr},
    {LMAINTE_TYPE_EMGBR, 5, 0, nullptr, nullptr},
    {LMAINTE_TYPE_DDC, 6, sizeof(BpUnitData), kGetDdcs, unit_at<BpUnitData>},
};
constexpr uint32_t kOrderOfOthers = 15;

const TypeRow *row_of(uint32_t type) {
  for (const TypeRow &row : kTypes)
    if (row.type == type) return &row;
  return nullptr;
}

uint32_t order_of(uint32_t type) {
  const Call call(trace, kFindOrder);
  const TypeRow *row = row_of(type);
  return row != nullptr ? row->order : kOrderOfOthers;
}

// The kinds of unit that are collected on a model, a bit each. Bits 0x10 and 0x40 collect nothing.
struct ModelKinds {
  uint32_t model;
  uint32_t kinds;
};

constexpr ModelKinds kModelKinds[] = {
    {LMAINTE_MODEL_QA, 0x0C},  {LMAINTE_MODEL_QB1, 0x0C}, {LMAINTE_MODEL_QB2, 0x0C},
    {LMAINTE_MODEL_QE1, 0x3F}, {LMAINTE_MODEL_QE2, 0x1F}, {LMAINTE_MODEL_QE3, 0x5F},
};

struct Kind {
  uint32_t bit;
  uint32_t type;
  size_t slot;
};

constexpr Kind kKinds[] = {
    {0x01, LMAINTE_TYPE_CMU, LMAINTE_SLOT_CMU},     {0x02, LMAINTE_TYPE_IOU, LMAINTE_SLOT_IOU},
    {0x04, LMAINTE_TYPE_FANTRAY, LMAINTE_SLOT_FAN}, {0x08, LMAINTE_TYPE_PSU, LMAINTE_SLOT_PSU},
    {0x20, LMAINTE_TYPE_DDC, LMAINTE_SLOT_BP32},
};

lmainte_swap_fru *find_node(uint32_t type, uint32_t number) {
  lmainte_swap_fru *node = lmainte_swap_fru_head;
  while (node != nullptr && (node->unit_type != type || node->unit_no != number)) node = node->next;
  return node;
}

void free_nodes() {
  while (lmainte_swap_fru_head != nullptr) {
    lmainte_swap_fru *next = lmainte_swap_fru_head->next;
    free(lmainte_swap_fru_head);
    lmainte_swap_fru_head = next;
  }
}

bool comes_before(uint32_t order, uint32_t type, uint32_t number, const lmainte_swap_fru &node) {
  return node.order > order || (node.order == order && node.unit_type == type && node.unit_no > number);
}

// Keeps the order of the classes, and within one type that of the numbers; types that share a class stay as they came.
int32_t lmainte_swap_fru_insert(uint32_t type, uint32_t number, const uint32_t *ident) {
  const Call call(trace, kInsert);
  const uint32_t order = order_of(type);
  lmainte_swap_fru *previous = nullptr;
  lmainte_swap_fru *next = lmainte_swap_fru_head;
  for (; next != nullptr && !comes_before(order, type, number, *next); next = next->next) {
    if (next->unit_type == type && next->unit_no == number) return lmainte_swap_fru_count;
    previous = next;
  }
  auto *node = static_cast<lmainte_swap_fru *>(calloc(1, sizeof(lmainte_swap_fru)));
  if (node == nullptr) {
    call.system_error(1, errno);
    return kFailed;
  }
  *node = {order, type, number, {ident[0], ident[1]}, previous, next};
  (previous != nullptr ? previous->next : lmainte_swap_fru_head) = node;
  if (next != nullptr) next->prev = node;
  return ++lmainte_swap_fru_count;
}

bool insert_marked(const Call &call, const TypeRow &row, const void *records, int32_t count) {
  for (int32_t i = 0; i < count; ++i) {
    const Found unit = row.at(records, i);
    if ((unit.status & kMarked) == 0) continue;
    const int32_t result = lmainte_swap_fru_insert(row.type, unit.number, unit.ident);
    if (result == kFailed) {
      call.error(4, row.type, result);
      return false;
    }
  }
  return true;
}

// Reads units of a type and lists those that are marked. Returns the list's count.
int32_t lmainte_swap_fru_collect(uint32_t type, int32_t number, int32_t count) {
  const Call call(trace, kCollect);
  const TypeRow *row = row_of(type);
  if (row == nullptr || row->get == nullptr) {
    call.error(1, type);
    return kFailed;
  }
  void *records = calloc(static_cast<uint32_t>(count), row->record_size);
  if (records == nullptr) {
    call.system_error(2, errno);
    return kFailed;
  }
  const int32_t first = count > 1 ? kAllUnits : number;
  const int32_t result = row->get(first, count, static_cast<int32_t>(lmainte_swap_fru_model), records);
  if (result != LMAINTE_OK) call.error(3, type, result);
  const bool good = result == LMAINTE_OK && insert_marked(call, *row, records, count);
  free(records);
  return good ? lmainte_swap_fru_count : kFailed;
}

const ModelKinds *kinds_of(uint32_t model) {
  for (const ModelKinds &row : kModelKinds)
    if (row.model == model) return &row;
  return nullptr;
}

int32_t collect_kinds(const Call &call, const lmainte_model_data &model_data) {
  const ModelKinds *model = kinds_of(model_data.model);
  if (model == nullptr) {
    call.error(4, model_data.model);
    return kFailed;
  }
  for (const Kind &kind : kKinds) {
    if ((model->kinds & kind.bit) == 0) continue;
    const auto count = static_cast<int32_t>(model_data.unit[kind.slot].max_count);
    const int32_t result = lmainte_swap_fru_collect(kind.type, kAllUnits, count);
    if (result == kFailed) {
      call.error(5, kind.type, result);
      return kFailed;
    }
  }
  return lmainte_swap_fru_count;
}

}  // namespace

int32_t lmainte_init_swap_fru_list(const lmainte_model_data *model_data) {
  const Call call(trace, kInit);
  if (model_data == nullptr) {
    call.error(1);
    return kFailed;
  }
  if (lmainte_swap_fru_head != nullptr) {
    call.error(2, lmainte_swap_fru_count);
    free_nodes();
  }
  lmainte_swap_fru_count = 0;
  lmainte_swap_fru_model = model_data->model;
  SystemStatus status = {};
  const int32_t result = lmainte_get_system_status(&status);
  if (result != LMAINTE_OK) {
    call.error(3, result);
    return kFailed;
  }
  if ((status.system_status & kMarked) == 0) return lmainte_swap_fru_count;
  return collect_kinds(call, *model_data);
}

int32_t lmainte_add_swap_fru_to_list(uint32_t unit_type, uint32_t unit_no) {
  const Call call(trace, kAdd);
  call.point(2, unit_type, unit_no);
  const int32_t result = lmainte_swap_fru_collect(unit_type, static_cast<int32_t>(unit_no), 1);
  if (result == kFailed) call.error(1, unit_type, unit_no);
  return result;
}

int32_t lmainte_delete_swap_fru_from_list(uint32_t unit_type, uint32_t unit_no) {
  const Call call(trace, kDelete);
  lmainte_swap_fru *node = find_node(unit_type, unit_no);
  if (node == nullptr) {
    call.error(1, unit_type, unit_no);
    return lmainte_swap_fru_count;
  }
  (node->prev != nullptr ? node->prev->next : lmainte_swap_fru_head) = node->next;
  if (node->next != nullptr) node->next->prev = node->prev;
  free(node);
  return --lmainte_swap_fru_count;
}

int32_t lmainte_get_swap_fru_list(lmainte_swap_fru **head_out) {
  const Call call(trace, kGet);
  if (head_out != nullptr) *head_out = lmainte_swap_fru_head;
  return LMAINTE_OK;
}

int32_t lmainte_check_swap_fru(uint32_t unit_type, uint32_t unit_no) {
  const Call call(trace, kCheck);
  return find_node(unit_type, unit_no) != nullptr ? 1 : 0;
}

// The count stays: the next initialisation sets it anew.
int32_t lmainte_free_swap_fru_list(void) {
  const Call call(trace, kFree);
  free_nodes();
  return LMAINTE_OK;
}
