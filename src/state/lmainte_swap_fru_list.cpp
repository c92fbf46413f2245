#include "include/lmainte.h"

#include <cerrno>
#include <cstdlib>

#include "src/frame/trace.h"
#include "src/inventory/unit_readers.h"
#include "src/model/model_family.h"
#include "src/model/unit_range.h"
#include "src/state/swap_kinds.h"
#include "trace_events/state.h"

// These functions share the list's head, count and model, so they are in one file.

namespace {

using lmainte::Block;
using lmainte::Call;
using lmainte::UnitReader;
using trace_events::AddSwapFruToList;
using trace_events::DeleteSwapFruFromList;
using trace_events::InitSwapFruList;
using trace_events::SwapFruCollect;
using trace_events::SwapFruInsert;

lmainte::Trace trace;
constexpr Block kInit = lmainte::block_of<InitSwapFruList>();
constexpr Block kAdd = lmainte::block_of<AddSwapFruToList>();
constexpr Block kDelete = lmainte::block_of<DeleteSwapFruFromList>();
constexpr Block kGet = lmainte::block_of<trace_events::GetSwapFruList>();
constexpr Block kCheck = lmainte::block_of<trace_events::CheckSwapFru>();
constexpr Block kFree = lmainte::block_of<trace_events::FreeSwapFruList>();
constexpr Block kCollect = lmainte::block_of<SwapFruCollect>();
constexpr Block kInsert = lmainte::block_of<SwapFruInsert>();
constexpr Block kFindOrder = lmainte::block_of<trace_events::SwapFruOrder>();

lmainte_swap_fru *lmainte_swap_fru_head = nullptr;
int32_t lmainte_swap_fru_count = 0;
uint32_t lmainte_swap_fru_model = LMAINTE_MODEL_NONE;

constexpr int32_t kFailed = -1;
constexpr uint32_t kMarked = LMAINTE_STATUS_MARKED;

uint32_t order_of(uint32_t type) {
  const Call call(trace, kFindOrder);
  return lmainte::swap_order_of(type);
}

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

// Sorts by class, and by number within one type. Units of different types in one class stay in the order of insertion.
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
    call.system_call_failed(SwapFruInsert::kNoMemory);
    return kFailed;
  }
  *node = {order, type, number, {ident[0], ident[1]}, previous, next};
  (previous != nullptr ? previous->next : lmainte_swap_fru_head) = node;
  if (next != nullptr) next->prev = node;
  return ++lmainte_swap_fru_count;
}

bool insert_marked(const Call &call, const UnitReader &reader, const void *records, int32_t count) {
  for (int32_t i = 0; i < count; ++i) {
    const lmainte::UnitHead unit = reader.head(records, static_cast<size_t>(i));
    if ((unit.status & kMarked) == 0) continue;
    const int32_t result = lmainte_swap_fru_insert(static_cast<uint32_t>(reader.type), unit.number, unit.unit_id);
    if (result == kFailed) {
      call.error(SwapFruCollect::kNotInserted, reader.type, result);
      return false;
    }
  }
  return true;
}

// Reads units of a type and lists those that are marked. Returns the list's count.
int32_t lmainte_swap_fru_collect(uint32_t type, int32_t number, int32_t count) {
  const Call call(trace, kCollect);
  const UnitReader *reader = lmainte::reader_of(static_cast<int32_t>(type));
  if (reader == nullptr) {
    call.error(SwapFruCollect::kNoReader, type);
    return kFailed;
  }
  void *records = calloc(static_cast<uint32_t>(count), reader->record_size);
  if (records == nullptr) {
    call.system_call_failed(SwapFruCollect::kNoMemory);
    return kFailed;
  }
  const int32_t first = count > 1 ? lmainte::kAllUnits : number;
  const int32_t result = reader->read(first, count, static_cast<int32_t>(lmainte_swap_fru_model), records);
  if (result != LMAINTE_OK) call.error(SwapFruCollect::kNotRead, type, result);
  const bool good = result == LMAINTE_OK && insert_marked(call, *reader, records, count);
  free(records);
  return good ? lmainte_swap_fru_count : kFailed;
}

int32_t collect_kinds(const Call &call, const lmainte_model_data &model_data) {
  const lmainte::SwapModel *model = lmainte::row_of(lmainte::kSwapModels, model_data.model);
  if (model == nullptr) {
    call.error(InitSwapFruList::kNoModel, model_data.model);
    return kFailed;
  }
  for (const lmainte::SwapKind &kind : lmainte::kSwapKinds) {
    if ((model->kinds & kind.bit) == 0) continue;
    const auto count = static_cast<int32_t>(model_data.unit[kind.slot].max_count);
    const int32_t result = lmainte_swap_fru_collect(kind.type, lmainte::kAllUnits, count);
    if (result == kFailed) {
      call.error(InitSwapFruList::kNotCollected, kind.type, result);
      return kFailed;
    }
  }
  return lmainte_swap_fru_count;
}

}  // namespace

int32_t lmainte_init_swap_fru_list(const lmainte_model_data *model_data) {
  const Call call(trace, kInit);
  if (model_data == nullptr) {
    call.error(InitSwapFruList::kNoModelData);
    return kFailed;
  }
  if (lmainte_swap_fru_head != nullptr) {
    call.error(InitSwapFruList::kListDropped, lmainte_swap_fru_count);
    free_nodes();
  }
  lmainte_swap_fru_count = 0;
  lmainte_swap_fru_model = model_data->model;
  SystemStatus status = {};
  const int32_t result = lmainte_get_system_status(&status);
  if (result != LMAINTE_OK) {
    call.error(InitSwapFruList::kNoSystemStatus, result);
    return kFailed;
  }
  if ((status.system_status & kMarked) == 0) return lmainte_swap_fru_count;
  return collect_kinds(call, *model_data);
}

int32_t lmainte_add_swap_fru_to_list(uint32_t unit_type, uint32_t unit_no) {
  const Call call(trace, kAdd);
  call.point(AddSwapFruToList::kUnit, unit_type, unit_no);
  const int32_t result = lmainte_swap_fru_collect(unit_type, static_cast<int32_t>(unit_no), 1);
  if (result == kFailed) call.error(AddSwapFruToList::kNotAdded, unit_type, unit_no);
  return result;
}

int32_t lmainte_delete_swap_fru_from_list(uint32_t unit_type, uint32_t unit_no) {
  const Call call(trace, kDelete);
  lmainte_swap_fru *node = find_node(unit_type, unit_no);
  if (node == nullptr) {
    call.error(DeleteSwapFruFromList::kNotListed, unit_type, unit_no);
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

// The count stays as it is until the list is initialised again.
int32_t lmainte_free_swap_fru_list(void) {
  const Call call(trace, kFree);
  free_nodes();
  return LMAINTE_OK;
}
