#include "fuzz/library/machine.h"

#include <algorithm>
#include <array>

#include <gtest/gtest.h>

namespace fuzz {
namespace {

constexpr std::array<Target, 11> kTargets{{
    {"location_qb1", "paths of units, on each model in a process of its own", run_location<1>},
    {"location_qb2", "the same", run_location<2>},
    {"location_qe1", "the same", run_location<3>},
    {"location_qe2", "the same", run_location<4>},
    {"location_qe3", "the same", run_location<5>},
    {"location_qa", "the same", run_location<6>},
    {"readers", "readers of the inventory, over damaged records and a client that fails", run_readers},
    {"lists", "lists and status tables, of any records", run_lists},
    {"menus", "menus and prompts, of any texts", run_menus},
    {"exec_line", "the argument line of a control program", run_exec_line},
    {"swap_list", "the list of marked units", run_swap_list},
}};

constexpr std::array<const char *, 7> kMarkers = {"", "qb1", "qb2", "qe1", "qe2", "qe3", "qa"};
constexpr std::array<const char *, 7> kFamilies = {"", "qb", "qb", "qe", "qe", "qe", "qa"};

void require_none(const doubles::Lines &broken, const std::string &law) {
  std::string all;
  for (const std::string &line : broken) all += "\n  " + line;
  require(broken.empty(), law + all);
}

// What doubles say outside a test.
void require_kept_by_doubles() {
  const auto &results = ::testing::UnitTest::GetInstance()->ad_hoc_test_result();
  require(!results.Failed(), "the library keeps the laws of its platform");
}

bool is_error(const doubles::TraceRecord &record) {
  return record.level == 2053 || record.level == 32778;
}

}  // namespace

std::span<const Target> targets() {
  return kTargets;
}

void calm() {
  machine().stop();
}

void on_machine(const std::function<void()> &body) {
  machine().start();
  body();
  check_trace();
  const doubles::Lines left = machine().left_behind();
  machine().stop();
  require_none(left, "nothing is left behind");
}

void check_trace() {
  const doubles::Lines broken = doubles::broken_trace_laws();
  require_kept_by_doubles();
  require_none(broken, "the trace is in order");
  machine().forget_records();
}

std::size_t records_so_far() {
  return machine().trace_records().size();
}

bool error_recorded_since(std::size_t from) {
  const auto records = machine().trace_records();
  return std::any_of(records.begin() + static_cast<std::ptrdiff_t>(from), records.end(), is_error);
}

std::int32_t judged(const std::string &name, std::initializer_list<std::int32_t> results,
                    const std::function<std::int32_t()> &call) {
  const std::size_t before = records_so_far();
  const std::int32_t result = call();
  const std::string said = name + " returned " + std::to_string(result);
  require(result == 0 || std::find(results.begin(), results.end(), result) != results.end(), said);
  require(result == 0 || error_recorded_since(before), said + " and recorded no error");
  return result;
}

void put_model(std::uint32_t model) {
  if (model == 0) return;
  const std::string family = kFamilies.at(model);
  machine().markers = {std::string("/tmp/.") + kMarkers.at(model)};
  machine().records[{1, "setup_system_info"}] = {doubles::Bytes(248)};
  machine().records[{0, "gen_system_info"}] = {doubles::Bytes(1408, 1)};
  machine().records[{2, "current_system_info"}] = {doubles::Bytes(176)};
  machine().files["/mgb/cli/etc/controltime_" + family] = doubles::Bytes(256, 1);
  machine().files["/mgb/cli/etc/cmdtime_" + family] = doubles::Bytes(128, 1);
}

}  // namespace fuzz
