// The list of marked units at three lengths, beside a bare walk through it and the calls of the platform. The list is one of the
// process, so each row makes it anew when it has another length.

#include <cstdlib>
#include <string>

#include "bench/memory_platform.h"
#include "bench/rows.h"
#include "bench/server.h"
#include "include/lmainte.h"

namespace {

constexpr std::uint32_t kBehindAll = 5;  // the number of a power supply, which sorts behind the boards

void require(bool good) {
  if (!good) std::abort();
}

// A list with CPU/memory unit 0 alone. The model says which kinds are collected, and of each it has one at least.
void begin_list() {
  lmainte_model_data model = {};
  model.model = LMAINTE_MODEL_QE3;
  for (lmainte_unit_slot &slot : model.unit) slot.max_count = 1;
  lmainte_free_swap_fru_list();
  require(lmainte_init_swap_fru_list(&model) == 4);
  for (const std::uint32_t type : {LMAINTE_TYPE_IOU, LMAINTE_TYPE_FANTRAY, LMAINTE_TYPE_PSU})
    lmainte_delete_swap_fru_from_list(type, 0);
}

lmainte_swap_fru *head = nullptr;

// No server has a thousand boards, but they are the units that the records do not limit. A position has one byte for a board, and
// 255 says that there is none: these numbers are left out.
std::uint32_t board_at(std::uint32_t place) {
  return place + place / 255;
}

void list_boards(std::uint32_t count) {
  static std::uint32_t listed = 0;
  if (listed == count) return;
  bench::put_server(static_cast<int>(board_at(count)));
  begin_list();
  for (std::uint32_t place = 1; place < count; ++place)
    require(lmainte_add_swap_fru_to_list(LMAINTE_TYPE_CMU, board_at(place)) == static_cast<std::int32_t>(place) + 1);
  bench::put_server(bench::kBoards);
  lmainte_get_swap_fru_list(&head);
  listed = count;
}

void walk_to(std::uint32_t type, std::uint32_t number) {
  const lmainte_swap_fru *node = head;
  while (node != nullptr && (node->unit_type != type || node->unit_no != number)) node = node->next;
  asm volatile("" : : "r"(node));  // the walk is not to be left out
}

void find_board(std::uint32_t board) {
  require(lmainte_check_swap_fru(LMAINTE_TYPE_CMU, board) == 1);
}

void mark_and_unmark() {
  require(lmainte_add_swap_fru_to_list(LMAINTE_TYPE_PSU, kBehindAll) != -1);
  lmainte_delete_swap_fru_from_list(LMAINTE_TYPE_PSU, kBehindAll);
}

}  // namespace

// Whatever the length, the calls ask the platform for the same.
std::vector<bench::Row> bench::swap_list_rows() {
  list_boards(10);
  const Requests of_find = watch([] { find_board(0); });
  const Requests of_mark = watch(mark_and_unmark);
  std::vector<Row> rows;
  for (const std::uint32_t count : {10U, 100U, 1000U}) {
    const std::string length = std::to_string(count);
    const auto prepare = [count] { list_boards(count); };
    const std::uint32_t last = board_at(count - 1);
    const auto find = [last, of_find] {
      walk_to(LMAINTE_TYPE_CMU, last);
      replay(of_find);
    };
    const auto mark = [of_mark] {
      for (int way = 0; way < 2; ++way) walk_to(LMAINTE_TYPE_PSU, kBehindAll);
      replay(of_mark);
    };
    rows.push_back({"find the last of " + length + " units in the list", find, [last] { find_board(last); }, prepare});
    rows.push_back({"mark a unit beside " + length + ", and unmark it", mark, mark_and_unmark, prepare});
  }
  return rows;
}
