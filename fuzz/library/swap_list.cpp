// The list of marked units, in any order of calls. It is one chain in both directions, sorted, and has no unit twice.
#include <array>
#include <set>
#include <utility>

#include "fuzz/library/machine.h"
#include "include/lmainte.h"
#include "tests/unit/doubles/units.h"

namespace fuzz {
namespace {

constexpr std::uint32_t kInstalled = 0x80000000, kMarked = 0x80008000;
constexpr std::array<std::int32_t, 9> kListedTypes = {16, 80, 161, 162, 176, 178, 180, 212, 128};
constexpr std::array<std::size_t, 5> kSlots = {0, 1, 3, 4, 12};

// As a caller has it from records, which may be damaged.
constexpr std::array<std::uint32_t, 10> kCounts = {0, 1, 2, 4, 6, 32, 60, 1000, 0x7FFFFFFF, 0xFFFFFFFF};

// How many units are in the chain.
std::int32_t check_chain() {
  lmainte_swap_fru *unit = nullptr;
  require(lmainte_get_swap_fru_list(&unit) == 0, "the list is always to be had");
  std::set<std::pair<std::uint32_t, std::uint32_t>> seen;
  const lmainte_swap_fru *before = nullptr;
  for (; unit != nullptr; before = unit, unit = unit->next) {
    require(unit->prev == before, "the chain leads back");
    require(seen.emplace(unit->unit_type, unit->unit_no).second, "no unit is in the list twice");
    require(before == nullptr || before->order <= unit->order, "the list is sorted by class");
    require(before == nullptr || before->unit_type != unit->unit_type || before->unit_no < unit->unit_no,
            "within a type, the list is sorted by number");
    require(lmainte_check_swap_fru(unit->unit_type, unit->unit_no) == 1, "a unit in the list is found");
  }
  return static_cast<std::int32_t>(seen.size());
}

std::uint32_t type_from(Source &source) {
  return static_cast<std::uint32_t>(kListedTypes.at(source.byte() % kListedTypes.size()));
}

lmainte_model_data model_from(Source &source) {
  lmainte_model_data data = {};
  data.model = source.byte() % 8;
  for (const std::size_t slot : kSlots) data.unit[slot].max_count = kCounts.at(source.byte() % kCounts.size());
  return data;
}

std::int32_t init(Source &source) {
  const lmainte_model_data data = model_from(source);
  doubles::put_system_status(source.flag() ? 0x8000 : 0);
  return judged("lmainte_init_swap_fru_list", {-1, check_chain()}, [&] {
    const std::int32_t result = lmainte_init_swap_fru_list(&data);
    return result > 0 ? 0 : result;
  });
}

void act(Source &source) {
  const std::uint32_t type = source.byte() % 4 == 0 ? source.byte() : type_from(source), number = source.byte() % 64;
  switch (source.byte() % 6) {
    case 0:
      doubles::put_status(static_cast<std::int32_t>(type), number % 2, source.flag() ? kMarked : kInstalled);
      break;
    case 1:
      init(source);
      break;
    case 2:
    case 3:
      lmainte_add_swap_fru_to_list(type, source.flag() ? number : source.number<std::uint32_t>());
      break;
    case 4:
      lmainte_delete_swap_fru_from_list(type, number);
      break;
    default:
      machine().fail("calloc", source.byte() % 8 + 1, ENOMEM);
  }
}

}  // namespace

void run_swap_list(Input input) {
  Source source(input);
  on_machine([&] {
    doubles::put_units();
    doubles::put_system_status(0);
    const lmainte_model_data empty = {};
    require(lmainte_init_swap_fru_list(&empty) == 0, "an empty list counts from 0 again");
    std::int32_t counted = 0;
    for (int i = 0; i < 24 && !source.empty(); ++i) {
      act(source);
      counted = check_chain();
      check_trace();
    }
    machine().failures.clear();
    require(lmainte_delete_swap_fru_from_list(999, 999) == counted, "what the calls count is what is in the list");
    lmainte_free_swap_fru_list();
    require(check_chain() == 0, "a list that is freed is empty");
  });
}

}  // namespace fuzz
